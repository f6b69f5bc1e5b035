// Reading the emulator's settings: the documented example, defaults, and the
// mistakes a settings file is refused for.
#include "emulator/clock.h"
#include "emulator/emulatorsettings.h"

#include <QJsonDocument>
#include <QTest>

using tessaro::emulator::Clock;
using tessaro::emulator::EmulatorSettings;
using tessaro::emulator::Fault;

class TestEmulatorSettings : public QObject
{
    Q_OBJECT

private slots:
    void exampleSettingsLoad();
    void defaultsServeSimpleSetup();
    void basePathIsNormalised_data();
    void basePathIsNormalised();
    void refusals_data();
    void refusals();
    void unknownArticleGetsDefaultPrice();
    void clockCanBeFixedAdvancedAndReset();
};

void TestEmulatorSettings::exampleSettingsLoad()
{
    QString error;
    const auto settings = EmulatorSettings::load(
        qEnvironmentVariable("TESSARO_SOURCE_DIR") + QStringLiteral("/emulator/example-settings.json"), &error);
    QVERIFY2(settings, qPrintable(error));
    QCOMPARE(settings->basePath, QStringLiteral("/api"));
    QCOMPARE(settings->authMode, EmulatorSettings::AuthMode::Token);
    QCOMPARE(settings->clients.size(), 1);
    QCOMPARE(settings->clients.first().clientId, QStringLiteral("till"));
    QCOMPARE(settings->clients.first().authorization, QStringLiteral("Basic dGlsbDpzZWNyZXQ="));
    QCOMPARE(settings->appKey, QStringLiteral("gate-key"));
    QCOMPARE(settings->clockToleranceSeconds, 900);
    QCOMPARE(settings->tills.size(), 1);
    QCOMPARE(settings->tills.first().shiftOpen, false);
    QCOMPARE(settings->tills.first().nextInvoiceNo, 345);
    QCOMPARE(settings->customers.value(QStringLiteral("67812345678")).value(QStringLiteral("points")).toInt(), 150);
    QCOMPARE(settings->articles.size(), 2);
    QCOMPARE(settings->findArticle(QString(), QStringLiteral("1002")).artName, QStringLiteral("Хлеб"));
    QCOMPARE(settings->invalidCoupons, QStringList{QStringLiteral("2559999999999")});
    QCOMPARE(settings->messages.value(QStringLiteral("info")).size(), 1);
    QCOMPARE(settings->faults.size(), 1);
    QCOMPARE(settings->faults.first().kind, Fault::Kind::CloseAfterApply);
    QCOMPARE(settings->faults.first().skip, 2);
}

void TestEmulatorSettings::defaultsServeSimpleSetup()
{
    QString error;
    const auto settings = EmulatorSettings::fromJson(QJsonObject(), &error);
    QVERIFY(settings);
    QCOMPARE(settings->address, QHostAddress(QHostAddress::LocalHost));
    QCOMPARE(settings->authMode, EmulatorSettings::AuthMode::Token);
    QCOMPARE(settings->tokenPath, QStringLiteral("/token"));
    QCOMPARE(settings->tokenLifetimeSeconds, 3600);
    QCOMPARE(settings->clients.size(), 1);
    QVERIFY(settings->shiftOpenByDefault);
    QVERIFY(settings->basePath.isEmpty());
    QCOMPARE(settings->clockToleranceSeconds, 15 * 60);
}

void TestEmulatorSettings::basePathIsNormalised_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("basePath");
    QTest::newRow("as is") << QStringLiteral("/api") << QStringLiteral("/api");
    QTest::newRow("trailing slash") << QStringLiteral("/api/") << QStringLiteral("/api");
    QTest::newRow("no leading slash") << QStringLiteral("api/v1") << QStringLiteral("/api/v1");
    QTest::newRow("root") << QStringLiteral("/") << QString();
}

void TestEmulatorSettings::basePathIsNormalised()
{
    QFETCH(QString, written);
    QFETCH(QString, basePath);
    QString error;
    const auto settings = EmulatorSettings::fromJson({{QStringLiteral("basePath"), written}}, &error);
    QVERIFY(settings);
    QCOMPARE(settings->basePath, basePath);
}

void TestEmulatorSettings::refusals_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    QTest::newRow("unknown key") << QByteArray(R"({"prot": 1})") << QStringLiteral("unknown setting 'prot'");
    QTest::newRow("auth mode") << QByteArray(R"({"auth": "basic"})")
                               << QStringLiteral("\"auth\" must be \"token\", \"gateway\" or \"none\"");
    QTest::newRow("gateway without secret") << QByteArray(R"({"auth": "gateway", "gateway": {"appKey": "k"}})")
                                            << QStringLiteral("gateway mode needs \"gateway\": {\"appKey\", \"appSecret\"}");
    QTest::newRow("host") << QByteArray(R"({"host": "localhost"})") << QStringLiteral("\"host\" is not an IP address");
    QTest::newRow("card pattern") << QByteArray(R"({"cardBarcodePattern": "(["})")
                                  << QStringLiteral("invalid cardBarcodePattern '(['");
    QTest::newRow("fault kind") << QByteArray(R"({"faults": [{"kind": "boom", "path": "/x"}]})")
                                << QStringLiteral("unknown fault kind 'boom'");
    QTest::newRow("fault without path") << QByteArray(R"({"faults": [{"kind": "hang"}]})")
                                        << QStringLiteral("a fault needs \"path\", \"pathPrefix\" or \"pathPattern\"");
    QTest::newRow("fault pattern") << QByteArray(R"({"faults": [{"kind": "hang", "pathPattern": "(["}]})")
                                   << QStringLiteral("invalid pathPattern '(['");
}

void TestEmulatorSettings::refusals()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    QString message;
    QVERIFY(!EmulatorSettings::fromJson(QJsonDocument::fromJson(json).object(), &message));
    QCOMPARE(message, error);
}

void TestEmulatorSettings::unknownArticleGetsDefaultPrice()
{
    EmulatorSettings settings;
    settings.defaultPrice = 12.5;
    const auto article = settings.findArticle(QStringLiteral("4600000000999"), QString());
    QCOMPARE(article.artNo, QStringLiteral("4600000000999"));
    QCOMPARE(article.price, 12.5);
}

void TestEmulatorSettings::clockCanBeFixedAdvancedAndReset()
{
    Clock clock;
    const QDateTime fixed(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC);
    clock.setNow(fixed);
    QCOMPARE(clock.now(), fixed);
    clock.advance(61);
    QCOMPARE(clock.now(), fixed.addSecs(61));
    clock.reset();
    QVERIFY(qAbs(clock.now().secsTo(QDateTime::currentDateTimeUtc())) < 60);
}

QTEST_GUILESS_MAIN(TestEmulatorSettings)
#include "tst_emulatorsettings.moc"
