#include "checkreport.h"
#include "configurationjudge.h"
#include "servicejudge.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using till::CheckReport;
using till::ConfigurationJudge;
using till::ServiceJudge;

Q_DECLARE_METATYPE(CheckReport::Level)

/// The installation check's judgements, fed the plug-in's own report as JSON:
/// each answer of the service and each bad setting gets its level and words.
class TestCheckJudges : public QObject
{
    Q_OBJECT

private slots:
    void serviceAnswerIsJudged_data();
    void serviceAnswerIsJudged();
    void tokenRefusedByAGatewayNamesTheGatewaySwitch();
    void settingIsJudged_data();
    void settingIsJudged();
    void receiptNumberMaskIsJudged_data();
    void receiptNumberMaskIsJudged();

private:
    static CheckReport::Item item(const CheckReport &report, const QString &name);
};

namespace {

const QString address = QStringLiteral("http://127.0.0.1:8080/api/messages/installation-check-1");

QJsonObject request(int httpCode, const QString &shape)
{
    return {{QStringLiteral("path"), QStringLiteral("/api/messages/installation-check-1")},
            {QStringLiteral("url"), address},
            {QStringLiteral("sent"), true},
            {QStringLiteral("status"), httpCode >= 200 && httpCode < 300 ? 1 : 2},
            {QStringLiteral("httpCode"), httpCode},
            {QStringLiteral("networkError"), false},
            {QStringLiteral("answerShape"), shape}};
}

// The settings of a plug-in that reads nothing but defaults, with \a changed
// replacing or adding the setting of the same key.
QJsonObject pluginReport(const QJsonObject &changed, const QJsonArray &currencies = {})
{
    QJsonArray settings{
        QJsonObject{{QStringLiteral("key"), QStringLiteral("Tessaro:url")}, {QStringLiteral("set"), true},
                    {QStringLiteral("text"), QStringLiteral("https://tessaro.test/api")},
                    {QStringLiteral("value"), QStringLiteral("https://tessaro.test/api")},
                    {QStringLiteral("scheme"), QStringLiteral("https")}, {QStringLiteral("host"), QStringLiteral("tessaro.test")},
                    {QStringLiteral("valid"), true}, {QStringLiteral("length"), 24}},
        QJsonObject{{QStringLiteral("key"), QStringLiteral("Tessaro:timeout")}, {QStringLiteral("set"), false},
                    {QStringLiteral("text"), QString()}, {QStringLiteral("value"), 5},
                    {QStringLiteral("transportMs"), 5000}, {QStringLiteral("longestMs"), 120000}},
    };
    for (qsizetype i = 0; i < settings.size(); ++i) {
        if (settings.at(i).toObject().value(QStringLiteral("key")) == changed.value(QStringLiteral("key"))) {
            settings.removeAt(i);
            break;
        }
    }
    settings.append(changed);
    return {{QStringLiteral("settings"), settings}, {QStringLiteral("currencies"), currencies}};
}

} // namespace

CheckReport::Item TestCheckJudges::item(const CheckReport &report, const QString &name)
{
    const QList<CheckReport::Item> items = report.items();
    for (const CheckReport::Item &item : items) {
        if (item.name == name)
            return item;
    }
    return {};
}

void TestCheckJudges::serviceAnswerIsJudged_data()
{
    QTest::addColumn<QJsonObject>("answer");
    QTest::addColumn<bool>("gatewayOn");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("says");
    QTest::addColumn<QString>("hint");

    using Level = CheckReport::Level;
    const QString wrongPath = QStringLiteral("the service answers %1 at ") + address;
    QTest::newRow("200 array") << request(200, QStringLiteral("array")) << false << Level::Ok << "an authorised request gets through" << "";
    QTest::newRow("200 object") << request(200, QStringLiteral("object")) << false << Level::Ok << "gets through" << "";
    QTest::newRow("200 no JSON") << request(200, QStringLiteral("other")) << false << Level::Warning << address << "Tessaro:url";
    QTest::newRow("301") << request(301, QStringLiteral("other")) << false << Level::Failure << "never follows" << "Tessaro:url";
    QTest::newRow("302 empty") << request(302, QStringLiteral("empty")) << false << Level::Failure << "redirect" << "Tessaro:url";
    QTest::newRow("307") << request(307, QStringLiteral("empty")) << false << Level::Failure << "redirect" << "Tessaro:url";
    QTest::newRow("400 no JSON") << request(400, QStringLiteral("other")) << false << Level::Failure << wrongPath.arg(400) << "check Tessaro:url";
    QTest::newRow("404 no JSON") << request(404, QStringLiteral("other")) << false << Level::Failure << wrongPath.arg(404) << "check Tessaro:url";
    QTest::newRow("404 empty") << request(404, QStringLiteral("empty")) << false << Level::Failure << wrongPath.arg(404) << "check Tessaro:url";
    QTest::newRow("405 no JSON") << request(405, QStringLiteral("other")) << false << Level::Failure << wrongPath.arg(405) << "check Tessaro:url";
    QTest::newRow("404 JSON object") << request(404, QStringLiteral("object")) << false << Level::Warning << address << "Tessaro:url";
    QTest::newRow("404 JSON array") << request(404, QStringLiteral("array")) << false << Level::Warning << address << "Tessaro:url";
    QTest::newRow("400 JSON object") << request(400, QStringLiteral("object")) << false << Level::Warning << address << "Tessaro:url";
    QTest::newRow("405 JSON object") << request(405, QStringLiteral("object")) << false << Level::Warning << address << "Tessaro:url";
    QTest::newRow("410 JSON object") << request(410, QStringLiteral("object")) << false << Level::Failure << "HTTP 410" << "Tessaro:url";
    QTest::newRow("500 JSON object") << request(500, QStringLiteral("object")) << false << Level::Failure << "failure of its own" << "operators";
    QTest::newRow("503 no JSON") << request(503, QStringLiteral("other")) << false << Level::Failure << "failure of its own" << "operators";

    QJsonObject gateway = request(401, QStringLiteral("object"));
    gateway.insert(QStringLiteral("status"), 3);
    gateway.insert(QStringLiteral("thrown"), true);
    gateway.insert(QStringLiteral("serviceError"), QStringLiteral("authorization header is not SDK-HMAC-SHA256"));
    gateway.insert(QStringLiteral("gatewayError"), QStringLiteral("authorization header is not SDK-HMAC-SHA256"));
    QTest::newRow("gateway refusal, gateway off") << gateway << false << Level::Failure << "refused by the gateway"
                                                  << "switch on OrvelGate:tessaro";
    QTest::newRow("gateway refusal, gateway on") << gateway << true << Level::Failure << "refused by the gateway"
                                                 << "see the gateway's verdict below";
    QJsonObject token = request(401, QStringLiteral("object"));
    token.insert(QStringLiteral("status"), 3);
    token.insert(QStringLiteral("serviceError"), QStringLiteral("invalid_token"));
    QTest::newRow("token refusal, gateway on") << token << true << Level::Failure << "authorisation refused"
                                               << "switch off OrvelGate:tessaro";
}

void TestCheckJudges::serviceAnswerIsJudged()
{
    QFETCH(QJsonObject, answer);
    QFETCH(bool, gatewayOn);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, says);
    QFETCH(QString, hint);
    const QJsonObject token{{QStringLiteral("used"), !gatewayOn}, {QStringLiteral("ok"), true}};
    CheckReport report;
    ServiceJudge(QJsonObject{{QStringLiteral("token"), token}, {QStringLiteral("request"), answer}}, gatewayOn, 900)
        .judgeRequest(&report);
    const CheckReport::Item line = item(report, QStringLiteral("service request"));
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QVERIFY2(line.detail.contains(says), qPrintable(line.detail));
    QVERIFY2(line.hint.contains(hint), qPrintable(line.hint));
}

void TestCheckJudges::tokenRefusedByAGatewayNamesTheGatewaySwitch()
{
    const QJsonObject token{{QStringLiteral("used"), true}, {QStringLiteral("ok"), false}, {QStringLiteral("httpCode"), 401},
                            {QStringLiteral("serviceError"), QStringLiteral("authorization header missing")},
                            {QStringLiteral("gatewayError"), QStringLiteral("authorization header missing")}};
    CheckReport report;
    ServiceJudge(QJsonObject{{QStringLiteral("token"), token}}, false, 900).judgeToken(&report);
    const CheckReport::Item line = item(report, QStringLiteral("token endpoint"));
    QCOMPARE(line.level, CheckReport::Level::Failure);
    QVERIFY2(line.hint.contains(QStringLiteral("OrvelGate:tessaro")), qPrintable(line.hint));
    QVERIFY2(!line.hint.contains(QStringLiteral("Tessaro:clientId")), qPrintable(line.hint));
}

void TestCheckJudges::settingIsJudged_data()
{
    QTest::addColumn<QJsonObject>("setting");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("says");
    QTest::addColumn<QString>("doesNotSay");

    using Level = CheckReport::Level;
    const auto url = [](const QString &text, const QJsonObject &facts) {
        QJsonObject setting{{QStringLiteral("key"), QStringLiteral("Tessaro:url")}, {QStringLiteral("set"), true},
                            {QStringLiteral("text"), text}, {QStringLiteral("value"), text},
                            {QStringLiteral("scheme"), QStringLiteral("https")}, {QStringLiteral("host"), QStringLiteral("tessaro.test")},
                            {QStringLiteral("valid"), true}, {QStringLiteral("length"), text.size()}};
        for (auto it = facts.constBegin(); it != facts.constEnd(); ++it)
            setting.insert(it.key(), it.value());
        return setting;
    };
    QTest::newRow("url fine") << url(QStringLiteral("https://tessaro.test/api"), {}) << Level::Ok << "https://tessaro.test/api" << "";
    QTest::newRow("url with %00") << url(QStringLiteral("https://tessaro.test/a%00pi"), {{QStringLiteral("controlCharacters"), true}})
                                  << Level::Failure << "control character" << "";
    QTest::newRow("url with a blank") << url(QStringLiteral("https://tessaro.test/a%20pi"), {{QStringLiteral("blanks"), true}})
                                      << Level::Failure << "blank" << "";
    const QString longPath = QStringLiteral("https://tessaro.test/") + QString(100 * 1024, QLatin1Char('a'));
    QTest::newRow("url of 100 KB") << url(longPath, {}) << Level::Failure << "102421 characters" << QString(200, QLatin1Char('a'));
    QTest::newRow("url with a trailing slash") << url(QStringLiteral("https://tessaro.test/api/"), {{QStringLiteral("pathEndsWithSlash"), true}})
                                               << Level::Warning << "//messages/" << "";

    const auto timeout = [](const QString &text, qint64 seconds, int transportMs) {
        return QJsonObject{{QStringLiteral("key"), QStringLiteral("Tessaro:timeout")}, {QStringLiteral("set"), true},
                           {QStringLiteral("text"), text}, {QStringLiteral("value"), seconds},
                           {QStringLiteral("transportMs"), transportMs}, {QStringLiteral("longestMs"), 120000}};
    };
    QTest::newRow("time-out 5") << timeout(QStringLiteral("5"), 5, 5000) << Level::Ok << "5 s" << "";
    QTest::newRow("time-out 0") << timeout(QStringLiteral("0"), 0, 120000) << Level::Failure << "2 min 0 s" << "without limit";
    QTest::newRow("time-out -3") << timeout(QStringLiteral("-3"), -3, 120000) << Level::Failure << "2 min 0 s" << "without limit";
    QTest::newRow("time-out 90") << timeout(QStringLiteral("90"), 90, 90000) << Level::Warning << "90 s" << "";
    QTest::newRow("time-out 2147484") << timeout(QStringLiteral("2147484"), 2147484, 120000) << Level::Warning << "2 min 0 s"
                                      << "2147484 s: a cashier waits that long";

    const auto plain = [](const QString &key, const QString &text, const QJsonValue &value) {
        return QJsonObject{{QStringLiteral("key"), key}, {QStringLiteral("set"), !text.isEmpty()},
                           {QStringLiteral("text"), text}, {QStringLiteral("value"), value}};
    };
    QTest::newRow("typeTill") << plain(QStringLiteral("Tessaro:typeTill"), QStringLiteral("3"), 3) << Level::Ok << "3" << "";
    QTest::newRow("typeTill no number") << plain(QStringLiteral("Tessaro:typeTill"), QStringLiteral("kiosk"), 0) << Level::Warning
                                        << "the plug-in uses 0" << "";
    QTest::newRow("nameTypeTill") << plain(QStringLiteral("Tessaro:nameTypeTill"), QString(), QStringLiteral("RegularSales"))
                                  << Level::Ok << "RegularSales" << "";
    QTest::newRow("hostName unset") << plain(QStringLiteral("Tessaro:hostName"), QString(), QStringLiteral("till-07")) << Level::Ok
                                    << "till-07" << "";
    QTest::newRow("validationCoupon") << plain(QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("yes"), true) << Level::Ok
                                      << "on" << "";
    QTest::newRow("validationCoupon no yes/no word") << plain(QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("ja"), false)
                                                     << Level::Warning << "off" << "";
    QTest::newRow("onlineCheckEanReasonCode unset") << plain(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), QString(), -1)
                                                    << Level::Ok << "-1" << "";
    QTest::newRow("onlineCheckEanReasonCode no number") << plain(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), QStringLiteral("x"), -1)
                                                        << Level::Warning << "the plug-in uses -1" << "";
    QTest::newRow("coupon mask broken") << plain(QStringLiteral("Tessaro:validationCouponMask"), QStringLiteral("^(255"), QStringLiteral("^(255"))
                                        << Level::Warning << "no regular expression" << "";
}

void TestCheckJudges::settingIsJudged()
{
    QFETCH(QJsonObject, setting);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, says);
    QFETCH(QString, doesNotSay);
    CheckReport report;
    ConfigurationJudge(pluginReport(setting), std::nullopt).judge(&report);
    const CheckReport::Item line = item(report, setting.value(QStringLiteral("key")).toString());
    QCOMPARE(line.name, setting.value(QStringLiteral("key")).toString());
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QVERIFY2(line.detail.contains(says), qPrintable(line.detail.left(300)));
    if (!doesNotSay.isEmpty())
        QVERIFY2(!line.detail.contains(doesNotSay), qPrintable(line.detail.left(300)));
    if (level != CheckReport::Level::Ok)
        QVERIFY2(line.hint.contains(line.name), qPrintable(line.hint));
}

void TestCheckJudges::receiptNumberMaskIsJudged_data()
{
    QTest::addColumn<QJsonObject>("receiptNumber");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("says");

    using Level = CheckReport::Level;
    QTest::newRow("broken") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("0*(?<result\\d{1,12}")},
                                           {QStringLiteral("valid"), false}, {QStringLiteral("resultGroup"), false},
                                           {QStringLiteral("error"), QStringLiteral("syntax error in subpattern name (missing terminator?) at offset 11")}}
                            << Level::Failure << "no regular expression";
    QTest::newRow("without result") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("0*(\\d{1,12})")},
                                                   {QStringLiteral("valid"), true}, {QStringLiteral("resultGroup"), false}}
                                    << Level::Failure << "no group named result";
    QTest::newRow("fine") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("0*(?<result>\\d{1,12})")},
                                         {QStringLiteral("valid"), true}, {QStringLiteral("resultGroup"), true}}
                          << Level::Ok << "0*(?<result>\\d{1,12})";
}

void TestCheckJudges::receiptNumberMaskIsJudged()
{
    QFETCH(QJsonObject, receiptNumber);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, says);
    const QJsonArray currencies{QJsonObject{{QStringLiteral("code"), 2}, {QStringLiteral("receiptNumber"), receiptNumber}}};
    CheckReport report;
    ConfigurationJudge(pluginReport(QJsonObject(), currencies), std::nullopt).judge(&report);
    const CheckReport::Item line = item(report, QStringLiteral("Tessaro.ReceiptNumber.2:mask"));
    QCOMPARE(line.name, QStringLiteral("Tessaro.ReceiptNumber.2:mask"));
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QVERIFY2(line.detail.contains(says), qPrintable(line.detail));
}

QTEST_GUILESS_MAIN(TestCheckJudges)
#include "tst_servicejudge.moc"
