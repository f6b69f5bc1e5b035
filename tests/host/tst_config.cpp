#include <config.h>
#include <testing/testhost.h>

#include <QTest>

class TestConfig : public QObject
{
    Q_OBJECT

private slots:
    void readsValuesOfSections();
    void listValuesReadBackAsText();
    void defaultsForMissingKeys();
    void booleans_data();
    void booleans();
    void keysOfSectionIncludingListKeys();
    void entryIntegerList_data();
    void entryIntegerList();
    void emptyConfiguration();
};

void TestConfig::readsValuesOfSections()
{
    TestHost host(QStringLiteral("[Tessaro]\nurl=http://service:8080/api\ntimeout=9\n"));
    Config config(host.configFile());
    QCOMPARE(config.getString(QStringLiteral("Tessaro:url")), QStringLiteral("http://service:8080/api"));
    QCOMPARE(config.getInt(QStringLiteral("Tessaro:timeout"), 5), 9);
    QCOMPARE(config.getLongLong(QStringLiteral("Tessaro:timeout"), 5), 9);
}

void TestConfig::listValuesReadBackAsText()
{
    TestHost host(QStringLiteral("[Tessaro.PaymentCodes]\n1=0,5\n"));
    Config config(host.configFile());
    QCOMPARE(config.getString(QStringLiteral("Tessaro.PaymentCodes:1")), QStringLiteral("0,5"));
    QCOMPARE(config.getIntList(QStringLiteral("Tessaro.PaymentCodes:1")), (QList<int>{0, 5}));
    QCOMPARE(config.getStringList(QStringLiteral("Tessaro.PaymentCodes:1")), (QStringList{QStringLiteral("0"), QStringLiteral("5")}));
}

void TestConfig::defaultsForMissingKeys()
{
    TestHost host;
    Config config(host.configFile());
    QCOMPARE(config.getString(QStringLiteral("Tessaro:url"), QStringLiteral("http://localhost")), QStringLiteral("http://localhost"));
    QCOMPARE(config.getInt(QStringLiteral("Tessaro:timeout"), 5), 5);
    QCOMPARE(config.getBool(QStringLiteral("Tessaro:useTokenAuth"), true), true);
    QCOMPARE(config.getStringList(QStringLiteral("Tessaro:list"), {QStringLiteral("x")}), QStringList{QStringLiteral("x")});
    QVERIFY(config.getIntList(QStringLiteral("Tessaro:none")).isEmpty());
    QVERIFY(config.keys(QStringLiteral("Tessaro.Nothing")).isEmpty());
}

void TestConfig::booleans_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("defaultValue");
    QTest::addColumn<bool>("expected");
    QTest::newRow("true") << "true" << false << true;
    QTest::newRow("1") << "1" << false << true;
    QTest::newRow("false") << "false" << true << false;
    QTest::newRow("0") << "0" << true << false;
    QTest::newRow("garbage keeps default") << "maybe" << true << true;
}

void TestConfig::booleans()
{
    QFETCH(QString, text);
    QFETCH(bool, defaultValue);
    QFETCH(bool, expected);
    TestHost host(QStringLiteral("[OrvelGate]\ntessaro=%1\n").arg(text));
    Config config(host.configFile());
    QCOMPARE(config.getBool(QStringLiteral("OrvelGate:tessaro"), defaultValue), expected);
}

void TestConfig::keysOfSectionIncludingListKeys()
{
    TestHost host(QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1,4=2\n3=5\n"));
    Config config(host.configFile());
    const QStringList keys = config.keys(QStringLiteral("Tessaro.ForbiddenMixedValuts"));
    QCOMPARE(keys.size(), 2);
    QVERIFY(keys.contains(QStringLiteral("1,4")));
    QCOMPARE(config.getIntList(QStringLiteral("Tessaro.ForbiddenMixedValuts:1,4")), QList<int>{2});
    QCOMPARE(Config::Entry(QStringLiteral("1,4")).toIntList(), (QList<int>{1, 4}));
}

void TestConfig::entryIntegerList_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("one") << "7" << QList<int>{7};
    QTest::newRow("spaces") << " 1 , 2 " << QList<int>{1, 2};
    QTest::newRow("not numbers skipped") << "a,3,b" << QList<int>{3};
    QTest::newRow("empty") << "" << QList<int>{};
}

void TestConfig::entryIntegerList()
{
    QFETCH(QString, text);
    QFETCH(QList<int>, expected);
    QCOMPARE(Config::Entry(text).toIntList(), expected);
}

void TestConfig::emptyConfiguration()
{
    Config config{QString()};
    QVERIFY(!config.contains(QStringLiteral("Tessaro:url")));
    QCOMPARE(config.getString(QStringLiteral("Tessaro:url"), QStringLiteral("d")), QStringLiteral("d"));
}

QTEST_GUILESS_MAIN(TestConfig)
#include "tst_config.moc"
