#include <config.h>
#include <log4qt/logger.h>
#include <restclient.h>
#include <singleton.h>

#include "support/logcapture.h"
#include "support/scriptedhttpserver.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSslKey>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

using Answer = ScriptedHttpServer::Answer;

namespace {

const QString loggerName = QStringLiteral("tessaro.test.rest");
const QString alias = QStringLiteral("сервису Tessaro");

enum class Failure { Refused, Closed, Reset, Unresolved };

QJsonDocument parsed(const QByteArray &json)
{
    return QJsonDocument::fromJson(json);
}

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

QByteArray readResource(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

Q_DECLARE_METATYPE(Failure)
Q_DECLARE_METATYPE(ScriptedHttpServer::Answer)

class TestRestClient : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void postSendsCompactJsonAndHeaders();
    void postNamesJsonWhenCallerGivesNoContentType();
    void callerContentTypeIsKept_data();
    void callerContentTypeIsKept();
    void getSendsNoBody();
    void postRawSendsBytesUnchanged();
    void largeBodyGoesWithoutExpect();
    void keepAliveReusesOneConnection();
    void closedKeptAliveConnectionIsReplaced();
    void deadKeptAliveConnectionFailsPostWithoutResending();
    void deadKeptAliveConnectionIsRetriedForGet();
    void deadKeptAliveConnectionIsRetriedOnceForRepeatablePost();
    void repeatableLastsUntilSetBack();
    void answerOverTheBoundIsDropped_data();
    void answerOverTheBoundIsDropped();
    void answerAtTheBoundIsKept();
    void answerHeadersAreKept();
    void interimAnswerHeadersAreNotKept();
    void headersOverTheBoundAreDropped_data();
    void headersOverTheBoundAreDropped();
    void headersAtTheBoundAreKept();
    void boundComesFromTheConfiguration_data();
    void boundComesFromTheConfiguration();
    void clientMadeWithoutConfigurationMakesNone();
    void emptyAnswerBody();
    void jsonArrayAnswer();
    void httpFailure_data();
    void httpFailure();
    void networkFailure_data();
    void networkFailure();
    void timeoutBoundsExchange();
    void unboundedTimeoutIsReplacedByTheBound_data();
    void unboundedTimeoutIsReplacedByTheBound();
    void lineBreakInHeaderIsNotSent_data();
    void lineBreakInHeaderIsNotSent();
    void serverShutdownEndsHangingExchange();
    void httpsRefusesUnverifiedPeer();
    void oneInfoLinePerExchange();
    void secretsNeverReachLog();
    void answerKeepsToItsLogLines();
    void noLoggerLogsNothing();
    void clientsInSeveralThreads();

private:
    std::unique_ptr<ScriptedHttpServer> m_server;
    std::unique_ptr<RestClient> m_client;
};

void TestRestClient::initTestCase()
{
    QLoggingCategory::setFilterRules(loggerName + QStringLiteral(".debug=true"));
}

void TestRestClient::init()
{
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start() != 0);
    m_client = std::make_unique<RestClient>();
    m_client->setTargetAlias(alias);
    m_client->setTimeout(5000);
}

void TestRestClient::cleanup()
{
    m_client.reset();
    m_server.reset();
}

void TestRestClient::postSendsCompactJsonAndHeaders()
{
    m_server->enqueue(Answer::json(200, R"({"status":"ok"})"));
    const QJsonDocument body = parsed(R"({"cartId":"42","items":[{"sku":"A1","quantity":2}]})");
    const RestClient::Headers headers{{QStringLiteral("Authorization"), QStringLiteral("Bearer abc")},
                                      {QStringLiteral("X-Request-ID"), QStringLiteral("request-7")},
                                      {QStringLiteral("Content-Type"), QStringLiteral("application/json")}};

    QVERIFY(m_client->post(m_server->url(QStringLiteral("/api/cart/create")), body, headers));

    QCOMPARE(m_server->requestCount(), 1);
    const ScriptedHttpServer::Request request = m_server->requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/create"));
    QCOMPARE(request.body, body.toJson(QJsonDocument::Compact));
    QCOMPARE(request.header("Authorization"), QByteArray("Bearer abc"));
    QCOMPARE(request.header("X-Request-ID"), QByteArray("request-7"));
    QCOMPARE(request.headerCount("Content-Type"), 1);
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));

    const http::Response response = m_client->lastResponse();
    QCOMPARE(response.httpCode(), 200);
    QCOMPARE(response.errorCode(), 0);
    QVERIFY(!response.isNetworkError());
    QVERIFY(response.errorText().isEmpty());
    QCOMPARE(response.responseObject().value(QStringLiteral("status")).toString(), QStringLiteral("ok"));
    QCOMPARE(response.url(), m_server->url(QStringLiteral("/api/cart/create")));
}

void TestRestClient::postNamesJsonWhenCallerGivesNoContentType()
{
    QVERIFY(m_client->post(m_server->url(), parsed(R"({"a":1})"), {}));
    QCOMPARE(m_server->requests().first().header("Content-Type"), QByteArray("application/json"));
}

void TestRestClient::callerContentTypeIsKept_data()
{
    QTest::addColumn<bool>("raw");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");

    QTest::newRow("json body, other type") << false << "Content-Type" << "application/vnd.tessaro+json";
    QTest::newRow("json body, lower-case name") << false << "content-type" << "text/plain";
    QTest::newRow("raw body, form type") << true << "Content-Type" << "application/x-www-form-urlencoded";
}

void TestRestClient::callerContentTypeIsKept()
{
    QFETCH(bool, raw);
    QFETCH(QString, name);
    QFETCH(QString, value);

    const RestClient::Headers headers{{name, value}};
    if (raw)
        QVERIFY(m_client->postRaw(m_server->url(), "a=1", headers));
    else
        QVERIFY(m_client->post(m_server->url(), parsed(R"({"a":1})"), headers));

    const ScriptedHttpServer::Request request = m_server->requests().first();
    QCOMPARE(request.headerCount("Content-Type"), 1);
    QCOMPARE(request.header("Content-Type"), value.toUtf8());
}

void TestRestClient::getSendsNoBody()
{
    m_server->enqueue(Answer::json(200, R"({"id":"42"})"));

    QVERIFY(m_client->get(m_server->url(QStringLiteral("/cart/42?expand=items&n=2")),
                          parsed(R"({"ignored":true})"),
                          {{QStringLiteral("Content-Type"), QStringLiteral("application/json")}}));

    const ScriptedHttpServer::Request request = m_server->requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, QStringLiteral("/cart/42"));
    QCOMPARE(request.query.queryItemValue(QStringLiteral("expand")), QStringLiteral("items"));
    QCOMPARE(request.query.queryItemValue(QStringLiteral("n")), QStringLiteral("2"));
    QVERIFY(request.body.isEmpty());
    QCOMPARE(request.headerCount("Content-Length"), 0);
    QCOMPARE(m_client->lastResponse().responseObject().value(QStringLiteral("id")).toString(),
             QStringLiteral("42"));
}

void TestRestClient::postRawSendsBytesUnchanged()
{
    QByteArray bytes("grant_type=client_credentials&client_id=till%2007\r\n");
    bytes.append('\0').append("\xff\xfe binary tail");

    QVERIFY(m_client->postRaw(m_server->url(QStringLiteral("/token")), bytes, {}));

    const ScriptedHttpServer::Request request = m_server->requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.body, bytes);
    // No type is invented for a body whose caller named none.
    QCOMPARE(request.headerCount("Content-Type"), 0);
}

void TestRestClient::largeBodyGoesWithoutExpect()
{
    QJsonArray items;
    const QString filler(1000, QLatin1Char('x'));
    for (int i = 0; i < 1500; ++i)
        items.append(QJsonObject{{QStringLiteral("n"), i}, {QStringLiteral("text"), filler}});
    const QJsonDocument body(QJsonObject{{QStringLiteral("items"), items}});
    const QByteArray raw(1536 * 1024, 'r');
    QVERIFY(body.toJson(QJsonDocument::Compact).size() > 1024 * 1024);

    QVERIFY(m_client->post(m_server->url(), body, {}));
    QVERIFY(m_client->postRaw(m_server->url(), raw, {}));

    const QList<ScriptedHttpServer::Request> requests = m_server->requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(0).body, body.toJson(QJsonDocument::Compact));
    QCOMPARE(requests.at(1).body, raw);
    for (const ScriptedHttpServer::Request &request : requests)
        QCOMPARE(request.headerCount("Expect"), 0);
}

void TestRestClient::keepAliveReusesOneConnection()
{
    QVERIFY(m_client->post(m_server->url(QStringLiteral("/a")), parsed(R"({"n":1})"), {}));
    QVERIFY(m_client->get(m_server->url(QStringLiteral("/b")), {}, {}));
    QVERIFY(m_client->postRaw(m_server->url(QStringLiteral("/c")), "n=3", {}));

    const QList<ScriptedHttpServer::Request> requests = m_server->requests();
    QCOMPARE(requests.size(), 3);
    QVERIFY(requests.at(0).peerPort != 0);
    QCOMPARE(requests.at(1).peerPort, requests.at(0).peerPort);
    QCOMPARE(requests.at(2).peerPort, requests.at(0).peerPort);
}

void TestRestClient::closedKeptAliveConnectionIsReplaced()
{
    m_server->enqueue(Answer::reply(200, "{}", {{"Connection", "close"}}));

    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));
    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));

    const QList<ScriptedHttpServer::Request> requests = m_server->requests();
    QCOMPARE(requests.size(), 2);
    QVERIFY(requests.at(1).peerPort != requests.at(0).peerPort);
}

// A POST on a kept-alive connection that dies before any answer may have been
// applied by the service: it is reported as a network failure, never sent twice.
void TestRestClient::deadKeptAliveConnectionFailsPostWithoutResending()
{
    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));
    m_server->enqueue(Answer::close());
    m_server->enqueue(Answer::json(200, R"({"resent":true})"));

    QVERIFY(!m_client->post(m_server->url(), parsed(R"({"item":1})"), {}));

    QVERIFY(m_client->lastResponse().isNetworkError());
    QVERIFY(m_client->lastResponse().errorText().text().endsWith(QLatin1String("a POST is not sent again")));
    const QList<ScriptedHttpServer::Request> requests = m_server->requests();
    QCOMPARE(requests.size(), 2);
    QCOMPARE(requests.at(1).peerPort, requests.at(0).peerPort);
    QCOMPARE(m_server->pendingAnswers(), 1);
}

// A GET changes nothing at the service, so libcurl's fresh-connection retry is kept for it.
void TestRestClient::deadKeptAliveConnectionIsRetriedForGet()
{
    QVERIFY(m_client->get(m_server->url(), {}, {}));
    m_server->enqueue(Answer::close());
    m_server->enqueue(Answer::json(200, R"({"retried":true})"));

    QVERIFY(m_client->get(m_server->url(), {}, {}));

    const QList<ScriptedHttpServer::Request> requests = m_server->requests();
    QCOMPARE(requests.size(), 3);
    QVERIFY(requests.at(2).peerPort != requests.at(1).peerPort);
    QVERIFY(m_client->lastResponse().responseObject().value(QStringLiteral("retried")).toBool());
}

// A token request changes nothing at the service: its caller marks it
// repeatable, and it goes once more on a fresh connection.
void TestRestClient::deadKeptAliveConnectionIsRetriedOnceForRepeatablePost()
{
    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));
    m_server->enqueue(Answer::close());
    m_server->enqueue(Answer::json(200, R"({"access_token":"t-1"})"));

    m_client->setRepeatable(true);
    QVERIFY(m_client->postRaw(m_server->url(QStringLiteral("/token")), "grant_type=client_credentials", {}));

    const QList<ScriptedHttpServer::Request> requests = m_server->requests();
    QCOMPARE(requests.size(), 3);
    QCOMPARE(requests.at(1).peerPort, requests.at(0).peerPort);
    QVERIFY(requests.at(2).peerPort != requests.at(1).peerPort);
    QCOMPARE(requests.at(2).body, QByteArray("grant_type=client_credentials"));
    QCOMPARE(m_client->lastResponse().responseObject().value(QStringLiteral("access_token")).toString(),
             QStringLiteral("t-1"));
}

void TestRestClient::repeatableLastsUntilSetBack()
{
    QVERIFY(!m_client->isRepeatable());
    m_client->setRepeatable(true);
    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));
    QVERIFY(m_client->isRepeatable());
    m_client->setRepeatable(false);
    m_server->enqueue(Answer::close());
    m_server->enqueue(Answer::json(200, R"({"resent":true})"));

    QVERIFY(!m_client->post(m_server->url(), parsed(R"({"advice":1})"), {}));

    QVERIFY(m_client->lastResponse().errorText().text().endsWith(QLatin1String("a POST is not sent again")));
    QCOMPARE(m_server->requestCount(), 2);
}

void TestRestClient::answerOverTheBoundIsDropped_data()
{
    QTest::addColumn<Answer>("answer");
    const QByteArray larger(1025, 'x');
    QTest::newRow("length announced") << Answer::reply(200, larger);
    // Announced, never sent: refused before its body is awaited.
    QTest::newRow("length announced only") << Answer::reply(200, "{", {{"Content-Length", "1073741824"}});
    // No length, and the answer never ends: the transfer stops once past the bound.
    QTest::newRow("chunked, endless") << Answer::reply(200, "401\r\n" + larger + "\r\n", {{"Transfer-Encoding", "chunked"}});
    QTest::newRow("error status") << Answer::reply(500, larger);
}

void TestRestClient::answerOverTheBoundIsDropped()
{
    QFETCH(Answer, answer);
    m_server->enqueue(answer);
    m_client->setMaxAnswerSize(1024);
    // Only the bound can end these exchanges before the time-out does.
    m_client->setTimeout(60000);

    QVERIFY(!m_client->post(m_server->url(QStringLiteral("/advicenote")), parsed("{}"), {}));

    const http::Response response = m_client->lastResponse();
    QVERIFY(response.isNetworkError());
    QVERIFY(response.errorCode() > 0);
    QCOMPARE(response.errorText().text(),
             QStringLiteral("Ошибка при обращении к %1: the answer is larger than 1024 bytes; it is dropped").arg(alias));
    QVERIFY(response.body().isEmpty());
    QVERIFY(response.responseObject().isEmpty());
    // The connection is not reused after an answer cut short.
    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));
    QCOMPARE(m_server->requestCount(), 2);
    QVERIFY(m_server->requests().at(1).peerPort != m_server->requests().at(0).peerPort);
}

void TestRestClient::answerAtTheBoundIsKept()
{
    const QByteArray body = R"({"pad":")" + QByteArray(1024 - 10, 'x') + R"("})";
    QCOMPARE(body.size(), 1024);
    m_server->enqueue(Answer::json(200, body));
    m_client->setMaxAnswerSize(1024);

    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));

    QCOMPARE(m_client->lastResponse().body(), body);
}

void TestRestClient::answerHeadersAreKept()
{
    m_server->enqueue(Answer::reply(404, R"({"message":"no cart"})",
                                    {{"Content-Type", "application/json; charset=utf-8"},
                                     {"X-Request-Id", "r-17"},
                                     {"Set-Cookie", "a=1"},
                                     {"set-cookie", "b=2"}}));

    QVERIFY(!m_client->get(m_server->url(QStringLiteral("/cart/9")), {}, {}));

    const http::Response::Headers headers = m_client->lastResponse().headers();
    const http::Response::Headers expected{{"Content-Type", "application/json; charset=utf-8"},
                                           {"X-Request-Id", "r-17"},
                                           {"Set-Cookie", "a=1"},
                                           {"set-cookie", "b=2"},
                                           {"Content-Length", "21"}};
    QCOMPARE(headers, expected);

    // No answer, no headers: nothing is left from the exchange before.
    m_server->enqueue(Answer::close());
    QVERIFY(!m_client->post(m_server->url(), parsed("{}"), {}));
    QVERIFY(m_client->lastResponse().headers().isEmpty());
}

void TestRestClient::interimAnswerHeadersAreNotKept()
{
    // A "100 Continue" with a header of its own, then the final answer, in one script.
    m_server->enqueue(Answer::reply(100, "{}", {{"X-Interim", "1\r\n\r\nHTTP/1.1 200 OK\r\nX-Final: 1"}}));

    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));

    const http::Response::Headers expected{{"X-Final", "1"}, {"Content-Length", "2"}};
    QCOMPARE(m_client->lastResponse().headers(), expected);
}

void TestRestClient::headersOverTheBoundAreDropped_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<QString>("detail");
    QTest::newRow("too large") << Answer::reply(200, "{}", {{"X-Padding", QByteArray(64 * 1024, 'p')}})
                               << QStringLiteral("the answer's headers are larger than 65536 bytes; it is dropped");
    ScriptedHttpServer::HeaderList many;
    for (int i = 0; i < 300; ++i)
        many.append({"X-Item-" + QByteArray::number(i), "1"});
    QTest::newRow("too many") << Answer::reply(200, "{}", many)
                              << QStringLiteral("the answer has more than 200 headers; it is dropped");
}

void TestRestClient::headersAtTheBoundAreKept()
{
    ScriptedHttpServer::HeaderList many;
    // With the Content-Length the server adds: 200 in all.
    for (int i = 0; i < 199; ++i)
        many.append({"X-Item-" + QByteArray::number(i), "1"});
    m_server->enqueue(Answer::reply(200, "{}", many));

    QVERIFY(m_client->get(m_server->url(), {}, {}));

    QCOMPARE(m_client->lastResponse().headers().size(), 200);
}

void TestRestClient::headersOverTheBoundAreDropped()
{
    QFETCH(Answer, answer);
    QFETCH(QString, detail);
    m_server->enqueue(answer);

    QVERIFY(!m_client->get(m_server->url(), {}, {}));

    const http::Response response = m_client->lastResponse();
    QVERIFY(response.isNetworkError());
    QCOMPARE(response.errorText().text(), QStringLiteral("Ошибка при обращении к %1: %2").arg(alias, detail));
    QVERIFY(response.headers().isEmpty());
    QVERIFY(response.body().isEmpty());
}

void TestRestClient::boundComesFromTheConfiguration_data()
{
    QTest::addColumn<QString>("ini");
    QTest::addColumn<qint64>("bound");
    const qint64 eightMiB = qint64(8) * 1024 * 1024;
    QTest::newRow("unset") << QString() << eightMiB;
    QTest::newRow("set") << QStringLiteral("[Host]\nmaxAnswerSize=65536\n") << qint64(65536);
    QTest::newRow("beyond 32 bits") << QStringLiteral("[Host]\nmaxAnswerSize=5000000000\n") << qint64(5000000000);
    QTest::newRow("zero") << QStringLiteral("[Host]\nmaxAnswerSize=0\n") << eightMiB;
    QTest::newRow("negative") << QStringLiteral("[Host]\nmaxAnswerSize=-1\n") << eightMiB;
    QTest::newRow("not a number") << QStringLiteral("[Host]\nmaxAnswerSize=big\n") << eightMiB;
}

void TestRestClient::boundComesFromTheConfiguration()
{
    QFETCH(QString, ini);
    QFETCH(qint64, bound);
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("host.ini")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(ini.toUtf8());
    file.close();
    Singleton<Config>::setInstance(new Config(file.fileName()));

    const RestClient client;

    Singleton<Config>::reset();
    QCOMPARE(client.maxAnswerSize(), bound);
    RestClient set;
    set.setMaxAnswerSize(0);
    QCOMPARE(set.maxAnswerSize(), qint64(8) * 1024 * 1024);
}

// The host makes its configuration before any client; a client made without
// one (in a thread of its own, say) takes the default and creates nothing.
void TestRestClient::clientMadeWithoutConfigurationMakesNone()
{
    Singleton<Config>::reset();

    const RestClient client;

    QVERIFY(!Singleton<Config>::exists());
    QCOMPARE(client.maxAnswerSize(), qint64(8) * 1024 * 1024);
}

void TestRestClient::emptyAnswerBody()
{
    m_server->enqueue(Answer::reply(200));

    QVERIFY(m_client->post(m_server->url(), parsed("{}"), {}));

    const http::Response response = m_client->lastResponse();
    QCOMPARE(response.httpCode(), 200);
    QCOMPARE(response.errorCode(), 0);
    QVERIFY(!response.isNetworkError());
    QVERIFY(response.body().isEmpty());
    QVERIFY(response.responseObject().isEmpty());
    QVERIFY(response.responseArray().isEmpty());
}

void TestRestClient::jsonArrayAnswer()
{
    m_server->enqueue(Answer::json(200, R"([{"id":1},{"id":2},{"id":3}])"));

    QVERIFY(m_client->get(m_server->url(QStringLiteral("/messages/1")), {}, {}));

    const http::Response response = m_client->lastResponse();
    QCOMPARE(response.responseArray().size(), 3);
    QCOMPARE(response.responseArray().at(2).toObject().value(QStringLiteral("id")).toInt(), 3);
    QVERIFY(response.responseObject().isEmpty());
}

void TestRestClient::httpFailure_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");

    QTest::newRow("401 unauthorised") << 401 << QByteArray(R"({"error":"invalid_token"})");
    QTest::newRow("400 with message") << 400 << QByteArray(R"({"message":"Invalid data type"})");
    QTest::newRow("404 empty") << 404 << QByteArray();
    QTest::newRow("500 with body") << 500 << QByteArray(R"({"message":"Internal Server Error"})");
    QTest::newRow("503 plain text") << 503 << QByteArray("maintenance");
}

void TestRestClient::httpFailure()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    m_server->enqueue(Answer::json(status, body));

    QVERIFY(!m_client->post(m_server->url(QStringLiteral("/cart/create")), parsed("{}"), {}));

    const http::Response response = m_client->lastResponse();
    QCOMPARE(response.httpCode(), status);
    QCOMPARE(response.errorCode(), status);
    QVERIFY(!response.isNetworkError());
    QCOMPARE(response.body(), body);
    QCOMPARE(response.responseObject(), parsed(body).object());
    QCOMPARE(response.errorText().id(), QStringLiteral("restClientError"));
    QVERIFY(response.errorText().text().contains(alias));
    QVERIFY(response.errorText().text().contains(QString::number(status)));
}

void TestRestClient::networkFailure_data()
{
    QTest::addColumn<Failure>("failure");

    QTest::newRow("connection refused") << Failure::Refused;
    QTest::newRow("closed without answer") << Failure::Closed;
    QTest::newRow("reset without answer") << Failure::Reset;
    QTest::newRow("unresolved host") << Failure::Unresolved;
}

void TestRestClient::networkFailure()
{
    QFETCH(Failure, failure);
    QUrl url = m_server->url(QStringLiteral("/till/open"));
    switch (failure) {
    case Failure::Refused:
        url.setPort(closedPort());
        break;
    case Failure::Closed:
        m_server->enqueue(Answer::close());
        break;
    case Failure::Reset:
        m_server->enqueue(Answer::reset());
        break;
    case Failure::Unresolved:
        // A reserved name that no resolver answers; the time-out bounds a slow one.
        url = QUrl(QStringLiteral("http://tessaro.invalid/till/open"));
        m_client->setTimeout(3000);
        break;
    }

    QVERIFY(!m_client->post(url, parsed(R"({"till":1})"), {}));

    const http::Response response = m_client->lastResponse();
    QVERIFY(response.isNetworkError());
    QVERIFY(response.errorCode() > 0);
    QCOMPARE(response.httpCode(), 0);
    QCOMPARE(response.url(), url);
    QCOMPARE(response.errorText().id(), QStringLiteral("restClientError"));
    QVERIFY2(response.errorText().text().startsWith(QStringLiteral("Ошибка при обращении к ") + alias + ": "),
             qPrintable(response.errorText().text()));
}

void TestRestClient::timeoutBoundsExchange()
{
    m_server->enqueue(Answer::hang());
    m_client->setTimeout(300);

    QElapsedTimer clock;
    clock.start();
    QVERIFY(!m_client->post(m_server->url(), parsed("{}"), {}));
    const qint64 elapsed = clock.elapsed();

    // Waited for the time-out (give or take the clocks' rounding), and not much longer.
    QVERIFY2(elapsed >= 250 && elapsed < 1300, qPrintable(QString::number(elapsed)));
    QCOMPARE(m_server->requestCount(), 1);
    const http::Response response = m_client->lastResponse();
    QVERIFY(response.isNetworkError());
    QVERIFY(response.errorCode() > 0);
    QCOMPARE(response.httpCode(), 0);
    QVERIFY2(response.errorText().text().contains(QStringLiteral("timed out")),
             qPrintable(response.errorText().text()));
}

void TestRestClient::unboundedTimeoutIsReplacedByTheBound_data()
{
    QTest::addColumn<int>("timeout");
    QTest::newRow("zero, no time-out for libcurl") << 0;
    QTest::newRow("negative") << -1;
    QTest::newRow("longer than the bound") << std::numeric_limits<int>::max();
}

void TestRestClient::unboundedTimeoutIsReplacedByTheBound()
{
    QFETCH(int, timeout);
    const Log4Qt::Logger logger(loggerName);
    m_client->setLogger(&logger);
    m_client->setLongestTimeout(300);
    const LogCapture log;

    m_client->setTimeout(timeout);

    QCOMPARE(m_client->timeout(), 300);
    const QStringList warnings = log.texts(loggerName, QtWarningMsg);
    QCOMPARE(warnings.size(), 1);
    QVERIFY2(warnings.first().contains(QString::number(timeout)) && warnings.first().contains(QStringLiteral("300 ms")),
             qPrintable(warnings.first()));

    // A server that takes the request and never answers.
    m_server->enqueue(Answer::hang());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!m_client->post(m_server->url(), parsed("{}"), {}));
    const qint64 elapsed = clock.elapsed();
    QVERIFY2(elapsed < 1300, qPrintable(QString::number(elapsed)));
    QVERIFY(m_client->lastResponse().isNetworkError());
}

void TestRestClient::lineBreakInHeaderIsNotSent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::newRow("token with CR LF") << "Authorization" << "Bearer SECRET-1\r\nX-Injected: 1";
    QTest::newRow("request id with LF") << "X-Request-ID" << "SECRET-2\nX-Injected: 1";
    QTest::newRow("lone CR") << "X-Request-ID" << "SECRET-3\rX-Injected: 1";
    QTest::newRow("NUL cuts the value") << "X-Request-ID" << QStringLiteral("SECRET-4") + QChar(0) + QStringLiteral("tail");
    QTest::newRow("line break in the name") << "X-Injected: 1\r\nX-Request-ID" << "SECRET-5";
}

void TestRestClient::lineBreakInHeaderIsNotSent()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    const Log4Qt::Logger logger(loggerName);
    m_client->setLogger(&logger);
    const LogCapture log;
    const RestClient::Headers headers{{name, value}, {QStringLiteral("Content-Type"), QStringLiteral("application/json")}};

    QVERIFY(!m_client->post(m_server->url(), parsed("{}"), headers));
    QVERIFY(!m_client->get(m_server->url(), {}, headers));
    QVERIFY(!m_client->postRaw(m_server->url(), "a=1", headers));

    QCOMPARE(m_server->requestCount(), 0);
    const http::Response response = m_client->lastResponse();
    QVERIFY(response.isNetworkError());
    QVERIFY(response.errorCode() > 0);
    QCOMPARE(response.httpCode(), 0);
    QCOMPARE(response.errorText().id(), QStringLiteral("restClientError"));
    QVERIFY2(response.errorText().text().contains(QStringLiteral("line break")), qPrintable(response.errorText().text()));
    QVERIFY(!response.errorText().text().contains(QStringLiteral("SECRET-")));
    const QStringList errors = log.texts(loggerName, QtCriticalMsg);
    QCOMPARE(errors.size(), 3);
    QVERIFY2(errors.first().contains(QStringLiteral("line break")), qPrintable(errors.first()));
    for (const LogCapture::Message &message : log.messages())
        QVERIFY2(!message.text.contains(QStringLiteral("SECRET-")), qPrintable(message.text));
}

void TestRestClient::serverShutdownEndsHangingExchange()
{
    m_server->enqueue(Answer::hang());
    const QUrl url = m_server->url();
    http::Response response;
    qint64 elapsed = 0;

    std::thread exchange([&url, &response, &elapsed] {
        RestClient client;
        client.setTimeout(20000);
        QElapsedTimer clock;
        clock.start();
        client.post(url, parsed("{}"), {});
        elapsed = clock.elapsed();
        response = client.lastResponse();
    });
    const bool arrived = m_server->waitForRequests(1);
    m_server->stop();
    exchange.join();

    QVERIFY(arrived);
    QVERIFY2(elapsed < 10000, qPrintable(QString::number(elapsed)));
    QVERIFY(response.isNetworkError());
}

void TestRestClient::httpsRefusesUnverifiedPeer()
{
    const QSslCertificate certificate(readResource(QStringLiteral(":/data/selfsigned.crt")));
    const QSslKey key(readResource(QStringLiteral(":/data/selfsigned.key")), QSsl::Ec);
    QVERIFY(!certificate.isNull());
    QVERIFY(!key.isNull());
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(certificate);
    tls.setPrivateKey(key);
    ScriptedHttpServer server;
    server.setTlsConfiguration(tls);
    QVERIFY(server.start() != 0);
    QCOMPARE(server.url().scheme(), QStringLiteral("https"));

    QVERIFY(!m_client->post(server.url(), parsed("{}"), {}));

    const http::Response response = m_client->lastResponse();
    QVERIFY(response.isNetworkError());
    QVERIFY2(response.errorText().text().contains(QStringLiteral("certificate")),
             qPrintable(response.errorText().text()));
    QCOMPARE(server.requestCount(), 0);
}

void TestRestClient::oneInfoLinePerExchange()
{
    const Log4Qt::Logger logger(loggerName);
    m_client->setLogger(&logger);
    m_server->enqueue(Answer::json(200, "{}"));
    m_server->enqueue(Answer::json(500, R"({"message":"Internal Server Error"})"));
    QUrl refused = m_server->url(QStringLiteral("/refused"));
    refused.setPort(closedPort());
    const LogCapture log;

    m_client->post(m_server->url(QStringLiteral("/first%2Fpart")), parsed("{}"), {});
    m_client->get(m_server->url(QStringLiteral("/second")), {}, {});
    m_client->postRaw(refused, "x=1", {});

    const QStringList lines = log.texts(loggerName, QtInfoMsg);
    QCOMPARE(lines.size(), 3);
    QVERIFY2(lines.at(0).startsWith(QStringLiteral("POST ") + m_server->url(QStringLiteral("/first%2Fpart")).toString()
                                    + QStringLiteral(": HTTP 200, ")),
             qPrintable(lines.at(0)));
    QVERIFY2(lines.at(1).startsWith(QStringLiteral("GET ") + m_server->url(QStringLiteral("/second")).toString()
                                    + QStringLiteral(": HTTP 500, ")),
             qPrintable(lines.at(1)));
    QVERIFY2(lines.at(2).startsWith(QStringLiteral("POST ") + refused.toString() + QStringLiteral(": Ошибка")),
             qPrintable(lines.at(2)));
    for (const QString &line : lines)
        QVERIFY2(line.endsWith(QStringLiteral(" ms")), qPrintable(line));
}

void TestRestClient::secretsNeverReachLog()
{
    const Log4Qt::Logger logger(loggerName);
    m_client->setLogger(&logger);
    m_client->setSecretHeaders({QStringLiteral("authorization"), QStringLiteral("X-Api-Key")});
    m_server->enqueue(Answer::json(200, R"({"access_token":"SECRET-F","expires_in":300})"));
    const RestClient::Headers headers{{QStringLiteral("Authorization"), QStringLiteral("Bearer SECRET-A")},
                                      {QStringLiteral("X-API-KEY"), QStringLiteral("SECRET-B")},
                                      {QStringLiteral("X-Request-ID"), QStringLiteral("visible-id")}};
    const QJsonDocument body = parsed(R"({"appSecret":"SECRET-C","password":"SECRET-D",)"
                                      R"("nested":{"access_token":"SECRET-E"},"keep":"visible-value"})");
    const LogCapture log;

    QVERIFY(m_client->post(m_server->url(), body, headers));
    QVERIFY(m_client->postRaw(m_server->url(QStringLiteral("/token?client_secret=SECRET-G&realm=r")),
                              "grant_type=client_credentials&client_secret=SECRET-H&password=SECRET-I",
                              headers));

    // The secrets did travel; only the log must not show them.
    QCOMPARE(m_server->requests().first().header("Authorization"), QByteArray("Bearer SECRET-A"));
    for (const LogCapture::Message &message : log.messages())
        QVERIFY2(!message.text.contains(QStringLiteral("SECRET-")), qPrintable(message.text));
    QVERIFY(log.contains(QStringLiteral("Authorization: ***")));
    QVERIFY(log.contains(QStringLiteral("X-API-KEY: ***")));
    QVERIFY(log.contains(QStringLiteral("visible-id")));
    QVERIFY(log.contains(QStringLiteral("visible-value")));
    QVERIFY(log.contains(QStringLiteral("grant_type=client_credentials")));
    QVERIFY(log.contains(QStringLiteral("realm=r")));
}

void TestRestClient::answerKeepsToItsLogLines()
{
    const Log4Qt::Logger logger(loggerName);
    m_client->setLogger(&logger);
    m_server->enqueue(Answer::reply(502, "bad gateway\r\nX-Evil: 1\n\x1b[2J"));
    const LogCapture log;

    QVERIFY(!m_client->get(m_server->url(QStringLiteral("/status")), {}, {}));

    // One message is one line of the log: no value may break it or drive a terminal.
    QVERIFY(log.contains(QStringLiteral("bad gateway\\r\\nX-Evil: 1\\n\\x1b[2J")));
    for (const LogCapture::Message &message : log.messages()) {
        QVERIFY2(!message.text.contains(QLatin1Char('\n')) && !message.text.contains(QLatin1Char('\r'))
                     && !message.text.contains(QChar(0x1b)),
                 qPrintable(message.text.toHtmlEscaped()));
    }
}

void TestRestClient::noLoggerLogsNothing()
{
    const LogCapture log;

    QVERIFY(m_client->post(m_server->url(), parsed(R"({"password":"x"})"), {}));

    QVERIFY(log.messages().isEmpty());
}

void TestRestClient::clientsInSeveralThreads()
{
    m_server->setResponder([](const ScriptedHttpServer::Request &request) {
        return Answer::json(200, request.body);
    });
    constexpr int threadCount = 4;
    constexpr int exchangesPerThread = 25;
    const QUrl url = m_server->url(QStringLiteral("/echo"));
    std::atomic<int> mismatches{0};

    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([t, &url, &mismatches] {
            RestClient client;
            client.setTimeout(5000);
            for (int n = 0; n < exchangesPerThread; ++n) {
                const QJsonObject sent{{QStringLiteral("thread"), t}, {QStringLiteral("n"), n}};
                if (!client.post(url, QJsonDocument(sent), {})
                        || client.lastResponse().responseObject() != sent)
                    ++mismatches;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    QCOMPARE(mismatches.load(), 0);
    QCOMPARE(m_server->requestCount(), threadCount * exchangesPerThread);
}

QTEST_GUILESS_MAIN(TestRestClient)
#include "tst_restclient.moc"
