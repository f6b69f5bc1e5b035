#include "servicetestbed.h"

#include "client/interface.h"
#include "responses/connectionerrorexception.h"

#include <basicexception.h>
#include <mockfactory.h>
#include <restclient.h>
#include <support/logcapture.h>

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageAuthenticationCode>
#include <QTcpServer>
#include <QTest>

#include <algorithm>

using Answer = ScriptedHttpServer::Answer;
using Request = ScriptedHttpServer::Request;
using Headers = tessaro::Interface::Headers;

namespace {

const QString connectionErrorText = QStringLiteral("Ошибка связи с сервером Tessaro\nНе выключайте кассу! Дождитесь завершения операции");

// The client with its token state in view.
class Client : public tessaro::Interface
{
public:
    using Interface::handleRequest;
    using Interface::tokenRetried;
};

// A port on which nothing listens: taken from the system, then given back.
quint16 closedPort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost))
        return 0;
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

QString header(const Request &request, const char *name)
{
    return QString::fromUtf8(request.header(name));
}

// What a gateway does with a request: recompute its signature from what
// arrived and compare. Written from the gateway's side of the exchange.
QString gatewayVerdict(const Request &request, const QString &appKey, const QString &appSecret)
{
    const QString authorization = header(request, "Authorization");
    const QRegularExpression form(QStringLiteral("^SDK-HMAC-SHA256 Access=([^,]*), SignedHeaders=([^,]*), Signature=([0-9a-f]{64})$"));
    const QRegularExpressionMatch parts = form.match(authorization);
    if (!parts.hasMatch())
        return QStringLiteral("malformed Authorization: ") + authorization;
    if (parts.captured(1) != appKey)
        return QStringLiteral("unknown key ") + parts.captured(1);

    QString path = request.path;
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    auto items = request.query.queryItems(QUrl::FullyDecoded);
    std::sort(items.begin(), items.end());
    QStringList query;
    for (const auto &item : items)
        query << QString::fromLatin1(QUrl::toPercentEncoding(item.first) + '=' + QUrl::toPercentEncoding(item.second));
    QString headers;
    const QStringList names = parts.captured(2).split(QLatin1Char(';'));
    for (const QString &name : names)
        headers += name + QLatin1Char(':') + header(request, name.toLatin1().constData()) + QLatin1Char('\n');
    const QByteArray canonical = request.method + '\n' + path.toLatin1() + '\n' + query.join(QLatin1Char('&')).toLatin1()
        + '\n' + headers.toLatin1() + '\n' + parts.captured(2).toLatin1() + '\n'
        + QCryptographicHash::hash(request.body, QCryptographicHash::Sha256).toHex();
    const QByteArray toSign = "SDK-HMAC-SHA256\n" + request.header("x-sdk-date") + '\n'
        + QCryptographicHash::hash(canonical, QCryptographicHash::Sha256).toHex();
    const QByteArray expected = QMessageAuthenticationCode::hash(toSign, appSecret.toUtf8(), QCryptographicHash::Sha256).toHex();
    return expected == parts.captured(3).toLatin1() ? QStringLiteral("valid") : QStringLiteral("signature mismatch");
}

QString vectorText(const QString &relativePath)
{
    QFile file(QDir(QStringLiteral(TESSARO_GATE_VECTORS)).filePath(relativePath));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

// Answers from a prepared host response, without a network: for outcomes a
// real exchange cannot produce.
class CannedRestClient : public RestClient
{
public:
    explicit CannedRestClient(const http::Response &response)
        : m_response(response)
    {
    }
    bool postRaw(const QUrl &, const QByteArray &, const Headers &) override { return ++m_exchanges, false; }
    bool get(const QUrl &, const QJsonDocument &, const Headers &) override { return ++m_exchanges, false; }
    http::Response lastResponse() const override { return m_response; }
    int exchanges() const { return m_exchanges; }

private:
    http::Response m_response;
    int m_exchanges = 0;
};

enum class Loss { Refused, Closed, Reset, TimedOut };

// POSTs an empty object to \a method with the standard headers.
tessaro::Response sendEmpty(tessaro::Interface &client, tessaro::Interface::Method method = tessaro::Interface::CartCreate)
{
    return client.send(client.getUrl(method, QString()), {}, client.getHeaders(QString()));
}

// The message of the BasicException that \a call throws: empty when it throws
// none, "connection error" for a ConnectionErrorException.
template <typename Call>
tr::Tr failureOf(Call call)
{
    try {
        call();
    } catch (const tessaro::ConnectionErrorException &) {
        return tr::Tr(QStringLiteral("connection error"), QString());
    } catch (const BasicException &e) {
        return e.tr();
    }
    return tr::Tr();
}

} // namespace

Q_DECLARE_METATYPE(Loss)

class TestTransport : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void methodPaths_data();
    void methodPaths();
    void urlArgumentIsEncodedIntoThePath();
    void methodOutsideTheTableAppendsNothing();
    void headers_data();
    void headers();

    void tokenRequestFormAndHeaders();
    void tokenUrlQueryItemsAreKept();
    void tokenFormValuesAreEncoded();
    void postSendsCompactJsonWithCallerHeaders();
    void postContentType_data();
    void postContentType();
    void getSendsNoBody();
    void tokenIsReusedWhileValid();
    void storedTokenIsReplacedThroughSetToken();
    void retryIsSentThroughSend();
    void tokenFlowUsesGetToken();
    void tokenEndpointRefusalThrows();
    void tokenEndpointLostConnectionThrowsTokenReplyError();
    void tokenReplyThatIsNotSuccessIsReturned();
    void tokenReplyWithoutAccessTokenIsNotRepeatedForever();
    void tokenRetriedIsClearedByTheNextGoodAnswer();
    void withoutTokenAuthorisationNoTokenIsFetched();

    void lostConnection_data();
    void lostConnection();
    void timeoutIsBounded();
    void timeoutWithoutBoundIsBounded_data();
    void timeoutWithoutBoundIsBounded();
    void tokenWithLineBreakIsNotSent();
    void networkFailureThatStillSaysShiftIsReturned_data();
    void networkFailureThatStillSaysShiftIsReturned();
    void unauthorisedWithBodyFetchesToken();
    void unauthorisedWithoutTokenAuthorisationIsReturned();
    void internalServerErrorIsReturned();
    void emptySuccessBodyIsIncorrectResponse();
    void arrayBodyIsKept();

    void gatewaySignsEveryRequest();
    void gatewaySignatureMatchesHandMadeVector();
    void gatewaySwitchIsReadOnEveryCall();

    // The edge cases of the transport, one each.
    void firstRequestFetchesTokenThenPosts();
    void invalidTokenIsRepeatedExactlyOnce();
    void secondInvalidTokenIsLoggedAndThrown();
    void cartPathOnBaseWithPath();
    void emptyRequestIdSendsNoRequestIdHeader();
    void failedGetIsRepeatedAsPostWithoutCallerHeaders();
    void keptAliveConnectionClosedByServiceRepeatsOnlyTheTokenRequest();
};

void TestTransport::cleanup()
{
    MockFactory<RestClient>::clearCreator();
}

void TestTransport::methodPaths_data()
{
    QTest::addColumn<int>("method");
    QTest::addColumn<QString>("path");
    QTest::newRow("0 till open") << 0 << "/api/till/open";
    QTest::newRow("1 till close") << 1 << "/api/till/close";
    QTest::newRow("2 cart") << 2 << "/api/cart/c-42";
    QTest::newRow("3 cart create") << 3 << "/api/cart/create";
    QTest::newRow("4 cart update") << 4 << "/api/cart/c-42/update";
    QTest::newRow("5 cart status") << 5 << "/api/cart/c-42/cart_status";
    QTest::newRow("6 add customer") << 6 << "/api/cart/c-42/add_customer";
    QTest::newRow("7 advice note") << 7 << "/api/advicenote";
    QTest::newRow("8 payload") << 8 << "/api/payload/c-42";
    QTest::newRow("9 deposit") << 9 << "/api/till/deposit";
    QTest::newRow("10 messages") << 10 << "/api/messages/c-42";
}

void TestTransport::methodPaths()
{
    QFETCH(int, method);
    QFETCH(QString, path);
    TestHost host(QStringLiteral("[Tessaro]\nurl=https://tessaro.example.com:8443/api?v=2\n"));
    const tessaro::Interface client;
    const QUrl url = client.getUrl(tessaro::Interface::Method(method), QStringLiteral("c-42"));
    QCOMPARE(url.path(), path);
    QCOMPARE(url.host(), QStringLiteral("tessaro.example.com"));
    QCOMPARE(url.port(), 8443);
    QCOMPARE(url.query(), QStringLiteral("v=2"));
}

void TestTransport::urlArgumentIsEncodedIntoThePath()
{
    TestHost host(QStringLiteral("[Tessaro]\nurl=http://service/my%20api\n"));
    const tessaro::Interface client;
    const QUrl url = client.getUrl(tessaro::Interface::Payload, QStringLiteral("a b?c#d"));
    QCOMPARE(url.path(), QStringLiteral("/my api/payload/a b?c#d"));
    QCOMPARE(url.toString(QUrl::FullyEncoded), QStringLiteral("http://service/my%20api/payload/a%20b%3Fc%23d"));
    QVERIFY(!url.hasQuery());
    QVERIFY(!url.hasFragment());
}

void TestTransport::methodOutsideTheTableAppendsNothing()
{
    TestHost host(QStringLiteral("[Tessaro]\nurl=http://service/api\n"));
    const tessaro::Interface client;
    QCOMPARE(client.getUrl(tessaro::Interface::Method(11), QStringLiteral("x")), QUrl(QStringLiteral("http://service/api")));
    QCOMPARE(client.getUrl(tessaro::Interface::Method(-1), QStringLiteral("x")), QUrl(QStringLiteral("http://service/api")));
}

void TestTransport::headers_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("requestId");
    QTest::addColumn<Headers>("expected");
    const QString json = QStringLiteral("application/json");
    QTest::newRow("token, no id") << QString() << QString()
                                  << Headers{{"Authorization", "Bearer tok"}, {"Content-Type", json}};
    QTest::newRow("token, id") << QString() << "r-1"
                               << Headers{{"Authorization", "Bearer tok"}, {"Content-Type", json}, {"X-Request-ID", "r-1"}};
    QTest::newRow("no token auth, no id") << "[Tessaro]\nuseTokenAuth=false\n" << QString() << Headers{{"Content-Type", json}};
    QTest::newRow("no token auth, id") << "[Tessaro]\nuseTokenAuth=false\n" << "r-2"
                                       << Headers{{"Content-Type", json}, {"X-Request-ID", "r-2"}};
    QTest::newRow("gateway, id") << "[OrvelGate]\ntessaro=true\n" << "r-3"
                                 << Headers{{"Content-Type", json}, {"X-Request-ID", "r-3"}};
}

void TestTransport::headers()
{
    QFETCH(QString, config);
    QFETCH(QString, requestId);
    QFETCH(Headers, expected);
    TestHost host(config);
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok"));
    QCOMPARE(client.getHeaders(requestId), expected);
}

void TestTransport::tokenRequestFormAndHeaders()
{
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    tessaro::Interface client;
    const tessaro::TokenResponse reply = client.getToken();
    QCOMPARE(reply.token(), QStringLiteral("tok-1"));
    // getToken does not store the token.
    QCOMPARE(client.currentToken(), QString());

    QCOMPARE(bed.server().requestCount(), 1);
    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/oauth/token"));
    QCOMPARE(header(request, "Authorization"), ServiceTestBed::clientSecretHeader);
    QCOMPARE(header(request, "Content-Type"), QStringLiteral("application/x-www-form-urlencoded"));
    QCOMPARE(ServiceTestBed::formFields(request.body),
             (QList<QPair<QString, QString>>{{"grant_type", "client_credentials"},
                                              {"client_id", ServiceTestBed::clientId},
                                              {"realm_id", ServiceTestBed::realmId}}));
}

void TestTransport::tokenUrlQueryItemsAreKept()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("{server}/oauth/token?scope=till&lang=ru")}});
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    tessaro::Interface client;
    client.getToken();
    const Request request = bed.server().requests().first();
    QCOMPARE(request.path, QStringLiteral("/oauth/token"));
    QCOMPARE(request.query.queryItemValue(QStringLiteral("scope")), QStringLiteral("till"));
    QCOMPARE(ServiceTestBed::formFields(request.body),
             (QList<QPair<QString, QString>>{{"scope", "till"},
                                              {"lang", "ru"},
                                              {"grant_type", "client_credentials"},
                                              {"client_id", ServiceTestBed::clientId},
                                              {"realm_id", ServiceTestBed::realmId}}));
}

void TestTransport::tokenFormValuesAreEncoded()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:clientId"), QStringLiteral("till+12 east&x=1%")},
                        {QStringLiteral("Tessaro:realmId"), QStringLiteral("магазин 7")}});
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    tessaro::Interface client;
    client.getToken();
    const auto fields = ServiceTestBed::formFields(bed.server().requests().first().body);
    QCOMPARE(fields.size(), 3);
    QCOMPARE(fields.at(1), (QPair<QString, QString>{"client_id", "till+12 east&x=1%"}));
    QCOMPARE(fields.at(2), (QPair<QString, QString>{"realm_id", QStringLiteral("магазин 7")}));
}

void TestTransport::postSendsCompactJsonWithCallerHeaders()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"cartUuid":"c-1"})"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    Headers headers = client.getHeaders(QStringLiteral("req-5"));
    headers.insert(QStringLiteral("X-Extra"), QStringLiteral("yes"));
    const QJsonObject body{{"storeNo", 7}, {"name", QStringLiteral("Кофе")}};
    const tessaro::Response reply = client.send(client.getUrl(tessaro::Interface::CartCreate, QString()), body, headers);

    QCOMPARE(reply.status(), tessaro::Response::Success);
    QCOMPARE(reply.jsonObject().value(QStringLiteral("cartUuid")).toString(), QStringLiteral("c-1"));
    QCOMPARE(reply.requestUrl().path(), QStringLiteral("/api/cart/create"));
    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/create"));
    QCOMPARE(request.body, QJsonDocument(body).toJson(QJsonDocument::Compact));
    QCOMPARE(header(request, "Authorization"), QStringLiteral("Bearer tok-0"));
    QCOMPARE(header(request, "Content-Type"), QStringLiteral("application/json"));
    QCOMPARE(header(request, "X-Request-ID"), QStringLiteral("req-5"));
    QCOMPARE(header(request, "X-Extra"), QStringLiteral("yes"));
}

void TestTransport::postContentType_data()
{
    QTest::addColumn<Headers>("headers");
    QTest::addColumn<QString>("sent");
    QTest::newRow("none named") << Headers() << QStringLiteral("application/json");
    QTest::newRow("standard headers") << Headers{{QStringLiteral("Content-Type"), QStringLiteral("application/json")}}
                                      << QStringLiteral("application/json");
    QTest::newRow("named by the caller, any case")
            << Headers{{QStringLiteral("content-type"), QStringLiteral("application/json; charset=utf-8")}}
            << QStringLiteral("application/json; charset=utf-8");
}

void TestTransport::postContentType()
{
    QFETCH(Headers, headers);
    QFETCH(QString, sent);
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().enqueue(Answer::json(200, R"({"cartUuid":"c-1"})"));
    tessaro::Interface client;
    client.send(client.getUrl(tessaro::Interface::CartCreate, QString()), QJsonObject{{"storeNo", 7}}, headers);
    const Request request = bed.server().requests().first();
    QCOMPARE(request.headerCount("Content-Type"), 1);
    QCOMPARE(header(request, "Content-Type"), sent);
    QCOMPARE(request.body, QByteArray(R"({"storeNo":7})"));
}

void TestTransport::getSendsNoBody()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"payload":"p"})"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    const tessaro::Response reply = client.request(client.getUrl(tessaro::Interface::Payload, QStringLiteral("c-1")),
                                                   client.getHeaders(QString()));
    QCOMPARE(reply.status(), tessaro::Response::Success);
    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, QStringLiteral("/api/payload/c-1"));
    QVERIFY(request.body.isEmpty());
}

void TestTransport::tokenIsReusedWhileValid()
{
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().setDefaultAnswer(Answer::json(200, R"({"ok":true})"));
    tessaro::Interface client;
    const QUrl url = client.getUrl(tessaro::Interface::CartCreate, QString());
    for (int i = 0; i < 3; ++i)
        QVERIFY(client.send(url, {}, client.getHeaders(QString())).success());
    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 4);
    QCOMPARE(requests.at(0).path, QStringLiteral("/oauth/token"));
    for (int i = 1; i < 4; ++i)
        QCOMPARE(header(requests.at(i), "Authorization"), QStringLiteral("Bearer tok-1"));
}

void TestTransport::storedTokenIsReplacedThroughSetToken()
{
    // The token flow stores the new token with the (virtual) setToken.
    class RecordingClient : public tessaro::Interface
    {
    public:
        void setToken(const QString &token) override
        {
            stored << token;
            Interface::setToken(token);
        }
        QStringList stored;
    };
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"ok":true})"));
    RecordingClient client;
    sendEmpty(client);
    QCOMPARE(client.stored, QStringList{QStringLiteral("tok-1")});
}

void TestTransport::retryIsSentThroughSend()
{
    class CountingClient : public tessaro::Interface
    {
    public:
        tessaro::Response send(const QUrl &url, const QJsonObject &body, const Headers &headers) override
        {
            sent << headers;
            return Interface::send(url, body, headers);
        }
        QList<Headers> sent;
    };
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"ok":true})"));
    CountingClient client;
    client.request(client.getUrl(tessaro::Interface::Payload, QStringLiteral("p")), client.getHeaders(QStringLiteral("r")));
    QCOMPARE(client.sent.size(), 1);
    QCOMPARE(client.sent.first(), client.getHeaders(QString()));
}

void TestTransport::tokenFlowUsesGetToken()
{
    class OwnTokenClient : public tessaro::Interface
    {
    public:
        tessaro::TokenResponse getToken() override
        {
            ++calls;
            return tessaro::TokenResponse(QJsonObject{{"access_token", "own"}});
        }
        int calls = 0;
    };
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"ok":true})"));
    OwnTokenClient client;
    QVERIFY(sendEmpty(client).success());
    QCOMPARE(client.calls, 1);
    QCOMPARE(bed.server().requestCount(), 1);
    QCOMPARE(header(bed.server().requests().first(), "Authorization"), QStringLiteral("Bearer own"));
}

void TestTransport::tokenEndpointRefusalThrows()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(401, R"({"error":"invalid_client","message":"Bad client credentials"})"));
    tessaro::Interface client;
    const LogCapture log;
    QCOMPARE(failureOf([&] { sendEmpty(client); }).id(), QStringLiteral("tessaroErrorbadclientcredentials"));
    QCOMPARE(bed.server().requestCount(), 1);
    QCOMPARE(client.currentToken(), QString());
    QVERIFY(log.texts(QStringLiteral("tessaro"), QtInfoMsg).contains(QStringLiteral("Получение токена")));
}

void TestTransport::tokenEndpointLostConnectionThrowsTokenReplyError()
{
    // The token reply is checked like any answer: a lost token endpoint is its
    // failure, not a ConnectionErrorException of the request.
    ServiceTestBed bed({{QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("http://127.0.0.1:%1/token").arg(closedPort())}});
    tessaro::Interface client;
    QCOMPARE(failureOf([&] { sendEmpty(client); }).id(), QStringLiteral("tessaroUnknownError"));
    QCOMPARE(bed.server().requestCount(), 0);
}

void TestTransport::tokenReplyThatIsNotSuccessIsReturned()
{
    // Status 7 passes checkStatus() but is no token: logged, and the token reply is the result.
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"The shift is already opened"})"));
    Client client;
    const LogCapture log;
    const tessaro::Response reply = sendEmpty(client, tessaro::Interface::CartCreate);
    QCOMPARE(reply.status(), tessaro::Response::ShiftAlreadyOpened);
    QCOMPARE(reply.requestUrl().path(), QStringLiteral("/oauth/token"));
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtCriticalMsg), QStringList{QStringLiteral("Не удалось получить токен")});
    QCOMPARE(bed.server().requestCount(), 1);
    QVERIFY(!client.tokenRetried);
}

void TestTransport::tokenReplyWithoutAccessTokenIsNotRepeatedForever()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"token_type":"bearer"})"));
    Client client;
    const LogCapture log;
    QCOMPARE(failureOf([&] { sendEmpty(client); }).id(), QStringLiteral("tessaroIncorrectResponse"));
    QCOMPARE(bed.server().requestCount(), 1);
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtCriticalMsg),
             QStringList{QStringLiteral("Повторная ошибка авторизации после запроса токена")});
}

void TestTransport::tokenRetriedIsClearedByTheNextGoodAnswer()
{
    ServiceTestBed bed;
    for (const char *token : {"tok-1", "tok-2"}) {
        bed.server().enqueue(Answer::json(401, R"({"error":"invalid_token"})"));
        bed.server().enqueue(ServiceTestBed::tokenAnswer(token));
        bed.server().enqueue(Answer::json(200, R"({"ok":true})"));
    }
    Client client;
    client.setToken(QStringLiteral("stale-token-0"));
    const QUrl url = client.getUrl(tessaro::Interface::CartCreate, QString());
    QVERIFY(client.send(url, {}, client.getHeaders(QString())).success());
    QVERIFY(!client.tokenRetried);
    QVERIFY(client.send(url, {}, client.getHeaders(QString())).success());
    QCOMPARE(client.currentToken(), QStringLiteral("tok-2"));
    QCOMPARE(bed.server().requestCount(), 6);
}

void TestTransport::withoutTokenAuthorisationNoTokenIsFetched()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().enqueue(Answer::json(200, R"({"ok":true})"));
    Client client;
    QVERIFY(sendEmpty(client).success());
    QCOMPARE(bed.server().requestCount(), 1);
    QCOMPARE(bed.server().requests().first().headerCount("Authorization"), 0);
    QCOMPARE(client.currentToken(), QString());
}

void TestTransport::lostConnection_data()
{
    QTest::addColumn<Loss>("loss");
    QTest::newRow("refused") << Loss::Refused;
    QTest::newRow("closed without an answer") << Loss::Closed;
    QTest::newRow("reset") << Loss::Reset;
    QTest::newRow("timed out") << Loss::TimedOut;
}

void TestTransport::lostConnection()
{
    QFETCH(Loss, loss);
    QMap<QString, QString> settings{{QStringLiteral("Tessaro:timeout"), QStringLiteral("1")}};
    if (loss == Loss::Refused)
        settings.insert(QStringLiteral("Tessaro:url"), QStringLiteral("http://127.0.0.1:%1/api").arg(closedPort()));
    ServiceTestBed bed(settings);
    bed.server().enqueue(loss == Loss::Closed ? Answer::close() : loss == Loss::Reset ? Answer::reset() : Answer::hang());
    Client client;
    client.setToken(QStringLiteral("tok-0"));
    try {
        sendEmpty(client, tessaro::Interface::TillOpen);
        QFAIL("no exception");
    } catch (const tessaro::ConnectionErrorException &e) {
        QCOMPARE(e.tr().id(), QStringLiteral("tessaroConnectionError"));
        QCOMPARE(e.tr().text(), connectionErrorText);
    }
    QCOMPARE(bed.server().requestCount(), loss == Loss::Refused ? 0 : 1);
    QVERIFY(!client.tokenRetried);
}

void TestTransport::timeoutIsBounded()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:timeout"), QStringLiteral("1")}});
    bed.server().enqueue(Answer::hang());
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    QElapsedTimer timer;
    timer.start();
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException,
                             client.request(client.getUrl(tessaro::Interface::Messages, QStringLiteral("c")), client.getHeaders(QString())));
    const qint64 elapsed = timer.elapsed();
    qInfo("time-out of 1 s ended the exchange after %lld ms", elapsed);
    QVERIFY2(elapsed >= 900, qPrintable(QString::number(elapsed)));
    QVERIFY2(elapsed < 2000, qPrintable(QString::number(elapsed)));
}

void TestTransport::timeoutWithoutBoundIsBounded_data()
{
    QTest::addColumn<QString>("seconds");
    QTest::newRow("zero") << "0";
    QTest::newRow("negative") << "-1";
    QTest::newRow("milliseconds beyond 32 bits") << "3000000";
    QTest::newRow("milliseconds beyond 64 bits") << "9223372036854775807";
    QTest::newRow("most negative") << "-9223372036854775808";
}

void TestTransport::timeoutWithoutBoundIsBounded()
{
    QFETCH(QString, seconds);
    ServiceTestBed bed({{QStringLiteral("Tessaro:timeout"), seconds}});
    // The host's bound, made short so that the test does not wait for it.
    MockFactory<RestClient>::setCreator([] {
        auto client = QSharedPointer<RestClient>::create();
        client->setLongestTimeout(300);
        return client;
    });
    bed.server().enqueue(Answer::hang());
    const LogCapture log;
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtWarningMsg).size(), 1);

    QElapsedTimer timer;
    timer.start();
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException,
                             client.request(client.getUrl(tessaro::Interface::Messages, QStringLiteral("c")), client.getHeaders(QString())));
    const qint64 elapsed = timer.elapsed();
    QVERIFY2(elapsed < 1300, qPrintable(QString::number(elapsed)));
    QCOMPARE(bed.server().requestCount(), 1);
}

void TestTransport::tokenWithLineBreakIsNotSent()
{
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1\\r\\nX-Injected: 1"));
    const LogCapture log;
    Client client;

    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException,
                             sendEmpty(client, tessaro::Interface::TillOpen));

    // The token request went out; the request that would carry the token did not.
    QCOMPARE(bed.server().requestCount(), 1);
    QCOMPARE(bed.server().requests().first().path, QStringLiteral("/oauth/token"));
    const QStringList errors = log.texts(QStringLiteral("tessaro"), QtCriticalMsg);
    QVERIFY2(!errors.isEmpty() && errors.first().contains(QStringLiteral("Authorization")), qPrintable(errors.join('|')));
    QVERIFY(!errors.first().contains(QStringLiteral("tok-1")));
}

void TestTransport::networkFailureThatStillSaysShiftIsReturned_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("shift closed") << QByteArray(R"({"status":"The shift is closed"})") << 4;
    QTest::newRow("shift already opened") << QByteArray(R"({"status":"The shift is already opened"})") << 7;
    QTest::newRow("other answer") << QByteArray(R"({"status":"Accepted"})") << 0;
}

void TestTransport::networkFailureThatStillSaysShiftIsReturned()
{
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    TestHost host(QStringLiteral("[Tessaro]\nuseTokenAuth=false\n"));
    http::Response cut;
    cut.setBody(body);
    cut.setNetworkError(true);
    const auto canned = QSharedPointer<CannedRestClient>::create(cut);
    MockFactory<RestClient>::setInstance(canned);
    tessaro::Interface client;
    const QUrl url = client.getUrl(tessaro::Interface::TillOpen, QString());
    if (status) {
        QCOMPARE(int(client.send(url, {}, client.getHeaders(QString())).status()), status);
    } else {
        QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.send(url, {}, client.getHeaders(QString())));
    }
    QCOMPARE(canned->exchanges(), 1);
}

void TestTransport::unauthorisedWithBodyFetchesToken()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(401, R"({"message":"Unauthorized","status":"The shift is closed"})"));
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"status":"The shift is closed"})"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("stale-token-0"));
    const tessaro::Response reply = sendEmpty(client, tessaro::Interface::TillClose);
    QCOMPARE(reply.status(), tessaro::Response::ShiftClosed);
    QCOMPARE(bed.server().requestCount(), 3);
    QCOMPARE(bed.server().requests().at(1).path, QStringLiteral("/oauth/token"));
}

void TestTransport::unauthorisedWithoutTokenAuthorisationIsReturned()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")}});
    bed.server().enqueue(Answer::json(401, R"({"message":"Unauthorized"})"));
    tessaro::Interface client;
    const tessaro::Response reply = sendEmpty(client, tessaro::Interface::TillClose);
    QCOMPARE(reply.status(), tessaro::Response::TokenError);
    QCOMPARE(reply.error(), 401);
    QCOMPARE(reply.message(), QStringLiteral("Unauthorized"));
    QCOMPARE(bed.server().requestCount(), 1);
}

void TestTransport::internalServerErrorIsReturned()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(500, R"({"message":"Internal Server Error"})"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    const tessaro::Response reply = sendEmpty(client, tessaro::Interface::AdviceNote);
    QCOMPARE(reply.status(), tessaro::Response::Error);
    QCOMPARE(reply.error(), 500);
    QCOMPARE(reply.transport(), 500);
    QCOMPARE(failureOf([&] { reply.checkStatus(); }),
             tr::Tr(QStringLiteral("tessaroErrorinternalservererror"), QStringLiteral("Internal Server Error")));
    QCOMPARE(bed.server().requestCount(), 1);
}

void TestTransport::emptySuccessBodyIsIncorrectResponse()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::reply(200));
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    const tessaro::Response reply = sendEmpty(client, tessaro::Interface::AdviceNote);
    QCOMPARE(reply.status(), tessaro::Response::IncorrectResponse);
    QCOMPARE(reply.error(), 0);
    QVERIFY_THROWS_EXCEPTION(BasicException, reply.checkStatus());
}

void TestTransport::arrayBodyIsKept()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"([{"message":"first"},{"message":"second"}])"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    const tessaro::Response reply = client.request(client.getUrl(tessaro::Interface::Messages, QStringLiteral("c-1")),
                                                   client.getHeaders(QString()));
    QCOMPARE(reply.jsonArray().size(), 2);
    QCOMPARE(reply.jsonArray().at(1).toObject().value(QStringLiteral("message")).toString(), QStringLiteral("second"));
    QVERIFY(reply.jsonObject().isEmpty());
    // The base reply expects an object; reply classes for arrays say otherwise.
    QCOMPARE(reply.status(), tessaro::Response::IncorrectResponse);
}

void TestTransport::gatewaySignsEveryRequest()
{
    ServiceTestBed bed({{QStringLiteral("OrvelGate:tessaro"), QStringLiteral("true")},
                        {QStringLiteral("OrvelGate:appKey"), QStringLiteral("till-app-0012")},
                        {QStringLiteral("OrvelGate:appSecret"), QStringLiteral("gate-secret-7f1e")},
                        {QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("http://127.0.0.1:%1/token").arg(closedPort())}});
    bed.server().setDefaultAnswer(Answer::json(200, R"({"ok":true})"));
    tessaro::Interface client;
    client.send(client.getUrl(tessaro::Interface::TillOpen, QString()), QJsonObject{{"storeNo", 7}}, client.getHeaders(QStringLiteral("r-1")));
    client.request(client.getUrl(tessaro::Interface::Payload, QStringLiteral("c 1")), client.getHeaders(QString()));
    bed.host().clock()->advance(3600);
    client.send(client.getUrl(tessaro::Interface::AdviceNote, QString()), QJsonObject{{"Key4", "x"}}, client.getHeaders(QString()));

    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 3);
    for (const Request &request : requests) {
        QCOMPARE(gatewayVerdict(request, QStringLiteral("till-app-0012"), QStringLiteral("gate-secret-7f1e")), QStringLiteral("valid"));
        QVERIFY(!header(request, "Authorization").contains(QLatin1String("Bearer")));
        QCOMPARE(header(request, "x-stage"), QStringLiteral("PreProd"));
        QCOMPARE(header(request, "env"), QStringLiteral("PreProd"));
    }
    QCOMPARE(header(requests.at(0), "x-sdk-date"), QStringLiteral("20240131T235959Z"));
    QCOMPARE(header(requests.at(0), "X-Request-ID"), QStringLiteral("r-1"));
    QCOMPARE(requests.at(1).method, QByteArray("GET"));
    QCOMPARE(header(requests.at(2), "x-sdk-date"), QStringLiteral("20240201T005959Z"));
    // A wrong secret is caught by the check.
    QCOMPARE(gatewayVerdict(requests.at(0), QStringLiteral("till-app-0012"), QStringLiteral("other")), QStringLiteral("signature mismatch"));
}

void TestTransport::gatewaySignatureMatchesHandMadeVector()
{
    // The vector "local-clock-and-port": GET /messages/5 on 127.0.0.1, signed
    // without the port, at a clock three hours ahead of UTC.
    ServiceTestBed bed({{QStringLiteral("Tessaro:url"), QStringLiteral("{server}")},
                        {QStringLiteral("OrvelGate:tessaro"), QStringLiteral("true")},
                        {QStringLiteral("OrvelGate:appKey"), QStringLiteral("till-app-0012")},
                        {QStringLiteral("OrvelGate:appSecret"), QStringLiteral("Vz9-kq.секрет")},
                        {QStringLiteral("OrvelGate:xStage"), QStringLiteral("Prod")}});
    bed.host().clock()->setNow(QDateTime::fromString(vectorText(QStringLiteral("local-clock-and-port/time.txt")), Qt::ISODate));
    bed.server().enqueue(Answer::json(200, R"([])"));
    tessaro::Interface client;
    client.request(client.getUrl(tessaro::Interface::Messages, QStringLiteral("5")), client.getHeaders(QString()));
    const Request request = bed.server().requests().first();
    QCOMPARE(request.path, QStringLiteral("/messages/5"));
    QCOMPARE(header(request, "Authorization"), vectorText(QStringLiteral("local-clock-and-port/authorization.txt")));
}

void TestTransport::gatewaySwitchIsReadOnEveryCall()
{
    TestHost host(QStringLiteral("[OrvelGate]\nappKey=k\nappSecret=s\n"));
    const tessaro::Interface client;
    const Headers headers{{"Content-Type", "application/json"}};
    const QUrl url(QStringLiteral("http://service/api/till/open"));
    QCOMPARE(client.getGateHeaders(url, "{}", headers, false), headers);
    host.setConfig(QStringLiteral("[OrvelGate]\nappKey=k\nappSecret=s\ntessaro=true\n"));
    const Headers signed_ = client.getGateHeaders(url, "{}", headers, false);
    QVERIFY(signed_.value(QStringLiteral("Authorization")).startsWith(QLatin1String("SDK-HMAC-SHA256 Access=k, ")));
    QCOMPARE(signed_.value(QStringLiteral("Content-Type")), QStringLiteral("application/json"));
}

void TestTransport::firstRequestFetchesTokenThenPosts()
{
    ServiceTestBed bed;
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"cartUuid":"c-1"})"));
    Client client;
    const LogCapture log;
    const QJsonObject body{{"storeNo", 7}};
    const tessaro::Response reply = client.send(client.getUrl(tessaro::Interface::CartCreate, QString()), body,
                                                client.getHeaders(QStringLiteral("req-1")));
    QVERIFY(reply.success());
    QCOMPARE(client.currentToken(), QStringLiteral("tok-1"));

    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).path, QStringLiteral("/oauth/token"));
    QCOMPARE(requests.at(1).method, QByteArray("POST"));
    QCOMPARE(requests.at(1).path, QStringLiteral("/api/cart/create"));
    QCOMPARE(requests.at(1).body, QByteArray(R"({"storeNo":7})"));
    QCOMPARE(header(requests.at(1), "Authorization"), QStringLiteral("Bearer tok-1"));
    QCOMPARE(header(requests.at(1), "Content-Type"), QStringLiteral("application/json"));
    // Fresh standard headers: the caller's request id is not carried over.
    QCOMPARE(requests.at(1).headerCount("X-Request-ID"), 0);
    const QStringList info = log.texts(QStringLiteral("tessaro"), QtInfoMsg);
    QVERIFY(info.contains(QStringLiteral("Получение токена")));
    QVERIFY(info.contains(QStringLiteral("Получен токен: tok-1")));
}

void TestTransport::invalidTokenIsRepeatedExactlyOnce()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(401, R"({"error":"invalid_token"})"));
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"cartUuid":"c-1"})"));
    bed.server().setDefaultAnswer(Answer::json(500, R"({"message":"unexpected request"})"));
    Client client;
    client.setToken(QStringLiteral("stale-token-0"));
    const tessaro::Response reply = sendEmpty(client, tessaro::Interface::CartCreate);
    QVERIFY(reply.success());
    QCOMPARE(bed.server().requestCount(), 3);
    const QList<Request> requests = bed.server().requests();
    QCOMPARE(header(requests.at(0), "Authorization"), QStringLiteral("Bearer stale-token-0"));
    QCOMPARE(header(requests.at(2), "Authorization"), QStringLiteral("Bearer tok-1"));
    QVERIFY(!client.tokenRetried);
}

void TestTransport::secondInvalidTokenIsLoggedAndThrown()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"error":"invalid_token"})"));
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"error":"invalid_token","message":"Token is not active"})"));
    bed.server().setDefaultAnswer(Answer::json(200, R"({"ok":true})"));
    Client client;
    client.setToken(QStringLiteral("stale-token-0"));
    const LogCapture log;
    QCOMPARE(failureOf([&] { sendEmpty(client); }), tr::Tr(QStringLiteral("tessaroErrortokenisnotactive"), QStringLiteral("Token is not active")));
    QCOMPARE(bed.server().requestCount(), 3);
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtCriticalMsg),
             QStringList{QStringLiteral("Повторная ошибка авторизации после запроса токена")});
}

void TestTransport::cartPathOnBaseWithPath()
{
    TestHost host(QStringLiteral("[Tessaro]\nurl=http://service/api\n"));
    const tessaro::Interface client;
    QCOMPARE(client.getUrl(tessaro::Interface::Cart, QStringLiteral("42")).path(), QStringLiteral("/api/cart/42"));
}

void TestTransport::emptyRequestIdSendsNoRequestIdHeader()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"ok":true})"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("tok-0"));
    QVERIFY(!client.getHeaders(QString()).contains(QStringLiteral("X-Request-ID")));
    sendEmpty(client, tessaro::Interface::Deposit);
    QCOMPARE(bed.server().requests().first().headerCount("X-Request-ID"), 0);
}

void TestTransport::failedGetIsRepeatedAsPostWithoutCallerHeaders()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(401, R"({"error":"invalid_token"})"));
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"payload":"p"})"));
    tessaro::Interface client;
    client.setToken(QStringLiteral("stale-token-0"));
    Headers headers = client.getHeaders(QStringLiteral("req-9"));
    headers.insert(QStringLiteral("X-Extra"), QStringLiteral("yes"));
    const tessaro::Response reply = client.request(client.getUrl(tessaro::Interface::Payload, QStringLiteral("c-1")), headers);
    QVERIFY(reply.success());

    const QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 3);
    QCOMPARE(requests.at(0).method, QByteArray("GET"));
    QCOMPARE(header(requests.at(0), "X-Request-ID"), QStringLiteral("req-9"));
    QCOMPARE(header(requests.at(0), "X-Extra"), QStringLiteral("yes"));
    QCOMPARE(requests.at(2).method, QByteArray("POST"));
    QCOMPARE(requests.at(2).path, QStringLiteral("/api/payload/c-1"));
    QCOMPARE(requests.at(2).body, QByteArray("{}"));
    QCOMPARE(header(requests.at(2), "Authorization"), QStringLiteral("Bearer tok-1"));
    QCOMPARE(requests.at(2).headerCount("X-Request-ID"), 0);
    QCOMPARE(requests.at(2).headerCount("X-Extra"), 0);
}

// The service closes an idle kept-alive connection just as the till's next
// request goes out on it: the request reaches the closed connection and gets
// no answer. The token request, which changes nothing at the service, goes
// again on a fresh connection; the advice note, which the service may have
// registered, is never sent twice.
void TestTransport::keptAliveConnectionClosedByServiceRepeatsOnlyTheTokenRequest()
{
    ServiceTestBed bed;
    Client client;
    client.setToken(QStringLiteral("tok-0"));
    const QUrl adviceNote = client.getUrl(tessaro::Interface::AdviceNote, QString());
    const QJsonObject body{{"storeNo", 7}};
    bed.server().enqueue(Answer::json(200, R"({"Key4":"1/1"})"));
    QVERIFY(client.send(adviceNote, body, client.getHeaders(QString())).success());

    // The next return starts without a token: its first request is the token request.
    client.setToken(QString());
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(ServiceTestBed::tokenAnswer("tok-1"));
    bed.server().enqueue(Answer::json(200, R"({"Key4":"2/2"})"));
    QCOMPARE(client.send(adviceNote, body, client.getHeaders(QString())).jsonObject().value("Key4").toString(),
             QStringLiteral("2/2"));

    QList<Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 4);
    QCOMPARE(requests.at(1).path, QStringLiteral("/oauth/token"));
    QCOMPARE(requests.at(1).peerPort, requests.at(0).peerPort);
    QCOMPARE(requests.at(2).path, QStringLiteral("/oauth/token"));
    QVERIFY(requests.at(2).peerPort != requests.at(1).peerPort);
    QCOMPARE(requests.at(2).body, requests.at(1).body);
    QCOMPARE(requests.at(3).path, QStringLiteral("/api/advicenote"));
    QCOMPARE(client.currentToken(), QStringLiteral("tok-1"));

    // The same race for the advice note itself.
    bed.server().clearRequests();
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::json(200, R"({"Key4":"3/3"})"));
    const LogCapture log;
    try {
        client.send(adviceNote, body, client.getHeaders(QString()));
        QFAIL("no exception");
    } catch (const tessaro::ConnectionErrorException &e) {
        QCOMPARE(e.tr().text(), connectionErrorText);
    }
    requests = bed.server().requests();
    QCOMPARE(requests.size(), 1);
    QCOMPARE(requests.at(0).path, QStringLiteral("/api/advicenote"));
    QCOMPARE(bed.server().pendingAnswers(), 1);
    QVERIFY(log.contains(QStringLiteral("connection lost before the answer; a POST is not sent again")));
}

QTEST_GUILESS_MAIN(TestTransport)
#include "tst_transport.moc"
