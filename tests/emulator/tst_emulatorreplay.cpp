#include "curlclient.h"

#include <emulator/emulator.h>

#include <QTest>

#include <memory>

using tessaro::contracts::Cassette;
using tessaro::contracts::CassetteExchange;
using tessaro::emulator::Emulator;

/// The emulator answering from a cassette: recorded answers to recorded
/// requests, a service error and a journal note for any other request.
class TestEmulatorReplay : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void answersRecordedRequests();
    void unmatchedRequestIsAServiceError();
    void recordedFailureClosesTheConnection();
    void answersWithRecordedHeaders();

private:
    static Cassette cassette();
    /// Posts an advice note of \a quantity to the replaying emulator.
    CurlResult postAdvice(int quantity);

    std::unique_ptr<Emulator> m_emulator;
    CurlClient m_client;
};

Cassette TestEmulatorReplay::cassette()
{
    CassetteExchange advice;
    advice.method = QStringLiteral("POST");
    advice.path = QStringLiteral("/advicenote");
    advice.requestHeaders = {{QStringLiteral("Content-Type"), QStringLiteral("application/json")}};
    advice.requestBody = R"({"items":[{"quantity":2}]})";
    advice.status = 200;
    advice.responseBody = R"({"Key4":"0/0/12/1"})";
    CassetteExchange failed = advice;
    failed.requestBody = R"({"items":[{"quantity":3}]})";
    failed.status = 0;
    failed.networkError = true;
    failed.responseBody.clear();
    Cassette cassette;
    cassette.exchanges = {advice, failed};
    return cassette;
}

void TestEmulatorReplay::init()
{
    m_emulator = std::make_unique<Emulator>();
    m_emulator->replay(cassette());
    QVERIFY(m_emulator->startInThread());
}

CurlResult TestEmulatorReplay::postAdvice(int quantity)
{
    const QUrl url = m_emulator->baseUrl().resolved(QUrl(QStringLiteral("/advicenote")));
    return m_client.post(url, QStringLiteral(R"({"items":[{"quantity":%1}]})").arg(quantity).toUtf8(), {"Content-Type: application/json"});
}

void TestEmulatorReplay::answersRecordedRequests()
{
    const CurlResult result = postAdvice(2);
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.body, QByteArray(R"({"Key4":"0/0/12/1"})"));
    QCOMPARE(m_emulator->journal().entries().first().note, QStringLiteral("replayed 1 POST /advicenote"));
    QVERIFY(m_emulator->player()->mismatches().isEmpty());
    QCOMPARE(m_emulator->player()->unsent(), QStringList{QStringLiteral("2 POST /advicenote")});
}

void TestEmulatorReplay::unmatchedRequestIsAServiceError()
{
    const CurlResult result = postAdvice(9);
    QCOMPARE(result.status, 500L);
    QCOMPARE(result.object().value(QStringLiteral("message")).toString(), QStringLiteral("No recorded exchange matches this request"));
    const QString note = m_emulator->journal().entries().first().note;
    QCOMPARE(note, QStringLiteral("no recorded request matches POST /advicenote; nearest: 1 POST /advicenote; "
                                  "body, byte 22: recorded «{\"items\":[{\"quantity\":2}]}» sent «{\"items\":[{\"quantity\":9}]}»"));
    QCOMPARE(m_emulator->player()->mismatches(), QStringList{note});
}

void TestEmulatorReplay::recordedFailureClosesTheConnection()
{
    QVERIFY(!postAdvice(3).answered());
}

void TestEmulatorReplay::answersWithRecordedHeaders()
{
    CassetteExchange cart;
    cart.method = QStringLiteral("GET");
    cart.path = QStringLiteral("/cart/5");
    cart.status = 200;
    cart.responseBody = "cart 5";
    cart.responseHeaders = {{QStringLiteral("Date"), QStringLiteral("Mon, 01 Jan 2024 00:00:00 GMT")},
                            {QStringLiteral("Content-Type"), QStringLiteral("text/plain; charset=utf-8")},
                            {QStringLiteral("Content-Length"), QStringLiteral("999")},
                            {QStringLiteral("Transfer-Encoding"), QStringLiteral("chunked")},
                            {QStringLiteral("Connection"), QStringLiteral("close")},
                            {QStringLiteral("Retry-After"), QStringLiteral("5")},
                            {QStringLiteral("Set-Cookie"), QStringLiteral("session=secret-placeholder-1; Path=/")}};
    Cassette cassette;
    cassette.exchanges = {cart};
    Emulator emulator;
    emulator.replay(cassette);
    QVERIFY(emulator.startInThread());

    const CurlResult result = m_client.get(emulator.baseUrl().resolved(QUrl(QStringLiteral("/cart/5"))));

    QCOMPARE(result.body, QByteArray("cart 5"));
    QCOMPARE(result.headers("Content-Type"), QByteArrayList{"text/plain; charset=utf-8"});
    QCOMPARE(result.headers("Retry-After"), QByteArrayList{"5"});
    // What the server itself says of this answer and this connection.
    QCOMPARE(result.headers("Content-Length"), QByteArrayList{"6"});
    QVERIFY(result.headers("Transfer-Encoding").isEmpty());
    QCOMPARE(result.headers("Connection"), QByteArrayList{"Keep-Alive"});
    QCOMPARE(result.headers("Date").size(), 1);
    QVERIFY(result.headers("Date").first() != "Mon, 01 Jan 2024 00:00:00 GMT");
    // A secret the cassette does not hold is not given back.
    QVERIFY(result.headers("Set-Cookie").isEmpty());
}

QTEST_GUILESS_MAIN(TestEmulatorReplay)
#include "tst_emulatorreplay.moc"
