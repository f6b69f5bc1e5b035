#include <moneyitem.h>
#include <simpleformatter.h>

#include <QTest>

class TestSimpleFormatter : public QObject
{
    Q_OBJECT

private slots:
    void fillsProperties_data();
    void fillsProperties();
};

void TestSimpleFormatter::fillsProperties_data()
{
    QTest::addColumn<QString>("templateText");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << "abc" << "abc";
    QTest::newRow("property") << "{cardNum}" << "123456******7890";
    QTest::newRow("mixed") << "RRN {rrn}/{valCode}" << "RRN 777/4";
    QTest::newRow("name") << "{name}:{terminalId}" << "slip:T1";
    QTest::newRow("unknown is empty") << "[{nothing}]" << "[]";
    QTest::newRow("not a placeholder") << "{ x }" << "{ x }";
}

void TestSimpleFormatter::fillsProperties()
{
    QFETCH(QString, templateText);
    QFETCH(QString, expected);
    MoneyItem money;
    money.setCardNum(QStringLiteral("123456******7890"));
    money.setRrn(QStringLiteral("777"));
    money.setValCode(4);
    money.setTerminalId(QStringLiteral("T1"));
    QCOMPARE(SimpleFormatter().format(templateText, QStringLiteral("slip"), &money), expected);
}

QTEST_GUILESS_MAIN(TestSimpleFormatter)
#include "tst_simpleformatter.moc"
