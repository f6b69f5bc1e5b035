#include "servicetestbed.h"

#include "client/interface.h"
#include "responses/connectionerrorexception.h"

#include <support/logcapture.h>

#include <QLoggingCategory>
#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using Request = ScriptedHttpServer::Request;

namespace {

const QString configuredToken = QStringLiteral("configured-token-5d1c");
const QByteArray fetchedToken = "fetched-token-77aa";
const QString appSecret = QStringLiteral("gate-secret-90fe");

// Every captured line that contains \a secret.
QStringList linesWith(const LogCapture &log, const QString &secret)
{
    QStringList lines;
    const QList<LogCapture::Message> messages = log.messages();
    for (const LogCapture::Message &message : messages) {
        if (message.text.contains(secret))
            lines << message.category + QLatin1String(": ") + message.text;
    }
    return lines;
}

} // namespace

class TestSecrets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void tokenFlowKeepsSecretsOutOfTheLog();
    void gatewayKeepsSecretsOutOfTheLog();
    void everyTokenOfTheTokenReplyKeepsOutOfTheLog();
    void tokenWithLineBreaksAddsNoLogLine();
    void escapedTokenKeyKeepsOutOfTheDebugLog();
    void apiKeysInAddressesKeepOutOfTheLog();
    void cardNumberKeepsItsLastFourInTheDebugLog();
};

void TestSecrets::initTestCase()
{
    // Every line the client and its REST client can write, debug included.
    QLoggingCategory::setFilterRules(QStringLiteral("tessaro*.debug=true"));
}

void TestSecrets::tokenFlowKeepsSecretsOutOfTheLog()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(401, R"({"error":"invalid_token"})"));
    bed.server().enqueue(ServiceTestBed::tokenAnswer(fetchedToken));
    bed.server().enqueue(Answer::json(200, R"({"cartUuid":"c-1"})"));
    bed.server().enqueue(Answer::close());
    const LogCapture log;
    tessaro::Interface client;
    client.setToken(configuredToken);
    QVERIFY(client.send(client.getUrl(tessaro::Interface::CartCreate, QString()), {}, client.getHeaders(QStringLiteral("r-1"))).success());
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException,
                             client.send(client.getUrl(tessaro::Interface::Deposit, QString()), {}, client.getHeaders(QString())));

    // The headers really went out, and the debug lines were written.
    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.at(0).header("Authorization"), "Bearer " + configuredToken.toUtf8());
    QCOMPARE(QString::fromUtf8(requests.at(1).header("Authorization")), ServiceTestBed::clientSecretHeader);
    QCOMPARE(requests.at(2).header("Authorization"), "Bearer " + fetchedToken);
    QVERIFY(!log.texts(QStringLiteral("tessaro"), QtDebugMsg).isEmpty());
    QVERIFY(log.contains(QStringLiteral("Authorization: ***")));

    QCOMPARE(linesWith(log, configuredToken), QStringList());
    QCOMPARE(linesWith(log, ServiceTestBed::clientSecretHeader), QStringList());
    QCOMPARE(linesWith(log, ServiceTestBed::clientSecretHeader.section(QLatin1Char(' '), 1)), QStringList());
    // The fetched token is named once, by the line that reports the token fetch.
    QCOMPARE(linesWith(log, QString::fromUtf8(fetchedToken)),
             QStringList{QStringLiteral("tessaro: Получен токен: ") + QString::fromUtf8(fetchedToken)});
}

void TestSecrets::gatewayKeepsSecretsOutOfTheLog()
{
    ServiceTestBed bed({{QStringLiteral("OrvelGate:tessaro"), QStringLiteral("true")},
                        {QStringLiteral("OrvelGate:appKey"), QStringLiteral("till-app-0012")},
                        {QStringLiteral("OrvelGate:appSecret"), appSecret}});
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    bed.server().enqueue(Answer::json(200, R"({"error_msg":"signature expired"})"));
    const LogCapture log;
    tessaro::Interface client;
    client.send(client.getUrl(tessaro::Interface::TillOpen, QString()), QJsonObject{{"storeNo", 7}}, client.getHeaders(QString()));
    client.request(client.getUrl(tessaro::Interface::Messages, QStringLiteral("c-1")), client.getHeaders(QStringLiteral("r-2")));

    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 2);
    QVERIFY(log.contains(QStringLiteral("Authorization: ***")));
    QCOMPARE(linesWith(log, appSecret), QStringList());
    for (const Request &request : requests) {
        const QString authorization = QString::fromUtf8(request.header("Authorization"));
        QVERIFY(authorization.startsWith(QLatin1String("SDK-HMAC-SHA256 ")));
        QCOMPARE(linesWith(log, authorization), QStringList());
        QCOMPARE(linesWith(log, authorization.section(QLatin1String("Signature="), 1)), QStringList());
    }
}

void TestSecrets::everyTokenOfTheTokenReplyKeepsOutOfTheLog()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"access_token":"fetched-1","refresh_token":"refresh-2c4e",)"
                                           R"("id_token":"id-9b1f","token_type":"Bearer","expires_in":300})"));
    const LogCapture log;
    tessaro::Interface client;

    QCOMPARE(client.getToken().token(), QStringLiteral("fetched-1"));

    QVERIFY(log.contains(QStringLiteral("token_type")));
    QCOMPARE(linesWith(log, QStringLiteral("refresh-2c4e")), QStringList());
    QCOMPARE(linesWith(log, QStringLiteral("id-9b1f")), QStringList());
}

void TestSecrets::tokenWithLineBreaksAddsNoLogLine()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"access_token":"tok\r\nX-Evil: 1","token_type":"bearer"})"));
    const LogCapture log;
    tessaro::Interface client;

    QCOMPARE(client.getToken().token(), QStringLiteral("tok\r\nX-Evil: 1"));

    // Each message is one line of the till's log: none may hold a line break.
    const QList<LogCapture::Message> messages = log.messages();
    QVERIFY(!messages.isEmpty());
    for (const LogCapture::Message &message : messages) {
        QVERIFY2(!message.text.contains(QLatin1Char('\n')) && !message.text.contains(QLatin1Char('\r')),
                 qPrintable(message.text.toHtmlEscaped()));
    }
    QVERIFY(log.texts(QStringLiteral("tessaro"), QtInfoMsg).contains(QStringLiteral("Получен токен: tok\\r\\nX-Evil: 1")));
}

void TestSecrets::escapedTokenKeyKeepsOutOfTheDebugLog()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"access\u005ftoken":"escaped-tok-31","token_type":"bearer"})"));
    const LogCapture log;
    tessaro::Interface client;

    // Any JSON reader takes the escaped key for "access_token", the client too.
    QCOMPARE(client.getToken().token(), QStringLiteral("escaped-tok-31"));

    QVERIFY(log.contains(QStringLiteral("token_type")));
    QCOMPARE(linesWith(log, QStringLiteral("escaped-tok-31")),
             QStringList{QStringLiteral("tessaro: Получен токен: escaped-tok-31")});
}

void TestSecrets::apiKeysInAddressesKeepOutOfTheLog()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:url"), QStringLiteral("{server}/api?apikey=svc-41&key=svc-42")},
                        {QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("{server}/oauth/token?api_key=tok-43")}});
    bed.server().enqueue(ServiceTestBed::tokenAnswer(fetchedToken));
    bed.server().enqueue(Answer::json(200, R"({"cartUuid":"c-1"})"));
    const LogCapture log;
    tessaro::Interface client;

    QVERIFY(client.send(client.getUrl(tessaro::Interface::CartCreate, QString()), {}, client.getHeaders(QString())).success());

    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 2);
    QVERIFY(requests.at(0).body.contains("api_key=tok-43"));
    QVERIFY(log.contains(QStringLiteral("apikey=***&key=***")));
    for (const QString &key : {QStringLiteral("svc-41"), QStringLiteral("svc-42"), QStringLiteral("tok-43")})
        QCOMPARE(linesWith(log, key), QStringList());
}

void TestSecrets::cardNumberKeepsItsLastFourInTheDebugLog()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK","customer":{"cardBarcode":"4601234567"}})"));
    const LogCapture log;
    tessaro::Interface client;
    client.setToken(configuredToken);

    client.addCustomer(QStringLiteral("c-1"), QStringLiteral("4601234567"));

    QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().at(0)).value(QStringLiteral("cardBarcode")).toString(),
             QStringLiteral("4601234567"));
    const QStringList debug = log.texts(QStringLiteral("tessaro"), QtDebugMsg);
    QCOMPARE(debug.filter(QStringLiteral("\"cardBarcode\":\"******4567\"")).size(), 2);
    QCOMPARE(debug.filter(QStringLiteral("4601234567")), QStringList());
}

QTEST_GUILESS_MAIN(TestSecrets)
#include "tst_secrets.moc"
