#include "servicetestbed.h"

#include <plugin/selfcheck/installationcheck.h>

#include <QHostInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

/// The plug-in's half of the installation check, through its exported entry
/// point against a scripted service: every field of its report says what the
/// plug-in read, fetched and sent.
class TestInstallationCheck : public QObject
{
    Q_OBJECT

private slots:
    void settingIsReportedAsThePluginReadsIt_data();
    void settingIsReportedAsThePluginReadsIt();
    void sectionsAreReportedAsTheyLoad();
    void currencySettingsAreReported();
    void tokenAndRequestGoThroughTheClient();
    void refusedTokenStopsTheRequest();
    void optionsLeaveTheExchangesOut();
    void withoutTokenAuthTheRequestGoesAlone();
    void refusedRequestIsDescribed();
    void answerShapeIsNamed_data();
    void answerShapeIsNamed();
    void lostConnectionIsDescribed();
    void gatewayRefusalIsNamed();
    void signingIsReported_data();
    void signingIsReported();
};

namespace {

using Settings = QMap<QString, QString>;

void collect(const char *report, void *context)
{
    *static_cast<QByteArray *>(context) = QByteArray(report);
}

QJsonObject runCheck(const QJsonObject &options = {})
{
    QByteArray delivered;
    tessaro_check_installation(QJsonDocument(options).toJson(QJsonDocument::Compact).constData(), &collect, &delivered);
    return QJsonDocument::fromJson(delivered).object();
}

QJsonObject entry(const QJsonArray &array, const QString &field, const QString &name)
{
    for (const QJsonValue &value : array) {
        if (value.toObject().value(field).toString() == name)
            return value.toObject();
    }
    return {};
}

const QJsonObject noExchange{{QStringLiteral("token"), false}, {QStringLiteral("request"), false}};

} // namespace

void TestInstallationCheck::settingIsReportedAsThePluginReadsIt_data()
{
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QJsonObject>("expected");

    using Map = QMap<QString, QString>;
    const auto plain = [](const QString &key, bool set, const QString &text, const QJsonValue &value) {
        return QJsonObject{{QStringLiteral("key"), key}, {QStringLiteral("set"), set}, {QStringLiteral("text"), text}, {QStringLiteral("value"), value}};
    };
    QJsonObject url = plain(QStringLiteral("Tessaro:url"), true, QStringLiteral("https://tessaro.test/api/"), QStringLiteral("https://tessaro.test/api/"));
    url.insert(QStringLiteral("scheme"), QStringLiteral("https"));
    url.insert(QStringLiteral("host"), QStringLiteral("tessaro.test"));
    url.insert(QStringLiteral("port"), 443);
    url.insert(QStringLiteral("valid"), true);
    url.insert(QStringLiteral("length"), 25);
    url.insert(QStringLiteral("blanks"), false);
    url.insert(QStringLiteral("controlCharacters"), false);
    url.insert(QStringLiteral("pathEndsWithSlash"), true);
    QTest::newRow("url") << Map{{QStringLiteral("Tessaro:url"), QStringLiteral("https://tessaro.test/api/")}} << "Tessaro:url" << url;

    // Shown as Qt displays an address: the blank decoded, the control character not.
    QJsonObject token = plain(QStringLiteral("Tessaro:tokenUrl"), true, QStringLiteral("http://tessaro.test:8080/a b%00"),
                              QStringLiteral("http://tessaro.test:8080/a b%00"));
    token.insert(QStringLiteral("scheme"), QStringLiteral("http"));
    token.insert(QStringLiteral("port"), 8080);
    token.insert(QStringLiteral("length"), 31);
    token.insert(QStringLiteral("blanks"), true);
    token.insert(QStringLiteral("controlCharacters"), true);
    token.insert(QStringLiteral("pathEndsWithSlash"), false);
    QTest::newRow("token url") << Map{{QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("http://tessaro.test:8080/a b%00")}}
                               << "Tessaro:tokenUrl" << token;
    QTest::newRow("url with a unit separator") << Map{{QStringLiteral("Tessaro:url"), QStringLiteral("http://tessaro.test/a%1Fb")}} << "Tessaro:url"
                                               << QJsonObject{{QStringLiteral("controlCharacters"), true}, {QStringLiteral("blanks"), false}};
    QJsonObject plainHttp{{QStringLiteral("port"), 80}, {QStringLiteral("valid"), false}, {QStringLiteral("host"), QString()}};
    QTest::newRow("url without host") << Map{{QStringLiteral("Tessaro:url"), QStringLiteral("http:///api")}} << "Tessaro:url" << plainHttp;

    QTest::newRow("useTokenAuth") << Map{{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("no")}} << "Tessaro:useTokenAuth"
                                  << plain(QStringLiteral("Tessaro:useTokenAuth"), true, QStringLiteral("no"), false);
    QTest::newRow("clientId") << Map{} << "Tessaro:clientId"
                              << plain(QStringLiteral("Tessaro:clientId"), true, ServiceTestBed::clientId, ServiceTestBed::clientId);
    QTest::newRow("realmId") << Map{} << "Tessaro:realmId"
                             << plain(QStringLiteral("Tessaro:realmId"), true, ServiceTestBed::realmId, ServiceTestBed::realmId);
    QTest::newRow("authorizationHeader") << Map{{QStringLiteral("Tessaro:authorizationHeader"), QStringLiteral(" Basic abc")}}
                                         << "Tessaro:authorizationHeader"
                                         << QJsonObject{{QStringLiteral("key"), QStringLiteral("Tessaro:authorizationHeader")},
                                                        {QStringLiteral("set"), true}, {QStringLiteral("secret"), true},
                                                        {QStringLiteral("length"), 10}, {QStringLiteral("blanksAround"), true},
                                                        {QStringLiteral("scheme"), QStringLiteral("Basic")}};
    QTest::newRow("appKey unset") << Map{} << "OrvelGate:appKey"
                                  << QJsonObject{{QStringLiteral("key"), QStringLiteral("OrvelGate:appKey")}, {QStringLiteral("set"), false},
                                                 {QStringLiteral("secret"), true}, {QStringLiteral("length"), 0},
                                                 {QStringLiteral("blanksAround"), false}};
    QTest::newRow("appSecret") << Map{{QStringLiteral("OrvelGate:appSecret"), QStringLiteral("s3cret")}} << "OrvelGate:appSecret"
                               << QJsonObject{{QStringLiteral("set"), true}, {QStringLiteral("length"), 6}, {QStringLiteral("blanksAround"), false}};

    QJsonObject timeout = plain(QStringLiteral("Tessaro:timeout"), true, QStringLiteral("7"), 7);
    timeout.insert(QStringLiteral("transportMs"), 7000);
    timeout.insert(QStringLiteral("longestMs"), 120000);
    QTest::newRow("timeout") << Map{{QStringLiteral("Tessaro:timeout"), QStringLiteral("7")}} << "Tessaro:timeout" << timeout;
    QTest::newRow("timeout 0") << Map{{QStringLiteral("Tessaro:timeout"), QStringLiteral("0")}} << "Tessaro:timeout"
                               << QJsonObject{{QStringLiteral("value"), 0}, {QStringLiteral("transportMs"), 120000}};
    QTest::newRow("timeout unset") << Map{} << "Tessaro:timeout"
                                   << QJsonObject{{QStringLiteral("set"), false}, {QStringLiteral("text"), QString()}, {QStringLiteral("value"), 5},
                                                  {QStringLiteral("transportMs"), 5000}};

    QTest::newRow("coupon mask") << Map{{QStringLiteral("Tessaro:validationCouponMask"), QStringLiteral("^77")}} << "Tessaro:validationCouponMask"
                                 << plain(QStringLiteral("Tessaro:validationCouponMask"), true, QStringLiteral("^77"), QStringLiteral("^77"));
    QTest::newRow("coupon mask default") << Map{} << "Tessaro:validationCouponMask"
                                         << plain(QStringLiteral("Tessaro:validationCouponMask"), false, QString(), QStringLiteral("^255.*"));
    QTest::newRow("validationCoupon") << Map{{QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("yes")}} << "Tessaro:validationCoupon"
                                      << plain(QStringLiteral("Tessaro:validationCoupon"), true, QStringLiteral("yes"), true);
    QTest::newRow("onlineCheckEanReasonCode") << Map{{QStringLiteral("Tessaro:onlineCheckEanReasonCode"), QStringLiteral("4")}}
                                              << "Tessaro:onlineCheckEanReasonCode"
                                              << plain(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), true, QStringLiteral("4"), 4);
    QTest::newRow("onlineCheckEanReasonCode unset") << Map{} << "Tessaro:onlineCheckEanReasonCode"
                                                    << plain(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), false, QString(), -1);
    QTest::newRow("typeTill") << Map{{QStringLiteral("Tessaro:typeTill"), QStringLiteral("3")}} << "Tessaro:typeTill"
                              << plain(QStringLiteral("Tessaro:typeTill"), true, QStringLiteral("3"), 3);
    QTest::newRow("nameTypeTill") << Map{} << "Tessaro:nameTypeTill"
                                  << plain(QStringLiteral("Tessaro:nameTypeTill"), false, QString(), QStringLiteral("RegularSales"));
    QTest::newRow("hostName") << Map{{QStringLiteral("Tessaro:hostName"), QStringLiteral("till-07")}} << "Tessaro:hostName"
                              << plain(QStringLiteral("Tessaro:hostName"), true, QStringLiteral("till-07"), QStringLiteral("till-07"));
    QTest::newRow("hostName unset") << Map{} << "Tessaro:hostName"
                                    << plain(QStringLiteral("Tessaro:hostName"), false, QString(), QHostInfo::localHostName());
    QTest::newRow("card number codes") << Map{{QStringLiteral("Tessaro:operationIdAsCardNumber"), QStringLiteral("3,x")}}
                                       << "Tessaro:operationIdAsCardNumber"
                                       << plain(QStringLiteral("Tessaro:operationIdAsCardNumber"), true, QStringLiteral("3,x"), QJsonArray{3, 0});
    QTest::newRow("approval code codes") << Map{{QStringLiteral("Tessaro:operationIdAsEFTApprovalCode"), QStringLiteral("4")}}
                                         << "Tessaro:operationIdAsEFTApprovalCode"
                                         << plain(QStringLiteral("Tessaro:operationIdAsEFTApprovalCode"), true, QStringLiteral("4"), QJsonArray{4});
    QTest::newRow("gateway") << Map{{QStringLiteral("OrvelGate:tessaro"), QStringLiteral("true")}} << "OrvelGate:tessaro"
                             << plain(QStringLiteral("OrvelGate:tessaro"), true, QStringLiteral("true"), true);
    QTest::newRow("gateway unset") << Map{} << "OrvelGate:tessaro" << plain(QStringLiteral("OrvelGate:tessaro"), false, QString(), false);
    QTest::newRow("byChange unset") << Map{} << "TessaroBack.PaymentRoundingAmount:byChange"
                                    << plain(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), false, QString(), true);
    QTest::newRow("fiscalRound unset") << Map{} << "TessaroBack.PaymentRoundingAmount:fiscalRound"
                                       << plain(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), false, QString(), true);
    QTest::newRow("stage default") << Map{} << "OrvelGate:xStage" << plain(QStringLiteral("OrvelGate:xStage"), false, QString(), QStringLiteral("PreProd"));
    QTest::newRow("byChange") << Map{{QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), QStringLiteral("false")}}
                              << "TessaroBack.PaymentRoundingAmount:byChange"
                              << plain(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), true, QStringLiteral("false"), false);
    QTest::newRow("fiscalRound") << Map{{QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), QStringLiteral("off")}}
                                 << "TessaroBack.PaymentRoundingAmount:fiscalRound"
                                 << plain(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), true, QStringLiteral("off"), false);
}

void TestInstallationCheck::settingIsReportedAsThePluginReadsIt()
{
    QFETCH(Settings, settings);
    QFETCH(QString, key);
    QFETCH(QJsonObject, expected);
    ServiceTestBed bed(settings);
    const QJsonObject setting = entry(runCheck(noExchange).value(QStringLiteral("settings")).toArray(), QStringLiteral("key"), key);
    QCOMPARE(setting.value(QStringLiteral("key")).toString(), key);
    for (auto it = expected.constBegin(); it != expected.constEnd(); ++it)
        QVERIFY2(setting.value(it.key()) == it.value(), qPrintable(it.key() + QStringLiteral(": ") + QString::fromUtf8(QJsonDocument(setting).toJson())));
    // A secret's text never leaves the plug-in.
    if (setting.value(QStringLiteral("secret")).toBool()) {
        QVERIFY(!setting.contains(QStringLiteral("text")));
        QVERIFY(!setting.contains(QStringLiteral("value")));
    }
}

void TestInstallationCheck::sectionsAreReportedAsTheyLoad()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro.PaymentCodes:1"), QStringLiteral("0,5")},
                        {QStringLiteral("Tessaro.PaymentCodes:abc"), QStringLiteral("7")},
                        {QStringLiteral("Tessaro.VatCodes:2"), QStringLiteral("4")},
                        {QStringLiteral("Tessaro.EanReasons:9"), QStringLiteral("Нет штрихкода")},
                        {QStringLiteral("Tessaro.DiscardPaymentFields:3"), QStringLiteral("terminalId,mediaDesc")},
                        {QStringLiteral("Tessaro.ForbiddenMixedValuts:1,2"), QStringLiteral("3")},
                        {QStringLiteral("Tessaro.ForbiddenMixedValuts:x"), QStringLiteral("3")},
                        {QStringLiteral("TessaroBack.AdditionalBackBySaleValuts:4"), QStringLiteral("5,6")},
                        {QStringLiteral("TessaroBack.AdditionalBackBySaleValuts:7,8"), QStringLiteral("9")}});
    const QJsonArray sections = runCheck(noExchange).value(QStringLiteral("sections")).toArray();
    QCOMPARE(sections.size(), 6);
    const auto section = [&sections](const QString &name) { return entry(sections, QStringLiteral("section"), name); };

    const QJsonObject payment = section(QStringLiteral("Tessaro.PaymentCodes"));
    QCOMPARE(payment.value(QStringLiteral("keys")).toObject(),
             (QJsonObject{{QStringLiteral("1"), QStringLiteral("0,5")}, {QStringLiteral("abc"), QStringLiteral("7")}}));
    QCOMPARE(payment.value(QStringLiteral("ignored")).toArray(), QJsonArray{QStringLiteral("abc")});
    QCOMPARE(payment.value(QStringLiteral("map")).toObject(), (QJsonObject{{QStringLiteral("0"), 1}, {QStringLiteral("5"), 1}}));
    QCOMPARE(section(QStringLiteral("Tessaro.VatCodes")).value(QStringLiteral("map")).toObject(), (QJsonObject{{QStringLiteral("4"), 2}}));
    QCOMPARE(section(QStringLiteral("Tessaro.VatCodes")).value(QStringLiteral("ignored")).toArray(), QJsonArray());
    QCOMPARE(section(QStringLiteral("Tessaro.EanReasons")).value(QStringLiteral("map")).toObject(),
             (QJsonObject{{QStringLiteral("9"), QJsonArray{QStringLiteral("Нет штрихкода")}}}));
    QCOMPARE(section(QStringLiteral("Tessaro.DiscardPaymentFields")).value(QStringLiteral("map")).toObject(),
             (QJsonObject{{QStringLiteral("3"), QJsonArray{QStringLiteral("terminalId"), QStringLiteral("mediaDesc")}}}));
    const QJsonObject forbidden = section(QStringLiteral("Tessaro.ForbiddenMixedValuts"));
    QCOMPARE(forbidden.value(QStringLiteral("ignored")).toArray(), QJsonArray{QStringLiteral("x")});
    QCOMPARE(forbidden.value(QStringLiteral("map")).toObject(),
             (QJsonObject{{QStringLiteral("1"), QJsonArray{3}}, {QStringLiteral("2"), QJsonArray{3}}, {QStringLiteral("3"), QJsonArray{1, 2}}}));
    const QJsonObject additional = section(QStringLiteral("TessaroBack.AdditionalBackBySaleValuts"));
    QCOMPARE(additional.value(QStringLiteral("ignored")).toArray(), QJsonArray());
    QCOMPARE(additional.value(QStringLiteral("map")).toObject().value(QStringLiteral("4")).toArray(), (QJsonArray{5, 6}));
    QVERIFY(additional.value(QStringLiteral("map")).toObject().contains(QStringLiteral("7")));
}

void TestInstallationCheck::currencySettingsAreReported()
{
    // A backslash is written doubled in the configuration file.
    ServiceTestBed bed({{QStringLiteral("Tessaro.ReceiptNumber.2:mask"), QStringLiteral("0*(?<result\\\\d{1,12}")},
                        {QStringLiteral("Tessaro.ReceiptNumber.2:symbolsToRemove"), QStringLiteral("-")},
                        {QStringLiteral("Tessaro.ReceiptNumber.3:mask"), QStringLiteral("0*(\\\\d+)")},
                        {QStringLiteral("Tessaro.CustomFields.3:slip"), QStringLiteral("{rrn}")},
                        {QStringLiteral("Tessaro.slip.3:symbolsToRemove"), QStringLiteral("#")}});
    QJsonObject options = noExchange;
    options.insert(QStringLiteral("currencies"), QJsonArray{1, 2, 3});
    const QJsonArray currencies = runCheck(options).value(QStringLiteral("currencies")).toArray();
    QCOMPARE(currencies.size(), 3);

    const QJsonObject plain = currencies.at(0).toObject();
    QCOMPARE(plain.value(QStringLiteral("code")).toInt(), 1);
    QCOMPARE(plain.value(QStringLiteral("receiptNumber")).toObject(),
             (QJsonObject{{QStringLiteral("maskSet"), false}, {QStringLiteral("mask"), QString()}, {QStringLiteral("valid"), true},
                          {QStringLiteral("resultGroup"), true}, {QStringLiteral("symbolsToRemove"), QString()}}));
    QCOMPARE(plain.value(QStringLiteral("customFields")).toObject(), QJsonObject());

    const QJsonObject broken = currencies.at(1).toObject().value(QStringLiteral("receiptNumber")).toObject();
    QCOMPARE(currencies.at(1).toObject().value(QStringLiteral("code")).toInt(), 2);
    QCOMPARE(broken.value(QStringLiteral("maskSet")).toBool(), true);
    QCOMPARE(broken.value(QStringLiteral("mask")).toString(), QStringLiteral("0*(?<result\\d{1,12}"));
    QCOMPARE(broken.value(QStringLiteral("valid")).toBool(), false);
    QCOMPARE(broken.value(QStringLiteral("symbolsToRemove")).toString(), QStringLiteral("-"));
    QVERIFY2(broken.value(QStringLiteral("error")).toString().contains(QStringLiteral("at offset")), qPrintable(broken.value(QStringLiteral("error")).toString()));

    const QJsonObject third = currencies.at(2).toObject();
    QCOMPARE(third.value(QStringLiteral("receiptNumber")).toObject().value(QStringLiteral("valid")).toBool(), true);
    QCOMPARE(third.value(QStringLiteral("receiptNumber")).toObject().value(QStringLiteral("resultGroup")).toBool(), false);
    QVERIFY(!third.value(QStringLiteral("receiptNumber")).toObject().contains(QStringLiteral("error")));
    QCOMPARE(third.value(QStringLiteral("customFields")).toObject(),
             (QJsonObject{{QStringLiteral("slip"), QJsonObject{{QStringLiteral("template"), QStringLiteral("{rrn}")},
                                                               {QStringLiteral("symbolsToRemove"), QStringLiteral("#")}}}}));
}

void TestInstallationCheck::tokenAndRequestGoThroughTheClient()
{
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(ScriptedHttpServer::Answer::json(200, "[]"));
    const QJsonObject report = runCheck();
    QVERIFY(!QJsonDocument(report).toJson().contains("tok-1"));

    const QJsonObject token = report.value(QStringLiteral("token")).toObject();
    QCOMPARE(token.value(QStringLiteral("used")).toBool(), true);
    QCOMPARE(token.value(QStringLiteral("ok")).toBool(), true);
    QCOMPARE(token.value(QStringLiteral("empty")).toBool(), false);
    QCOMPARE(token.value(QStringLiteral("lifetimeSeconds")).toInt(), 300);
    QVERIFY(token.value(QStringLiteral("ms")).isDouble());

    const QList<ScriptedHttpServer::Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).path, QStringLiteral("/oauth/token"));
    QCOMPARE(requests.at(1).method, QByteArray("GET"));
    QVERIFY2(requests.at(1).path.startsWith(QStringLiteral("/api/messages/installation-check-")), qPrintable(requests.at(1).path));
    // The token fetched is the one the request carries.
    QCOMPARE(requests.at(1).header("Authorization"), QByteArray("Bearer tok-1"));

    const QJsonObject request = report.value(QStringLiteral("request")).toObject();
    QCOMPARE(request.value(QStringLiteral("sent")).toBool(), true);
    QCOMPARE(request.value(QStringLiteral("path")).toString(), requests.at(1).path);
    QCOMPARE(request.value(QStringLiteral("url")).toString(), bed.server().url(requests.at(1).path).toString());
    QCOMPARE(request.value(QStringLiteral("status")).toInt(), 1);
    QCOMPARE(request.value(QStringLiteral("httpCode")).toInt(), 200);
    QCOMPARE(request.value(QStringLiteral("networkError")).toBool(), false);
    QCOMPARE(request.value(QStringLiteral("answerShape")).toString(), QStringLiteral("array"));
    QCOMPARE(request.value(QStringLiteral("answerBytes")).toInt(), 2);
    QVERIFY(request.value(QStringLiteral("ms")).isDouble());
    for (const QString &absent : {QStringLiteral("thrown"), QStringLiteral("message"), QStringLiteral("messageId"),
                                  QStringLiteral("transportError"), QStringLiteral("serviceError"), QStringLiteral("gatewayError")})
        QVERIFY2(!request.contains(absent), qPrintable(absent));
    QCOMPARE(report.value(QStringLiteral("signing")).toObject(), (QJsonObject{{QStringLiteral("on"), false}}));
}

void TestInstallationCheck::refusedTokenStopsTheRequest()
{
    ServiceTestBed bed;
    bed.server().enqueue(ScriptedHttpServer::Answer::json(401, R"({"error":"invalid_client"})"));
    const QJsonObject report = runCheck();
    const QJsonObject token = report.value(QStringLiteral("token")).toObject();
    QCOMPARE(token.value(QStringLiteral("ok")), QJsonValue(false));
    QCOMPARE(token.value(QStringLiteral("httpCode")).toInt(), 401);
    QCOMPARE(token.value(QStringLiteral("networkError")).toBool(), false);
    QCOMPARE(token.value(QStringLiteral("serviceError")).toString(), QStringLiteral("invalid_client"));
    QCOMPARE(token.value(QStringLiteral("answerShape")).toString(), QStringLiteral("object"));
    QVERIFY(!token.value(QStringLiteral("message")).toString().isEmpty());
    QVERIFY(token.value(QStringLiteral("transportError")).toString().contains(QStringLiteral("HTTP 401")));
    QVERIFY(token.value(QStringLiteral("ms")).isDouble());
    QCOMPARE(report.value(QStringLiteral("request")).toObject().value(QStringLiteral("sent")).toBool(), false);
    QCOMPARE(bed.server().requestCount(), 1);
}

void TestInstallationCheck::optionsLeaveTheExchangesOut()
{
    ServiceTestBed bed;
    const QJsonObject report = runCheck(noExchange);
    QCOMPARE(report.value(QStringLiteral("token")).toObject(), (QJsonObject{{QStringLiteral("used"), true}}));
    const QJsonObject request = report.value(QStringLiteral("request")).toObject();
    QCOMPARE(request.value(QStringLiteral("sent")).toBool(), false);
    QVERIFY(request.value(QStringLiteral("path")).toString().startsWith(QStringLiteral("/api/messages/installation-check-")));
    QVERIFY(!request.contains(QStringLiteral("httpCode")));
    QCOMPARE(bed.server().requestCount(), 0);
}

void TestInstallationCheck::withoutTokenAuthTheRequestGoesAlone()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().enqueue(ScriptedHttpServer::Answer::json(200, "[]"));
    const QJsonObject report = runCheck();
    QCOMPARE(report.value(QStringLiteral("token")).toObject(), (QJsonObject{{QStringLiteral("used"), false}}));
    QCOMPARE(report.value(QStringLiteral("request")).toObject().value(QStringLiteral("sent")).toBool(), true);
    QCOMPARE(bed.server().requestCount(), 1);
    QVERIFY(bed.server().requests().first().header("Authorization").isEmpty());
}

void TestInstallationCheck::refusedRequestIsDescribed()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().enqueue(ScriptedHttpServer::Answer::reply(404, "<html>nothing here</html>"));
    const QJsonObject request = runCheck().value(QStringLiteral("request")).toObject();
    QCOMPARE(request.value(QStringLiteral("status")).toInt(), 2);
    QCOMPARE(request.value(QStringLiteral("httpCode")).toInt(), 404);
    QCOMPARE(request.value(QStringLiteral("answerShape")).toString(), QStringLiteral("other"));
    QCOMPARE(request.value(QStringLiteral("answerBytes")).toInt(), 25);
    QCOMPARE(request.value(QStringLiteral("messageId")).toString(), QStringLiteral("tessaroUnknownError"));
    QVERIFY(!request.value(QStringLiteral("message")).toString().isEmpty());
    QVERIFY(request.value(QStringLiteral("transportError")).toString().contains(QStringLiteral("HTTP 404")));
    QVERIFY(!request.contains(QStringLiteral("thrown")));
}

void TestInstallationCheck::answerShapeIsNamed_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("shape");
    QTest::newRow("array") << QByteArray("[]") << "array";
    QTest::newRow("object") << QByteArray(R"({"message":"Not found"})") << "object";
    QTest::newRow("empty") << QByteArray() << "empty";
    QTest::newRow("blank") << QByteArray(" \r\n") << "empty";
    QTest::newRow("HTML") << QByteArray("<html></html>") << "other";
    QTest::newRow("a number") << QByteArray("42") << "other";
}

void TestInstallationCheck::answerShapeIsNamed()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, shape);
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().enqueue(ScriptedHttpServer::Answer::reply(404, body));
    const QJsonObject request = runCheck().value(QStringLiteral("request")).toObject();
    QCOMPARE(request.value(QStringLiteral("answerShape")).toString(), shape);
    QCOMPARE(request.value(QStringLiteral("answerBytes")).toInt(), body.size());
}

void TestInstallationCheck::lostConnectionIsDescribed()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().setDefaultAnswer(ScriptedHttpServer::Answer::reset());
    const QJsonObject request = runCheck().value(QStringLiteral("request")).toObject();
    QCOMPARE(request.value(QStringLiteral("thrown")).toBool(), true);
    QCOMPARE(request.value(QStringLiteral("networkError")).toBool(), true);
    QCOMPARE(request.value(QStringLiteral("messageId")).toString(), QStringLiteral("tessaroConnectionError"));
    QVERIFY(!request.value(QStringLiteral("message")).toString().isEmpty());
    QVERIFY(!request.value(QStringLiteral("transportError")).toString().isEmpty());
    QVERIFY(request.value(QStringLiteral("ms")).isDouble());
}

void TestInstallationCheck::gatewayRefusalIsNamed()
{
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-2"));
    bed.server().setDefaultAnswer(ScriptedHttpServer::Answer::json(401, R"({"error_msg":"authorization header missing"})"));
    const QJsonObject request = runCheck().value(QStringLiteral("request")).toObject();
    // Refused twice (the plug-in fetches a token once more), and thrown.
    QCOMPARE(request.value(QStringLiteral("thrown")).toBool(), true);
    QCOMPARE(request.value(QStringLiteral("gatewayError")).toString(), QStringLiteral("authorization header missing"));
    QCOMPARE(request.value(QStringLiteral("serviceError")).toString(), QStringLiteral("authorization header missing"));
    QCOMPARE(request.value(QStringLiteral("httpCode")).toInt(), 401);
}

void TestInstallationCheck::signingIsReported_data()
{
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<QJsonObject>("signing");
    using Map = QMap<QString, QString>;
    const Map gateway{{QStringLiteral("OrvelGate:tessaro"), QStringLiteral("true")},
                      {QStringLiteral("OrvelGate:appKey"), QStringLiteral("key-1")},
                      {QStringLiteral("OrvelGate:appSecret"), QStringLiteral("secret-1")}};
    QTest::newRow("off") << Map{} << QJsonObject{{QStringLiteral("on"), false}};
    QTest::newRow("signed") << gateway << QJsonObject{{QStringLiteral("on"), true}, {QStringLiteral("signed"), true},
                                                      {QStringLiteral("signedHeaders"), QStringLiteral("env;host;x-sdk-date;x-stage")}};
    Map unsigned_ = gateway;
    unsigned_.insert(QStringLiteral("OrvelGate:appSecret"), QString());
    QTest::newRow("without secret") << unsigned_ << QJsonObject{{QStringLiteral("on"), true}, {QStringLiteral("signed"), false}};
}

void TestInstallationCheck::signingIsReported()
{
    QFETCH(Settings, settings);
    QFETCH(QJsonObject, signing);
    ServiceTestBed bed(settings);
    bed.server().setDefaultAnswer(ScriptedHttpServer::Answer::json(200, "[]"));
    const QJsonObject report = runCheck(QJsonObject{{QStringLiteral("token"), false}});
    QCOMPARE(report.value(QStringLiteral("signing")).toObject(), signing);
    if (signing.value(QStringLiteral("signed")).toBool()) {
        // The request itself goes signed, never with a token.
        QCOMPARE(bed.server().requestCount(), 1);
        QVERIFY(bed.server().requests().first().header("Authorization").startsWith("SDK-HMAC-SHA256 Access=key-1, "));
        QVERIFY(!QJsonDocument(report).toJson().contains("secret-1"));
    }
}

QTEST_GUILESS_MAIN(TestInstallationCheck)
#include "tst_installationcheck.moc"
