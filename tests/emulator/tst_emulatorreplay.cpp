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

QTEST_GUILESS_MAIN(TestEmulatorReplay)
#include "tst_emulatorreplay.moc"
