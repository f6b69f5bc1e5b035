#include "secrets/linesanitizer.h"

#include <QTest>

class TestLineSanitizer : public QObject
{
    Q_OBJECT

private slots:
    void escaped_data();
    void escaped();
};

void TestLineSanitizer::escaped_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("escaped");

    QTest::newRow("plain") << "Получен токен: abc" << "Получен токен: abc";
    QTest::newRow("cr lf") << "t\r\nX-Evil: 1" << "t\\r\\nX-Evil: 1";
    QTest::newRow("lone lf, tab") << "a\nb\tc" << "a\\nb\\tc";
    QTest::newRow("escape sequence") << "\x1b[2J\x1b]0;title\x07" << "\\x1b[2J\\x1b]0;title\\x07";
    QTest::newRow("nul and del") << QString::fromLatin1("a\0b\x7f", 4) << "a\\x00b\\x7f";
    QTest::newRow("c1 controls") << QString(QChar(0x9b)) + "31m" + QChar(0x85) << "\\u009b31m\\u0085";
    QTest::newRow("unicode line separators") << QString(QChar(0x2028)) + "x" + QChar(0x2029) << "\\u2028x\\u2029";
    QTest::newRow("backslash stays") << "C:\\path \\n" << "C:\\path \\n";
    QTest::newRow("printable beyond c1 stays") << "Ñ€ €" << "Ñ€ €";
}

void TestLineSanitizer::escaped()
{
    QFETCH(QString, value);
    QFETCH(QString, escaped);

    QCOMPARE(LineSanitizer::escaped(value), escaped);
}

QTEST_GUILESS_MAIN(TestLineSanitizer)
#include "tst_linesanitizer.moc"
