#include "curlclient.h"

#include <emulator/emulator.h>

#include <QTest>

using tessaro::contracts::Cassette;
using tessaro::contracts::CassetteExchange;
using tessaro::emulator::Emulator;

/// The emulator answering from a cassette: recorded answers to recorded
/// requests, a service error and a journal note for any other request.
class TestEmulatorReplay : public QObject
{
    Q_OBJECT

private slots:
    void answersRecordedRequests();
    void unmatchedRequestIsAServiceError();
    void recordedFailureClosesTheConnection();

private:
    static Cassette cassette();
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

void TestEmulatorReplay::answersRecordedRequests()
{
    Emulator emulator;
    emulator.replay(cassette());
    QVERIFY(emulator.startInThread());
    CurlClient client;
    const QUrl url = emulator.baseUrl().resolved(QUrl(QStringLiteral("/advicenote")));
    const CurlResult result = client.post(url, R"({"items":[{"quantity":2}]})", {"Content-Type: application/json"});
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.body, QByteArray(R"({"Key4":"0/0/12/1"})"));
    QCOMPARE(emulator.journal().entries().first().note, QStringLiteral("replayed 1 POST /advicenote"));
    QVERIFY(emulator.player()->mismatches().isEmpty());
    QCOMPARE(emulator.player()->unsent(), QStringList{QStringLiteral("2 POST /advicenote")});
}

void TestEmulatorReplay::unmatchedRequestIsAServiceError()
{
    Emulator emulator;
    emulator.replay(cassette());
    QVERIFY(emulator.startInThread());
    CurlClient client;
    const QUrl url = emulator.baseUrl().resolved(QUrl(QStringLiteral("/advicenote")));
    const CurlResult result = client.post(url, R"({"items":[{"quantity":9}]})", {"Content-Type: application/json"});
    QCOMPARE(result.status, 500L);
    QCOMPARE(result.object().value(QStringLiteral("message")).toString(), QStringLiteral("No recorded exchange matches this request"));
    const QString note = emulator.journal().entries().first().note;
    QCOMPARE(note, QStringLiteral("no recorded request matches POST /advicenote; nearest: 1 POST /advicenote; "
                                  "body, byte 22: recorded «{\"items\":[{\"quantity\":2}]}» sent «{\"items\":[{\"quantity\":9}]}»"));
    QCOMPARE(emulator.player()->mismatches(), QStringList{note});
}

void TestEmulatorReplay::recordedFailureClosesTheConnection()
{
    Emulator emulator;
    emulator.replay(cassette());
    QVERIFY(emulator.startInThread());
    CurlClient client;
    const QUrl url = emulator.baseUrl().resolved(QUrl(QStringLiteral("/advicenote")));
    const CurlResult result = client.post(url, R"({"items":[{"quantity":3}]})", {"Content-Type: application/json"});
    QVERIFY(!result.answered());
}

QTEST_GUILESS_MAIN(TestEmulatorReplay)
#include "tst_emulatorreplay.moc"
