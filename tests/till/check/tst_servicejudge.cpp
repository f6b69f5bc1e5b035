#include "checklines.h"
#include "servicejudge.h"

#include <QJsonObject>
#include <QTest>
#include <QTimeZone>

using till::CheckReport;
using till::NetworkProbe;
using till::ServiceJudge;

/// The service judge, fed the plug-in's own report of its way to the service
/// as JSON and the probe of the service's clock: each step's outcome gets its
/// level, its words and a hint of what to change.
class TestServiceJudge : public QObject
{
    Q_OBJECT

private slots:
    void tokenIsJudged_data();
    void tokenIsJudged();
    void requestIsJudged_data();
    void requestIsJudged();
    void requestWithoutAnswerIsJudged_data();
    void requestWithoutAnswerIsJudged();
    void signatureIsJudged_data();
    void signatureIsJudged();
    void clockIsJudged_data();
    void clockIsJudged();
};

namespace {

const QString address = QStringLiteral("http://127.0.0.1:8080/api/messages/installation-check-1");
const QString path = QStringLiteral("GET /api/messages/installation-check-1");
const QString clockHint = QStringLiteral("set the till's date and time right, best by NTP (timedatectl set-ntp true)");
const QString credentialsHint = QStringLiteral("the token endpoint does not know these credentials: check Tessaro:clientId, "
                                               "Tessaro:realmId and Tessaro:authorizationHeader");
const QString gatewayOffHint = QStringLiteral("the service sits behind the gateway: switch on OrvelGate:tessaro and set OrvelGate:appKey, "
                                              "OrvelGate:appSecret and OrvelGate:xStage to what the gateway issued");

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

// \a object with \a facts added or replaced.
QJsonObject with(QJsonObject object, const QJsonObject &facts)
{
    for (auto it = facts.constBegin(); it != facts.constEnd(); ++it)
        object.insert(it.key(), it.value());
    return object;
}

QJsonObject token(const QJsonObject &facts)
{
    return with({{QStringLiteral("used"), true}, {QStringLiteral("ok"), false}}, facts);
}

} // namespace

void TestServiceJudge::tokenIsJudged_data()
{
    QTest::addColumn<QJsonObject>("token");
    QTest::addColumn<bool>("gatewayOn");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("hint");

    using Level = CheckReport::Level;
    const QJsonObject issued{{QStringLiteral("ok"), true}, {QStringLiteral("ms"), 12}};
    QTest::newRow("not used") << QJsonObject{{QStringLiteral("used"), false}} << false << Level::Ok << "not used" << "";
    QTest::newRow("not used, gateway on") << QJsonObject{{QStringLiteral("used"), false}} << true << Level::Ok
                                          << "not used: the gateway signs the requests" << "";
    QTest::newRow("issued for 300 s") << token(with(issued, {{QStringLiteral("lifetimeSeconds"), 300}})) << false << Level::Ok
                                      << "token issued, valid for 5 min 0 s" << "";
    QTest::newRow("issued for 45 s") << token(with(issued, {{QStringLiteral("lifetimeSeconds"), 45}})) << false << Level::Ok
                                     << "token issued, valid for 45 s" << "";
    QTest::newRow("issued without lifetime") << token(issued) << false << Level::Ok << "token issued, lifetime not given" << "";
    QTest::newRow("issued empty") << token(with(issued, {{QStringLiteral("empty"), true}})) << false << Level::Failure
                                  << "answered without an access_token"
                                  << "Tessaro:tokenUrl names something that is no OAuth2 token endpoint";
    const auto refused = [](int code, const QString &said) {
        return token({{QStringLiteral("httpCode"), code}, {QStringLiteral("serviceError"), said}, {QStringLiteral("ms"), 7}});
    };
    QTest::newRow("400") << refused(400, QStringLiteral("invalid_request")) << false << Level::Failure
                         << "no token: HTTP 400 (\"invalid_request\")" << credentialsHint;
    QTest::newRow("401") << refused(401, QStringLiteral("invalid_client")) << false << Level::Failure
                         << "no token: HTTP 401 (\"invalid_client\")" << credentialsHint;
    QTest::newRow("403 without words") << refused(403, QString()) << false << Level::Failure << "no token: HTTP 403" << credentialsHint;
    const QString wrongPath = QStringLiteral("nothing issues tokens at that address: check the path in Tessaro:tokenUrl");
    QTest::newRow("404") << refused(404, QString()) << false << Level::Failure << "no token: HTTP 404" << wrongPath;
    QTest::newRow("405") << refused(405, QString()) << false << Level::Failure << "no token: HTTP 405" << wrongPath;
    QTest::newRow("500") << refused(500, QString()) << false << Level::Failure << "no token: HTTP 500"
                         << "check Tessaro:tokenUrl and the way to it (above)";
    QTest::newRow("no answer") << token({{QStringLiteral("networkError"), true},
                                         {QStringLiteral("transportError"), QStringLiteral("Connection refused")}})
                               << false << Level::Failure << "no token: no answer: Connection refused"
                               << "check Tessaro:tokenUrl and the way to it (above)";
    const QJsonObject gateway = with(refused(401, QStringLiteral("authorization header missing")),
                                     {{QStringLiteral("gatewayError"), QStringLiteral("authorization header missing")}});
    QTest::newRow("gateway's refusal, gateway off") << gateway << false << Level::Failure
                                                    << "no token: HTTP 401 (\"authorization header missing\")" << gatewayOffHint;
    QTest::newRow("gateway's refusal, gateway on") << gateway << true << Level::Failure
                                                   << "no token: HTTP 401 (\"authorization header missing\")" << credentialsHint;
}

void TestServiceJudge::tokenIsJudged()
{
    QFETCH(QJsonObject, token);
    QFETCH(bool, gatewayOn);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, detail);
    QFETCH(QString, hint);
    CheckReport report;
    ServiceJudge(QJsonObject{{QStringLiteral("token"), token}}, gatewayOn, 900).judgeToken(&report);
    const CheckReport::Item judged = checkLine(report, QStringLiteral("token endpoint"));
    QCOMPARE(CheckReport::levelName(judged.level), CheckReport::levelName(level));
    QCOMPARE(judged.detail, detail);
    QCOMPARE(judged.hint, hint);
    if (token.contains(QStringLiteral("ms")))
        QCOMPARE(judged.ms, std::optional<qint64>(token.value(QStringLiteral("ms")).toInteger()));
    else
        QVERIFY(!judged.ms);
}

void TestServiceJudge::requestIsJudged_data()
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

void TestServiceJudge::requestIsJudged()
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
    const CheckReport::Item judged = checkLine(report, QStringLiteral("service request"));
    QCOMPARE(CheckReport::levelName(judged.level), CheckReport::levelName(level));
    QVERIFY2(judged.detail.startsWith(path + QStringLiteral(": HTTP ")), qPrintable(judged.detail));
    QVERIFY2(judged.detail.contains(says), qPrintable(judged.detail));
    QVERIFY2(judged.hint.contains(hint), qPrintable(judged.hint));
}

void TestServiceJudge::requestWithoutAnswerIsJudged_data()
{
    QTest::addColumn<QJsonObject>("answer");
    QTest::addColumn<bool>("tokenUsed");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("hint");

    using Level = CheckReport::Level;
    QTest::newRow("not sent") << with(request(0, QString()), {{QStringLiteral("sent"), false}}) << true << Level::Failure
                              << path + ": not sent, the till has no token" << "fix the token endpoint first";
    QTest::newRow("no answer") << with(request(0, QString()), {{QStringLiteral("networkError"), true},
                                                               {QStringLiteral("transportError"), QStringLiteral("Host unreachable")}})
                               << true << Level::Failure << path + ": no answer: Host unreachable"
                               << "check Tessaro:url, the way to the service and its certificate (above)";
    const QString wanted = QStringLiteral("the service wants authorisation: switch on Tessaro:useTokenAuth or the gateway (OrvelGate:tessaro)");
    QTest::newRow("401 without a token") << request(401, QStringLiteral("object")) << false << Level::Failure
                                         << path + ": HTTP 401: authorisation refused" << wanted;
    QTest::newRow("403 without a token") << request(403, QStringLiteral("empty")) << false << Level::Failure
                                         << path + ": HTTP 403: authorisation refused" << wanted;
    QTest::newRow("refusal of the status, with a token") << with(request(400, QStringLiteral("object")), {{QStringLiteral("status"), 3}})
                                                         << true << Level::Failure << path + ": HTTP 400: authorisation refused"
                                                         << "the service does not take the tokens of Tessaro:tokenUrl: check that it and "
                                                            "Tessaro:realmId belong to this service";
    QTest::newRow("thrown") << with(request(200, QStringLiteral("object")), {{QStringLiteral("thrown"), true},
                                                                             {QStringLiteral("serviceError"), QStringLiteral("cart.locked")},
                                                                             {QStringLiteral("message"), QStringLiteral("Корзина занята")}})
                            << true << Level::Failure << path + ": HTTP 200 (\"cart.locked\"): Корзина занята" << "see the service's answer";
    QJsonObject longPath = request(200, QStringLiteral("object"));
    longPath.insert(QStringLiteral("path"), QStringLiteral("/") + QString(1000, QLatin1Char('a')));
    longPath.insert(QStringLiteral("sent"), false);
    QJsonObject escaped = longPath;
    escaped.insert(QStringLiteral("path"), QStringLiteral("/%0A") + QString(1000, QLatin1Char('a')));
    QTest::newRow("long address with a per cent sign") << escaped << true << Level::Failure
                                                       << "GET /%0A" + QString(156, QLatin1Char('a')) + "… (1004 characters): not sent, the till has no token"
                                                       << "fix the token endpoint first";
    QTest::newRow("address of 1001 characters") << longPath << true << Level::Failure
                                                << "GET /" + QString(159, QLatin1Char('a')) + "… (1001 characters): not sent, the till has no token"
                                                << "fix the token endpoint first";
}

void TestServiceJudge::requestWithoutAnswerIsJudged()
{
    QFETCH(QJsonObject, answer);
    QFETCH(bool, tokenUsed);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, detail);
    QFETCH(QString, hint);
    const QJsonObject token{{QStringLiteral("used"), tokenUsed}, {QStringLiteral("ok"), tokenUsed}};
    CheckReport report;
    ServiceJudge(QJsonObject{{QStringLiteral("token"), token}, {QStringLiteral("request"), answer}}, false, 900).judgeRequest(&report);
    const CheckReport::Item judged = checkLine(report, QStringLiteral("service request"));
    QCOMPARE(CheckReport::levelName(judged.level), CheckReport::levelName(level));
    QCOMPARE(judged.detail, detail);
    QCOMPARE(judged.hint, hint);
}

void TestServiceJudge::signatureIsJudged_data()
{
    QTest::addColumn<QJsonObject>("signing");
    QTest::addColumn<QJsonObject>("answer");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("hint");

    using Level = CheckReport::Level;
    const QJsonObject on{{QStringLiteral("on"), true}, {QStringLiteral("signed"), true},
                         {QStringLiteral("signedHeaders"), QStringLiteral("host;x-date")}};
    const QString scheme = QStringLiteral("SDK-HMAC-SHA256 over host;x-date");
    const QJsonObject answered = request(200, QStringLiteral("object"));
    const auto refused = [](const QString &words, const QString &message = QString()) {
        QJsonObject answer = with(request(401, QStringLiteral("object")), {{QStringLiteral("gatewayError"), words}});
        if (!message.isEmpty())
            answer.insert(QStringLiteral("message"), message);
        return answer;
    };
    QTest::newRow("off") << QJsonObject{{QStringLiteral("on"), false}} << answered << Level::Ok << "not used (OrvelGate:tessaro is off)" << "";
    QTest::newRow("unsigned") << QJsonObject{{QStringLiteral("on"), true}, {QStringLiteral("signed"), false}} << answered << Level::Failure
                              << "requests go unsigned: OrvelGate:appKey, OrvelGate:appSecret or OrvelGate:xStage is empty"
                              << "set all three to the values the gateway issued";
    QTest::newRow("accepted") << on << answered << Level::Ok << scheme + ": accepted by the gateway" << "";
    QTest::newRow("request not sent") << on << with(answered, {{QStringLiteral("sent"), false}}) << Level::Warning
                                      << scheme + ": not judged, the request got no answer" << "fix the way to the service first";
    QTest::newRow("no answer") << on << with(answered, {{QStringLiteral("networkError"), true}}) << Level::Warning
                               << scheme + ": not judged, the request got no answer" << "fix the way to the service first";
    QTest::newRow("expired, the plug-in's message") << on << refused(QStringLiteral("signature expired"), QStringLiteral("Проверьте часы"))
                                                    << Level::Failure
                                                    << scheme + ": refused, \"signature expired\": the till's clock is too far from the "
                                                                "gateway's; the cashier sees \"Проверьте часы\""
                                                    << clockHint;
    QTest::newRow("expired, no message") << on << refused(QStringLiteral("signature expired")) << Level::Failure
                                         << scheme + ": refused, \"signature expired\": the till's clock is too far from the gateway's; "
                                                     "the cashier sees \"" + ServiceJudge::clockMessage() + "\""
                                         << clockHint;
    QTest::newRow("unknown key") << on << refused(QStringLiteral("invalid access key")) << Level::Failure
                                 << scheme + ": refused, \"invalid access key\""
                                 << "OrvelGate:appKey is not a key the gateway knows: copy it again from the gateway's issue";
    QTest::newRow("wrong secret") << on << refused(QStringLiteral("cannot verify signature")) << Level::Failure
                                  << scheme + ": refused, \"cannot verify signature\""
                                  << "OrvelGate:appSecret does not belong to OrvelGate:appKey: copy it again from the gateway's issue";
    QTest::newRow("other refusal") << on << refused(QStringLiteral("stage not found")) << Level::Failure
                                   << scheme + ": refused, \"stage not found\""
                                   << "compare the gateway settings (OrvelGate:*) with what the gateway issued";
}

void TestServiceJudge::signatureIsJudged()
{
    QFETCH(QJsonObject, signing);
    QFETCH(QJsonObject, answer);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, detail);
    QFETCH(QString, hint);
    CheckReport report;
    ServiceJudge(QJsonObject{{QStringLiteral("signing"), signing}, {QStringLiteral("request"), answer}}, signing.value(QStringLiteral("on")).toBool(), 900)
        .judgeSignature(&report);
    const CheckReport::Item judged = checkLine(report, QStringLiteral("gateway signature"));
    QCOMPARE(CheckReport::levelName(judged.level), CheckReport::levelName(level));
    QCOMPARE(judged.detail, detail);
    QCOMPARE(judged.hint, hint);
}

void TestServiceJudge::clockIsJudged_data()
{
    QTest::addColumn<bool>("reachable");
    QTest::addColumn<bool>("answerTooLarge");
    QTest::addColumn<bool>("dated");
    // How far the till's clock is from the middle of the second the service's Date names.
    QTest::addColumn<qint64>("offsetMs");
    QTest::addColumn<bool>("gatewayOn");
    QTest::addColumn<int>("tolerance");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("hint");

    using Level = CheckReport::Level;
    const QString refused = QStringLiteral(": every request is refused and the cashier sees \"%1\"").arg(ServiceJudge::clockMessage());
    QTest::newRow("unreachable") << false << false << false << qint64(0) << false << 900 << Level::Warning
                                 << "not compared: the service cannot be reached" << "fix the way to the service first";
    QTest::newRow("answer too large") << true << true << false << qint64(0) << false << 900 << Level::Warning
                                      << QStringLiteral("not compared: the head of the service's answer went on past %1 MiB unread")
                                             .arg(NetworkProbe::maxAnswerBytes / (1024 * 1024))
                                      << "check that Tessaro:url names the service; compare the till's clock with a time server";
    QTest::newRow("no Date") << true << false << false << qint64(0) << false << 900 << Level::Warning
                             << "not compared: the service's answer had no Date header" << "compare the till's clock with a time server";
    const QString agrees = QStringLiteral("the till's clock agrees with the service's to the second");
    QTest::newRow("same second") << true << false << true << qint64(0) << true << 900 << Level::Ok << agrees << "";
    QTest::newRow("0.4 s ahead") << true << false << true << qint64(400) << true << 900 << Level::Ok << agrees << "";
    QTest::newRow("0.4 s behind") << true << false << true << qint64(-400) << true << 900 << Level::Ok << agrees << "";
    QTest::newRow("0.6 s ahead") << true << false << true << qint64(600) << false << 900 << Level::Ok
                                 << "the till's clock is 1 s ahead of the service's" << "";
    QTest::newRow("30 s behind") << true << false << true << qint64(-30000) << false << 900 << Level::Ok
                                 << "the till's clock is 30 s behind the service's" << "";
    QTest::newRow("a minute ahead") << true << false << true << qint64(60000) << true << 900 << Level::Ok
                                    << "the till's clock is 1 min 0 s ahead of the service's" << "";
    QTest::newRow("61 s ahead") << true << false << true << qint64(61000) << false << 900 << Level::Warning
                                << "the till's clock is 1 min 1 s ahead of the service's, more than a minute" << clockHint;
    QTest::newRow("61 s behind, gateway on") << true << false << true << qint64(-61000) << true << 900 << Level::Warning
                                             << "the till's clock is 1 min 1 s behind the service's, more than a minute" << clockHint;
    QTest::newRow("at the gateway's tolerance") << true << false << true << qint64(900000) << true << 900 << Level::Warning
                                                << "the till's clock is 15 min 0 s ahead of the service's, more than a minute" << clockHint;
    QTest::newRow("beyond the gateway's tolerance") << true << false << true << qint64(-901000) << true << 900 << Level::Failure
                                                    << "the till's clock is 15 min 1 s behind the service's, beyond the gateway's "
                                                       "tolerance of 15 min 0 s" + refused
                                                    << clockHint;
    QTest::newRow("an hour off, gateway off") << true << false << true << qint64(3600000) << false << 900 << Level::Warning
                                              << "the till's clock is 60 min 0 s ahead of the service's, more than a minute" << clockHint;
    QTest::newRow("beyond a tolerance under a minute") << true << false << true << qint64(45000) << true << 30 << Level::Failure
                                                       << "the till's clock is 45 s ahead of the service's, beyond the gateway's "
                                                          "tolerance of 30 s" + refused
                                                       << clockHint;
    QTest::newRow("within a tolerance under a minute") << true << false << true << qint64(-20000) << true << 30 << Level::Ok
                                                       << "the till's clock is 20 s behind the service's" << "";
    QTest::newRow("beyond a tolerance under a minute, gateway off") << true << false << true << qint64(45000) << false << 30 << Level::Ok
                                                                    << "the till's clock is 45 s ahead of the service's" << "";
}

void TestServiceJudge::clockIsJudged()
{
    QFETCH(bool, reachable);
    QFETCH(bool, answerTooLarge);
    QFETCH(bool, dated);
    QFETCH(qint64, offsetMs);
    QFETCH(bool, gatewayOn);
    QFETCH(int, tolerance);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, detail);
    QFETCH(QString, hint);
    const QDateTime serviceTime(QDate(2024, 3, 1), QTime(12, 0), QTimeZone::utc());
    NetworkProbe::Outcome outcome;
    outcome.reachable = reachable;
    outcome.answerTooLarge = answerTooLarge;
    if (dated)
        outcome.serviceTime = serviceTime;
    outcome.localTime = serviceTime.addMSecs(500 + offsetMs);
    CheckReport report;
    ServiceJudge(QJsonObject(), gatewayOn, tolerance).judgeClock(outcome, &report);
    const CheckReport::Item judged = checkLine(report, QStringLiteral("clock offset"));
    QCOMPARE(CheckReport::levelName(judged.level), CheckReport::levelName(level));
    QCOMPARE(judged.detail, detail);
    QCOMPARE(judged.hint, hint);
}

QTEST_GUILESS_MAIN(TestServiceJudge)
#include "tst_servicejudge.moc"
