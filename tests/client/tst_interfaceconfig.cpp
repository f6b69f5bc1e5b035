#include "client/interface.h"

#include <config.h>
#include <log4qt/logger.h>
#include <log4qt/logmanager.h>
#include <restclient.h>
#include <singleton.h>
#include <support/logcapture.h>
#include <testing/testhost.h>

#include <QFile>
#include <QTest>

#include <limits>

namespace {

// A configuration that sets every plain client setting.
QString everySetting()
{
    return QStringLiteral(
        "[Tessaro]\n"
        "url=https://tessaro.example.com/api/v1\n"
        "tokenUrl=https://auth.example.com/token?scope=till\n"
        "useTokenAuth=false\n"
        "clientId=till-012\n"
        "realmId=store-7\n"
        "authorizationHeader=Basic dGlsbDpzZWNyZXQ=\n"
        "timeout=12\n"
        "validationCouponMask=^(77|88)\\\\d+$\n"
        "operationIdAsCardNumber=4,9\n"
        "operationIdAsEFTApprovalCode=6\n");
}

// The client with the members its constructor fills in view.
class InspectedInterface : public tessaro::Interface
{
public:
    using Interface::additionalDataSection;
    using Interface::authorizationHeader;
    using Interface::clientId;
    using Interface::logger;
    using Interface::operationIdAsCardNumber;
    using Interface::operationIdAsEFTApprovalCode;
    using Interface::readGateSettings;
    using Interface::realmId;
    using Interface::restClient;
    using Interface::tokenRetried;
    using Interface::validationCouponMask;
};

using IntMap = QMap<int, int>;

enum class Table { PaymentCodes, VatCodes, EanReasons, DiscardPaymentFields };

QString sectionOf(Table table)
{
    switch (table) {
    case Table::PaymentCodes:
        return QStringLiteral("Tessaro.PaymentCodes");
    case Table::VatCodes:
        return QStringLiteral("Tessaro.VatCodes");
    case Table::EanReasons:
        return QStringLiteral("Tessaro.EanReasons");
    case Table::DiscardPaymentFields:
        return QStringLiteral("Tessaro.DiscardPaymentFields");
    }
    return QString();
}

QString valueText(int value)
{
    return QString::number(value);
}

QString valueText(const QStringList &value)
{
    return value.join(QLatin1Char('|'));
}

// A table as "key:value" entries, to compare tables of either kind.
template <typename T>
QString rendered(const QMap<int, T> &map)
{
    QStringList entries;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        entries << QStringLiteral("%1:%2").arg(it.key()).arg(valueText(it.value()));
    return entries.join(QLatin1Char(' '));
}

QString tableOf(const tessaro::Interface &client, Table table)
{
    switch (table) {
    case Table::PaymentCodes:
        return rendered(client.paymentCodeMap());
    case Table::VatCodes:
        return rendered(client.vatCodeMap());
    case Table::EanReasons:
        return rendered(client.eanReasonMap());
    case Table::DiscardPaymentFields:
        return rendered(client.discardPaymentFieldMap());
    }
    return QString();
}

} // namespace

Q_DECLARE_METATYPE(Table)

class TestInterfaceConfig : public QObject
{
    Q_OBJECT

private slots:
    void defaultsWithoutConfiguration();
    void everySettingIsRead();
    void urlsAreParsedTolerantly_data();
    void urlsAreParsedTolerantly();
    void timeoutInSeconds_data();
    void timeoutInSeconds();
    void checkBoundsItsTimeout_data();
    void checkBoundsItsTimeout();
    void couponMaskIsCompiledWithoutOptions();
    void settingsValueHoldsWhatWasRead();
    void settingsValueFollowsTheGateway();
    void settingsValueShowsOnlyTheAuthorizationScheme_data();
    void settingsValueShowsOnlyTheAuthorizationScheme();
    void operationIdListsBecomeIntegers_data();
    void operationIdListsBecomeIntegers();
    void mappingTables_data();
    void mappingTables();
    void gatewaySwitchAloneLogs_data();
    void gatewaySwitchAloneLogs();
    void setLoggerReplacesTheLogger();
    void setTokenReplacesTheToken();
    void configurationIsCreatedWhenAbsent();
    void settingsAreReadOnce();
    void exampleConfigurationIsRead();

    // The edge cases of the client configuration, one each.
    void noConfigurationAtAll();
    void gatewayOverridesTokenAuthorisation();
    void nonIntegerSectionKeyIsIgnored();
    void tillCodeUnderTwoServiceCodesTakesTheLater();
};

void TestInterfaceConfig::defaultsWithoutConfiguration()
{
    TestHost host;
    const InspectedInterface client;
    QCOMPARE(client.serviceUrl(), QUrl(QStringLiteral("http://localhost")));
    QCOMPARE(client.tokenServiceUrl(), QUrl(QStringLiteral("http://localhost")));
    QCOMPARE(client.usesTokenAuth(), true);
    QCOMPARE(client.clientId, QString());
    QCOMPARE(client.realmId, QString());
    QCOMPARE(client.authorizationHeader, QString());
    QCOMPARE(client.timeoutSeconds(), qint64(5));
    QCOMPARE(client.currentToken(), QString());
    QVERIFY(client.restClient);
    QCOMPARE(client.restClient->timeout(), 5000);
    QCOMPARE(client.restClient->targetAlias(), QStringLiteral("сервису Tessaro"));
    QCOMPARE(client.restClient->secretHeaders(), QStringList{QStringLiteral("Authorization")});
    QCOMPARE(client.logger, Log4Qt::LogManager::logger(QStringLiteral("tessaro")));
    QCOMPARE(client.validationCouponMask.pattern(), QStringLiteral("^255.*"));
    QVERIFY(client.operationIdAsCardNumber.isEmpty());
    QVERIFY(client.operationIdAsEFTApprovalCode.isEmpty());
    QVERIFY(client.paymentCodeMap().isEmpty());
    QVERIFY(client.vatCodeMap().isEmpty());
    QVERIFY(client.eanReasonMap().isEmpty());
    QVERIFY(client.discardPaymentFieldMap().isEmpty());
    QCOMPARE(client.additionalDataSection, QStringLiteral("orvel"));
    QCOMPARE(client.tokenRetried, false);
}

void TestInterfaceConfig::everySettingIsRead()
{
    TestHost host(everySetting());
    const InspectedInterface client;
    QCOMPARE(client.serviceUrl(), QUrl(QStringLiteral("https://tessaro.example.com/api/v1")));
    QCOMPARE(client.tokenServiceUrl(), QUrl(QStringLiteral("https://auth.example.com/token?scope=till")));
    QCOMPARE(client.usesTokenAuth(), false);
    QCOMPARE(client.clientId, QStringLiteral("till-012"));
    QCOMPARE(client.realmId, QStringLiteral("store-7"));
    QCOMPARE(client.authorizationHeader, QStringLiteral("Basic dGlsbDpzZWNyZXQ="));
    QCOMPARE(client.timeoutSeconds(), qint64(12));
    QCOMPARE(client.restClient->timeout(), 12000);
    QCOMPARE(client.validationCouponMask.pattern(), QStringLiteral("^(77|88)\\d+$"));
    QVERIFY(client.validationCouponMask.match(QStringLiteral("77123")).hasMatch());
    QCOMPARE(client.operationIdAsCardNumber, (QList<int>{4, 9}));
    QCOMPARE(client.operationIdAsEFTApprovalCode, QList<int>{6});
}

void TestInterfaceConfig::urlsAreParsedTolerantly_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoded");
    QTest::newRow("plain") << "http://service:8080/api" << "http://service:8080/api";
    QTest::newRow("blank in path") << "http://service/my api" << "http://service/my%20api";
    QTest::newRow("stray percent") << "http://service/a%zz" << "http://service/a%25zz";
    QTest::newRow("query kept") << "http://service/token?realm=1" << "http://service/token?realm=1";
}

void TestInterfaceConfig::urlsAreParsedTolerantly()
{
    QFETCH(QString, text);
    QFETCH(QString, encoded);
    TestHost host(QStringLiteral("[Tessaro]\nurl=\"%1\"\ntokenUrl=\"%1\"\n").arg(text));
    const tessaro::Interface client;
    QVERIFY(client.serviceUrl().isValid());
    QCOMPARE(client.serviceUrl().toString(QUrl::FullyEncoded), encoded);
    QCOMPARE(client.tokenServiceUrl().toString(QUrl::FullyEncoded), encoded);
}

void TestInterfaceConfig::timeoutInSeconds_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<int>("milliseconds");
    // A time-out without bound gets the REST client's longest one.
    const int longest = RestClient().longestTimeout();
    QTest::newRow("one") << "1" << qint64(1) << 1000;
    QTest::newRow("thirty") << "30" << qint64(30) << 30000;
    QTest::newRow("not a number") << "five" << qint64(5) << 5000;
    QTest::newRow("empty") << "" << qint64(5) << 5000;
    QTest::newRow("zero") << "0" << qint64(0) << longest;
    QTest::newRow("negative") << "-2" << qint64(-2) << longest;
    QTest::newRow("beyond the clock") << "9223372036854775807" << std::numeric_limits<qint64>::max() << longest;
}

void TestInterfaceConfig::timeoutInSeconds()
{
    QFETCH(QString, value);
    QFETCH(qint64, seconds);
    QFETCH(int, milliseconds);
    TestHost host(QStringLiteral("[Tessaro]\ntimeout=%1\n").arg(value));
    const InspectedInterface client;
    QCOMPARE(client.timeoutSeconds(), seconds);
    QCOMPARE(client.restClient->timeout(), milliseconds);
}

void TestInterfaceConfig::checkBoundsItsTimeout_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("milliseconds");
    const int longest = RestClient().longestTimeout();
    QTest::newRow("ten") << 10 << 10000;
    QTest::newRow("milliseconds beyond an int") << 3000000 << longest;
    QTest::newRow("most an int holds") << std::numeric_limits<int>::max() << longest;
    QTest::newRow("negative") << -5 << longest;
}

void TestInterfaceConfig::checkBoundsItsTimeout()
{
    QFETCH(int, seconds);
    QFETCH(int, milliseconds);
    TestHost host;
    InspectedInterface client;
    client.boundTimeout(seconds);
    QCOMPARE(client.restClient->timeout(), milliseconds);
}

void TestInterfaceConfig::couponMaskIsCompiledWithoutOptions()
{
    TestHost host(QStringLiteral("[Tessaro]\nvalidationCouponMask=^abc\n"));
    const InspectedInterface client;
    QCOMPARE(client.validationCouponMask.patternOptions(), QRegularExpression::NoPatternOption);
    QVERIFY(client.validationCouponMask.match(QStringLiteral("abc1")).hasMatch());
    QVERIFY(!client.validationCouponMask.match(QStringLiteral("ABC1")).hasMatch());
}

void TestInterfaceConfig::settingsValueHoldsWhatWasRead()
{
    TestHost host(everySetting());
    const InspectedInterface client;
    const tessaro::ClientSettings settings = client.settings();
    QCOMPARE(settings.url, QUrl(QStringLiteral("https://tessaro.example.com/api/v1")));
    QCOMPARE(settings.tokenUrl, QUrl(QStringLiteral("https://auth.example.com/token?scope=till")));
    QCOMPARE(settings.useTokenAuth, false);
    QCOMPARE(settings.gateway, false);
    QCOMPARE(settings.clientId, QStringLiteral("till-012"));
    QCOMPARE(settings.realmId, QStringLiteral("store-7"));
    QCOMPARE(settings.hasAuthorizationHeader, true);
    QCOMPARE(settings.authorizationScheme, QStringLiteral("Basic"));
    QCOMPARE(settings.timeoutSeconds, qint64(12));
    QCOMPARE(settings.transportTimeoutMs, 12000);
    QCOMPARE(settings.longestTransportTimeoutMs, client.restClient->longestTimeout());
    QCOMPARE(settings.couponMask, QStringLiteral("^(77|88)\\d+$"));
    QCOMPARE(settings.cardNumberPaymentCodes, (QList<int>{4, 9}));
    QCOMPARE(settings.approvalCodePaymentCodes, QList<int>{6});
}

void TestInterfaceConfig::settingsValueFollowsTheGateway()
{
    TestHost host(QStringLiteral("[Tessaro]\nuseTokenAuth=true\n[OrvelGate]\ntessaro=true\n"));
    InspectedInterface client;
    QCOMPARE(client.settings().gateway, true);
    QCOMPARE(client.settings().useTokenAuth, false);
    // The transport's time-out as it is now, bound or not.
    client.boundTimeout(3);
    QCOMPARE(client.settings().transportTimeoutMs, 3000);
    QCOMPARE(client.settings().timeoutSeconds, qint64(5));
}

void TestInterfaceConfig::settingsValueShowsOnlyTheAuthorizationScheme_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("present");
    QTest::addColumn<QString>("scheme");
    QTest::newRow("scheme and credentials") << "Basic dGlsbDpzZWNyZXQ=" << true << "Basic";
    QTest::newRow("blanks around") << "  Bearer abc  " << true << "Bearer";
    QTest::newRow("credentials alone") << "dGlsbDpzZWNyZXQ=" << true << "";
    QTest::newRow("empty") << "" << false << "";
}

void TestInterfaceConfig::settingsValueShowsOnlyTheAuthorizationScheme()
{
    QFETCH(QString, value);
    QFETCH(bool, present);
    QFETCH(QString, scheme);
    TestHost host(QStringLiteral("[Tessaro]\nauthorizationHeader=\"%1\"\n").arg(value));
    const InspectedInterface client;
    QCOMPARE(client.authorizationHeader, value);
    QCOMPARE(client.settings().hasAuthorizationHeader, present);
    QCOMPARE(client.settings().authorizationScheme, scheme);
}

void TestInterfaceConfig::operationIdListsBecomeIntegers_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QList<int>>("codes");
    QTest::newRow("one") << "3" << QList<int>{3};
    QTest::newRow("list with blanks") << "3, 5 ,7" << QList<int>{3, 5, 7};
    QTest::newRow("quoted list") << "\"3,5\"" << QList<int>{3, 5};
    // Each element is kept, converted: one that is not a number becomes 0.
    QTest::newRow("not a number") << "3,card" << QList<int>{3, 0};
    QTest::newRow("empty") << "" << QList<int>{};
}

void TestInterfaceConfig::operationIdListsBecomeIntegers()
{
    QFETCH(QString, value);
    QFETCH(QList<int>, codes);
    TestHost host(QStringLiteral("[Tessaro]\noperationIdAsCardNumber=%1\noperationIdAsEFTApprovalCode=%1\n").arg(value));
    const InspectedInterface client;
    QCOMPARE(client.operationIdAsCardNumber, codes);
    QCOMPARE(client.operationIdAsEFTApprovalCode, codes);
}

void TestInterfaceConfig::mappingTables_data()
{
    QTest::addColumn<Table>("table");
    QTest::addColumn<QString>("entries");
    QTest::addColumn<QString>("expected");

    // Payment and VAT codes map the till's codes (listed) to the service's (the key).
    for (const Table table : {Table::PaymentCodes, Table::VatCodes}) {
        const char *name = table == Table::PaymentCodes ? "payment: " : "vat: ";
        QTest::addRow("%sempty section", name) << table << QString() << QString();
        QTest::addRow("%sone to one", name) << table << "1=0" << "0:1";
        QTest::addRow("%slist", name) << table << "1=0,5" << "0:1 5:1";
        QTest::addRow("%stwo keys", name) << table << "1=0,5\n2=7,8" << "0:1 5:1 7:2 8:2";
        QTest::addRow("%squoted list", name) << table << "3=\"4,6\"" << "4:3 6:3";
        QTest::addRow("%spieces that are not integers", name) << table << "3=1,x,2," << "1:3 2:3";
        QTest::addRow("%sempty value", name) << table << "4=" << QString();
        QTest::addRow("%skey not an integer", name) << table << "abc=3\nx1=4\n2=7" << "7:2";
        QTest::addRow("%shexadecimal key", name) << table << "0x10=3" << QString();
        QTest::addRow("%skey with comma", name) << table << "1,2=3" << QString();
        QTest::addRow("%skey with encoded comma", name) << table << "6%2C7=3" << QString();
        QTest::addRow("%skey with inner blank", name) << table << "1 8=3" << QString();
        QTest::addRow("%skey with outer blanks", name) << table << " 6 =3" << "3:6";
        QTest::addRow("%ssigned and zero-padded keys", name) << table << "+10=1\n-3=2\n07=4" << "1:10 2:-3 4:7";
        QTest::addRow("%snegative till code", name) << table << "5=-1" << "-1:5";
        // QSettings lists key names sorted as text, so "10" is read before "9".
        QTest::addRow("%slater key wins, text order", name) << table << "9=5\n10=5" << "5:9";
    }

    // EAN reasons and discarded payment fields keep their lists under the key.
    for (const Table table : {Table::EanReasons, Table::DiscardPaymentFields}) {
        const char *name = table == Table::EanReasons ? "ean: " : "discard: ";
        QTest::addRow("%sempty section", name) << table << QString() << QString();
        QTest::addRow("%sone", name) << table << "3=cardNumber" << "3:cardNumber";
        QTest::addRow("%slist kept in order", name)
            << table << "3=terminalId,cardNumber, approvalCode" << "3:terminalId|cardNumber|approvalCode";
        QTest::addRow("%sRussian texts", name) << table << "1=Брак,Пересорт" << "1:Брак|Пересорт";
        QTest::addRow("%sempty value", name) << table << "2=" << "2:";
        QTest::addRow("%skeys not integers", name) << table << "abc=x\n1,2=y\n4=z" << "4:z";
        QTest::addRow("%sseveral keys", name) << table << "10=a\n2=b" << "2:b 10:a";
    }
}

void TestInterfaceConfig::mappingTables()
{
    QFETCH(Table, table);
    QFETCH(QString, entries);
    QFETCH(QString, expected);
    TestHost host(QStringLiteral("[%1]\n%2\n").arg(sectionOf(table), entries));
    const tessaro::Interface client;
    for (const Table other : {Table::PaymentCodes, Table::VatCodes, Table::EanReasons, Table::DiscardPaymentFields})
        QCOMPARE(tableOf(client, other), other == table ? expected : QString());
}

void TestInterfaceConfig::gatewaySwitchAloneLogs_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<bool>("tokenAuth");
    QTest::addColumn<bool>("logged");
    QTest::newRow("no switch") << QString() << true << false;
    QTest::newRow("switch off") << "[OrvelGate]\ntessaro=false\n" << true << false;
    QTest::newRow("switch on") << "[OrvelGate]\ntessaro=true\n" << false << true;
    QTest::newRow("switch on, token off") << "[Tessaro]\nuseTokenAuth=false\n[OrvelGate]\ntessaro=true\n" << false << true;
    QTest::newRow("switch off, token off") << "[Tessaro]\nuseTokenAuth=false\n[OrvelGate]\ntessaro=false\n" << false << false;
}

void TestInterfaceConfig::gatewaySwitchAloneLogs()
{
    QFETCH(QString, config);
    QFETCH(bool, tokenAuth);
    QFETCH(bool, logged);
    TestHost host(config);
    const LogCapture log;
    const tessaro::Interface client;
    QCOMPARE(client.usesTokenAuth(), tokenAuth);
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtInfoMsg).contains(QStringLiteral("Используется OrvelGate")), logged);
}

void TestInterfaceConfig::setLoggerReplacesTheLogger()
{
    TestHost host(QStringLiteral("[OrvelGate]\ntessaro=true\n"));
    InspectedInterface client;
    Log4Qt::Logger *pluginLogger = Log4Qt::LogManager::logger(QStringLiteral("tessaroback"));
    client.setLogger(pluginLogger);
    QCOMPARE(client.logger, pluginLogger);

    const LogCapture log;
    client.readGateSettings();
    QCOMPARE(log.texts(QStringLiteral("tessaroback"), QtInfoMsg), QStringList{QStringLiteral("Используется OrvelGate")});
    QVERIFY(log.texts(QStringLiteral("tessaro"), QtInfoMsg).isEmpty());
}

void TestInterfaceConfig::setTokenReplacesTheToken()
{
    TestHost host;
    tessaro::Interface client;
    client.setToken(QStringLiteral("first"));
    QCOMPARE(client.currentToken(), QStringLiteral("first"));
    client.setToken(QStringLiteral("second"));
    QCOMPARE(client.currentToken(), QStringLiteral("second"));
    QCOMPARE(client.getHeaders(QString()).value(QStringLiteral("Authorization")), QStringLiteral("Bearer second"));
    client.setToken(QString());
    QCOMPARE(client.currentToken(), QString());
}

void TestInterfaceConfig::configurationIsCreatedWhenAbsent()
{
    TestHost host;
    Singleton<Config>::reset();
    QVERIFY(!Singleton<Config>::exists());
    const tessaro::Interface client;
    QVERIFY(Singleton<Config>::exists());
    QCOMPARE(client.serviceUrl(), QUrl(QStringLiteral("http://localhost")));
}

void TestInterfaceConfig::settingsAreReadOnce()
{
    TestHost host(QStringLiteral("[Tessaro]\nurl=http://first\n[Tessaro.PaymentCodes]\n1=0\n"));
    const tessaro::Interface client;
    host.setConfig(QStringLiteral("[Tessaro]\nurl=http://second-host\n[Tessaro.PaymentCodes]\n2=0,9\n"));
    QCOMPARE(client.serviceUrl(), QUrl(QStringLiteral("http://first")));
    QCOMPARE(client.paymentCodeMap(), (IntMap{{0, 1}}));
}

void TestInterfaceConfig::exampleConfigurationIsRead()
{
    QFile example(QStringLiteral(TESSARO_EXAMPLE_CONFIG));
    QVERIFY(example.open(QIODevice::ReadOnly));
    TestHost host(QString::fromUtf8(example.readAll()));
    const InspectedInterface client;
    QCOMPARE(client.serviceUrl(), QUrl(QStringLiteral("https://tessaro.example.com/api/v1")));
    QCOMPARE(client.tokenServiceUrl().path(), QStringLiteral("/realms/stores/protocol/openid-connect/token"));
    QVERIFY(client.usesTokenAuth());
    QCOMPARE(client.clientId, QStringLiteral("till-0012"));
    QCOMPARE(client.realmId, QStringLiteral("store-0007"));
    QCOMPARE(client.authorizationHeader, QStringLiteral("Basic dGlsbC0wMDEyOmNsaWVudC1zZWNyZXQ="));
    QCOMPARE(client.timeoutSeconds(), qint64(5));
    QCOMPARE(client.validationCouponMask.pattern(), QStringLiteral("^255\\d{10}$"));
    QVERIFY(client.validationCouponMask.match(QStringLiteral("2550123456789")).hasMatch());
    QCOMPARE(client.operationIdAsCardNumber, QList<int>{4});
    QCOMPARE(client.operationIdAsEFTApprovalCode, (QList<int>{6, 7}));
    QCOMPARE(tableOf(client, Table::PaymentCodes), QStringLiteral("0:1 3:2 4:3 5:1 6:3 7:3"));
    QCOMPARE(tableOf(client, Table::VatCodes), QStringLiteral("0:1 1:2 2:5 3:5"));
    QCOMPARE(tableOf(client, Table::EanReasons),
             QStringLiteral("1:Товар без штрихкода 2:Штрихкод не читается 3:Онлайн-проверка"));
    QCOMPARE(tableOf(client, Table::DiscardPaymentFields), QStringLiteral("0:terminalId|PANCardIdentifier 5:terminalId"));

    const Config *config = Singleton<Config>::instance();
    QCOMPARE(config->getString(QStringLiteral("Tessaro.ReceiptNumber.3:mask")), QStringLiteral("0*(?<result>\\d{1,12})"));
    QCOMPARE(config->getString(QStringLiteral("Tessaro.bankRRN.3:symbolsToRemove")), QStringLiteral(" "));
    QCOMPARE(config->keys(QStringLiteral("Tessaro.CustomFields.3")), (QStringList{"bankRRN", "bankTerminal"}));
    QCOMPARE(config->keys(QStringLiteral("Tessaro.ForbiddenMixedValuts")), (QStringList{"1", "4,5"}));
    QCOMPARE(config->getBool(QStringLiteral("OrvelGate:tessaro"), true), false);
    QCOMPARE(config->getBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), false), true);
}

void TestInterfaceConfig::noConfigurationAtAll()
{
    TestHost host;
    const InspectedInterface client;
    QCOMPARE(client.getUrl(tessaro::Interface::TillOpen, QString()), QUrl(QStringLiteral("http://localhost/till/open")));
    QCOMPARE(client.restClient->timeout(), 5000);
    QVERIFY(client.usesTokenAuth());
    QVERIFY(client.getHeaders(QString()).contains(QStringLiteral("Authorization")));
    QVERIFY(client.paymentCodeMap().isEmpty());
    QVERIFY(client.vatCodeMap().isEmpty());
    QVERIFY(client.eanReasonMap().isEmpty());
    QVERIFY(client.discardPaymentFieldMap().isEmpty());
}

void TestInterfaceConfig::gatewayOverridesTokenAuthorisation()
{
    TestHost host(QStringLiteral("[Tessaro]\nuseTokenAuth=true\n[OrvelGate]\ntessaro=true\n"));
    const tessaro::Interface client;
    QVERIFY(!client.usesTokenAuth());
    QVERIFY(!client.getHeaders(QString()).contains(QStringLiteral("Authorization")));
}

void TestInterfaceConfig::nonIntegerSectionKeyIsIgnored()
{
    TestHost host(QStringLiteral("[Tessaro.PaymentCodes]\nabc=1,3\n2=7,8\n"));
    const tessaro::Interface client;
    QCOMPARE(client.paymentCodeMap(), (IntMap{{7, 2}, {8, 2}}));
}

void TestInterfaceConfig::tillCodeUnderTwoServiceCodesTakesTheLater()
{
    TestHost host(QStringLiteral("[Tessaro.PaymentCodes]\n1=0,5\n2=5\n[Tessaro.VatCodes]\n1=3\n2=3\n"));
    const tessaro::Interface client;
    QCOMPARE(client.paymentCodeMap(), (IntMap{{0, 1}, {5, 2}}));
    QCOMPARE(client.vatCodeMap(), (IntMap{{3, 2}}));
}

QTEST_GUILESS_MAIN(TestInterfaceConfig)
#include "tst_interfaceconfig.moc"
