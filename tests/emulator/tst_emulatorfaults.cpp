// Fault injection and the admin paths, over loopback HTTP: each fault kind,
// the plan's counting and matching, and the journal.
#include "servicesession.h"

#include "emulator/emulator.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTest>

#include <memory>
#include <thread>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;
using tessaro::emulator::Fault;
using tessaro::emulator::JournalEntry;

Q_DECLARE_METATYPE(CURLcode)
Q_DECLARE_METATYPE(tessaro::emulator::Fault)
Q_DECLARE_METATYPE(JournalEntry::Outcome)

namespace {

const QJsonObject till{{QStringLiteral("storeNo"), 1}, {QStringLiteral("tillNo"), 2}};

Fault fault(const QString &kind, const QString &path)
{
    return Fault(*Fault::kindFromName(kind), path);
}

} // namespace

class TestEmulatorFaults : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void answerFaults_data();
    void answerFaults();
    void connectionFaults_data();
    void connectionFaults();
    void hangTimesClientOutWithoutBlockingServer();
    void hangReleasedAfterConfiguredTime();
    void hangReleasedOnRequest();
    void delayAnswersLater();
    void delayOutlastingClientStillApplies();

    void countStrikesThatManyRequests();
    void skipLetsRequestsThroughFirst();
    void unlimitedCountStays();
    void matching_data();
    void matching();
    void tokenPathCanFail();
    void faultsFromSettingsActiveAtStart();

    void journalKeepsRequestAndAnswer();
    void adminFaults();
    void adminRefusesUnknownFaultKind();
    void adminRequests();
    void adminRequestsHideSecretsUnlessTold_data();
    void adminRequestsHideSecretsUnlessTold();
    void adminClockStateShiftsTokens();

private:
    int cartCount() const;

    std::unique_ptr<Emulator> m_emulator;
    std::unique_ptr<ServiceSession> m_session;
};

void TestEmulatorFaults::init()
{
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.authMode = EmulatorSettings::AuthMode::None;
    m_emulator = std::make_unique<Emulator>(settings);
    QVERIFY(m_emulator->startInThread() != 0);
    m_session = std::make_unique<ServiceSession>(*m_emulator);
}

void TestEmulatorFaults::cleanup()
{
    m_session.reset();
    m_emulator.reset();
}

int TestEmulatorFaults::cartCount() const
{
    return int(m_emulator->state().carts.carts().size());
}

void TestEmulatorFaults::answerFaults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<long>("status");
    QTest::addColumn<QByteArray>("body");   // empty: not compared
    QTest::addColumn<bool>("json");
    QTest::addColumn<bool>("applied");

    Fault httpStatus = fault(QStringLiteral("http-status"), QStringLiteral("/cart/create"));
    httpStatus.status = 503;
    httpStatus.body = "down for maintenance";
    QTest::newRow("http-status") << httpStatus << 503L << QByteArray("down for maintenance") << false << false;
    QTest::newRow("invalid-token") << fault(QStringLiteral("invalid-token"), QStringLiteral("/cart/create")) << 401L
                                   << QByteArray(R"({"error":"invalid_token"})") << true << false;
    QTest::newRow("shift-closed") << fault(QStringLiteral("shift-closed"), QStringLiteral("/cart/create")) << 409L
                                  << QByteArray(R"({"status":"The shift is closed"})") << true << false;
    QTest::newRow("status-3001") << fault(QStringLiteral("status-3001"), QStringLiteral("/cart/create")) << 409L
                                 << QByteArray() << true << false;
    QTest::newRow("truncated-json") << fault(QStringLiteral("truncated-json"), QStringLiteral("/cart/create")) << 200L
                                    << QByteArray() << false << true;
    QTest::newRow("malformed-json") << fault(QStringLiteral("malformed-json"), QStringLiteral("/cart/create")) << 200L
                                    << QByteArray() << false << true;
    QTest::newRow("empty-body") << fault(QStringLiteral("empty-body"), QStringLiteral("/cart/create")) << 200L
                                << QByteArray() << false << true;
}

void TestEmulatorFaults::answerFaults()
{
    QFETCH(Fault, fault);
    QFETCH(long, status);
    QFETCH(QByteArray, body);
    QFETCH(bool, json);
    QFETCH(bool, applied);
    m_emulator->faults().add(fault);

    const CurlResult result = m_session->post(QStringLiteral("/cart/create"), till);
    QCOMPARE(result.error, CURLE_OK);
    QCOMPARE(result.status, status);
    if (!body.isEmpty())
        QCOMPARE(result.body, body);
    QCOMPARE(!QJsonDocument::fromJson(result.body).isNull(), json);
    QCOMPARE(cartCount(), applied ? 1 : 0);
    if (fault.kind == Fault::Kind::Status3001) {
        QCOMPARE(result.object().value(QStringLiteral("status")).toString(), QStringLiteral("error"));
        QCOMPARE(result.object().value(QStringLiteral("statusCode")).toInt(), 3001);
    }
    if (fault.kind == Fault::Kind::TruncatedJson) {
        const QByteArray whole = QJsonDocument(m_emulator->state().carts.carts().first().toJson())
                                     .toJson(QJsonDocument::Compact);
        QVERIFY(!result.body.isEmpty());
        QVERIFY(whole.startsWith(result.body));
        QVERIFY(result.body.size() < whole.size());
    }
    // Struck once: the next request is answered normally.
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::connectionFaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<CURLcode>("error");
    QTest::addColumn<bool>("applied");
    QTest::addColumn<JournalEntry::Outcome>("outcome");
    QTest::newRow("close-after-apply") << QStringLiteral("close-after-apply") << CURLE_GOT_NOTHING << true
                                       << JournalEntry::Outcome::Closed;
    QTest::newRow("close-before-apply") << QStringLiteral("close-before-apply") << CURLE_GOT_NOTHING << false
                                        << JournalEntry::Outcome::Closed;
    QTest::newRow("reset") << QStringLiteral("reset") << CURLE_RECV_ERROR << false << JournalEntry::Outcome::Reset;
}

void TestEmulatorFaults::connectionFaults()
{
    QFETCH(QString, kind);
    QFETCH(CURLcode, error);
    QFETCH(bool, applied);
    QFETCH(JournalEntry::Outcome, outcome);
    m_emulator->faults().add(fault(kind, QStringLiteral("/cart/create")));

    const CurlResult result = m_session->post(QStringLiteral("/cart/create"), till);
    QCOMPARE(result.error, error);
    QVERIFY(!result.answered());
    QCOMPARE(cartCount(), applied ? 1 : 0);
    const JournalEntry entry = m_emulator->journal().entries().constLast();
    QCOMPARE(entry.outcome, outcome);
    QCOMPARE(entry.status, 0);
    QCOMPARE(entry.fault, kind);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::hangTimesClientOutWithoutBlockingServer()
{
    m_emulator->faults().add(fault(QStringLiteral("hang"), QStringLiteral("/advicenote")));
    CurlClient hung;
    hung.setTimeoutMs(300);
    QUrl url = m_emulator->baseUrl();
    url.setPath(QStringLiteral("/api/advicenote"));
    const CurlResult result = hung.post(url, "{}", {"Content-Type: application/json"});
    QCOMPARE(result.error, CURLE_OPERATION_TIMEDOUT);
    QCOMPARE(m_emulator->journal().entries().constLast().outcome, JournalEntry::Outcome::Hung);
    QVERIFY(m_emulator->state().adviceNotes.notes().isEmpty());
    // Another connection is served while the first is still held.
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::hangReleasedAfterConfiguredTime()
{
    Fault hang = fault(QStringLiteral("hang"), QStringLiteral("/cart/create"));
    hang.releaseAfterMs = 100;
    m_emulator->faults().add(hang);
    m_session->client().setTimeoutMs(20000);
    QElapsedTimer timer;
    timer.start();
    const CurlResult result = m_session->post(QStringLiteral("/cart/create"), till);
    QCOMPARE(result.error, CURLE_GOT_NOTHING);
    QVERIFY2(timer.elapsed() < 10000, "released long before the client's time-out");
    QCOMPARE(cartCount(), 0);
}

void TestEmulatorFaults::hangReleasedOnRequest()
{
    m_emulator->faults().add(fault(QStringLiteral("hang"), QStringLiteral("/cart/create")));
    CurlResult result;
    const QUrl url = m_session->url(QStringLiteral("/cart/create"));
    std::thread client([&result, url] {
        CurlClient curl;
        curl.setTimeoutMs(20000);
        result = curl.post(url, R"({"storeNo":1,"tillNo":2})", {"Content-Type: application/json"});
    });
    QTRY_VERIFY(m_emulator->journal().size() == 1
                && m_emulator->journal().entries().first().outcome == JournalEntry::Outcome::Hung);
    m_emulator->releaseHeldConnections();
    client.join();
    QCOMPARE(result.error, CURLE_GOT_NOTHING);
}

void TestEmulatorFaults::delayAnswersLater()
{
    Fault delay = fault(QStringLiteral("delay"), QStringLiteral("/cart/create"));
    delay.delayMs = 150;
    m_emulator->faults().add(delay);
    QElapsedTimer timer;
    timer.start();
    const CurlResult result = m_session->post(QStringLiteral("/cart/create"), till);
    QVERIFY(timer.elapsed() >= 150);
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.object().value(QStringLiteral("status")).toString(), QStringLiteral("init"));
    QCOMPARE(cartCount(), 1);
    QCOMPARE(m_emulator->journal().entries().constLast().outcome, JournalEntry::Outcome::Answered);
}

void TestEmulatorFaults::delayOutlastingClientStillApplies()
{
    Fault delay = fault(QStringLiteral("delay"), QStringLiteral("/cart/create"));
    delay.delayMs = 400;
    m_emulator->faults().add(delay);
    m_session->client().setTimeoutMs(100);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).error, CURLE_OPERATION_TIMEDOUT);
    QTRY_COMPARE(m_emulator->journal().entries().constLast().outcome, JournalEntry::Outcome::Abandoned);
    QCOMPARE(cartCount(), 1);
}

void TestEmulatorFaults::countStrikesThatManyRequests()
{
    m_emulator->faults().add(Fault(Fault::Kind::ShiftClosed, QStringLiteral("/cart/create"), 2));
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 409L);
    QCOMPARE(m_emulator->faults().faults().first().count, 1);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 409L);
    QVERIFY(m_emulator->faults().faults().isEmpty());
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::skipLetsRequestsThroughFirst()
{
    Fault later = fault(QStringLiteral("shift-closed"), QStringLiteral("/cart/create"));
    later.skip = 1;
    m_emulator->faults().add(later);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 409L);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::unlimitedCountStays()
{
    m_emulator->faults().add(Fault(Fault::Kind::ShiftClosed, QStringLiteral("/cart/create"), -1));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 409L);
    QCOMPARE(m_emulator->faults().faults().size(), 1);
    m_emulator->faults().clear();
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::matching_data()
{
    QTest::addColumn<QJsonObject>("fault");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("struck");
    const auto shiftClosed = [](const QString &key, const QString &value) {
        return QJsonObject{{QStringLiteral("kind"), QStringLiteral("shift-closed")}, {key, value}};
    };
    QTest::newRow("exact") << shiftClosed(QStringLiteral("path"), QStringLiteral("/messages/1")) << QByteArray("GET")
                           << QStringLiteral("/messages/1") << true;
    QTest::newRow("exact, other id") << shiftClosed(QStringLiteral("path"), QStringLiteral("/messages/1"))
                                     << QByteArray("GET") << QStringLiteral("/messages/2") << false;
    QTest::newRow("prefix") << shiftClosed(QStringLiteral("pathPrefix"), QStringLiteral("/messages/"))
                            << QByteArray("GET") << QStringLiteral("/messages/2") << true;
    QTest::newRow("pattern") << shiftClosed(QStringLiteral("pathPattern"), QStringLiteral("^/payload/[0-9]+$"))
                             << QByteArray("GET") << QStringLiteral("/payload/42") << true;
    QTest::newRow("pattern, no match") << shiftClosed(QStringLiteral("pathPattern"), QStringLiteral("^/payload/[0-9]+$"))
                                       << QByteArray("GET") << QStringLiteral("/payload/x") << false;
    QJsonObject postOnly = shiftClosed(QStringLiteral("path"), QStringLiteral("/messages/1"));
    postOnly.insert(QStringLiteral("method"), QStringLiteral("post"));
    QTest::newRow("method matches") << postOnly << QByteArray("POST") << QStringLiteral("/messages/1") << true;
    QTest::newRow("method differs") << postOnly << QByteArray("GET") << QStringLiteral("/messages/1") << false;
}

void TestEmulatorFaults::matching()
{
    QFETCH(QJsonObject, fault);
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(bool, struck);
    QString error;
    const auto parsed = Fault::fromJson(fault, &error);
    QVERIFY2(parsed, qPrintable(error));
    m_emulator->faults().add(*parsed);
    const CurlResult result = m_session->client().send(method, m_session->url(path), method == "POST" ? "{}" : "",
                                                       {"Content-Type: application/json"});
    QCOMPARE(result.status == 409, struck);
    QCOMPARE(m_emulator->faults().faults().isEmpty(), struck);
}

void TestEmulatorFaults::tokenPathCanFail()
{
    Fault down = fault(QStringLiteral("http-status"), QStringLiteral("/token"));
    down.status = 502;
    m_emulator->faults().add(down);
    QVERIFY(m_session->fetchToken().isEmpty());
    QVERIFY(!m_session->fetchToken().isEmpty());
}

void TestEmulatorFaults::faultsFromSettingsActiveAtStart()
{
    EmulatorSettings settings;
    settings.authMode = EmulatorSettings::AuthMode::None;
    settings.faults.append(Fault(Fault::Kind::InvalidToken, QStringLiteral("/cart/create")));
    Emulator emulator(settings);
    QVERIFY(emulator.startInThread() != 0);
    ServiceSession session(emulator);
    QCOMPARE(session.post(QStringLiteral("/cart/create"), till).status, 401L);
    QCOMPARE(session.post(QStringLiteral("/cart/create"), till).status, 200L);
}

void TestEmulatorFaults::journalKeepsRequestAndAnswer()
{
    m_session->post(QStringLiteral("/cart/create"), till, {"X-Request-ID: abc"});
    m_session->get(QStringLiteral("/cart/none"));
    const auto entries = m_emulator->journal().entries();
    QCOMPARE(entries.size(), 2);
    const JournalEntry &created = entries.first();
    QCOMPARE(created.exchange.method, QByteArray("POST"));
    QCOMPARE(created.exchange.path, QStringLiteral("/api/cart/create"));
    QCOMPARE(created.exchange.header("x-request-id"), QByteArray("abc"));
    QCOMPARE(QJsonDocument::fromJson(created.exchange.body).object(), till);
    QCOMPARE(created.status, 200);
    QCOMPARE(created.outcome, JournalEntry::Outcome::Answered);
    QVERIFY(created.exchange.receivedAt.isValid());
    QCOMPARE(entries.at(1).status, 404);
    QCOMPARE(m_emulator->journal().entriesFor(QStringLiteral("/cart/create")).size(), 1);
}

void TestEmulatorFaults::adminFaults()
{
    CurlClient &client = m_session->client();
    const QByteArray list = R"([{"kind":"http-status","path":"/cart/create","status":500,"body":{"message":"Internal Server Error"}},
                                {"kind":"delay","pathPrefix":"/messages/","delayMs":1,"count":-1}])";
    const CurlResult added = client.post(m_session->rootUrl(QStringLiteral("/_emulator/faults")), list);
    QCOMPARE(added.status, 200L);
    QCOMPARE(added.array().size(), 2);
    QCOMPARE(client.get(m_session->rootUrl(QStringLiteral("/_emulator/faults"))).array(), added.array());

    const CurlResult struck = m_session->post(QStringLiteral("/cart/create"), till);
    QCOMPARE(struck.status, 500L);
    QCOMPARE(struck.object().value(QStringLiteral("message")).toString(), QStringLiteral("Internal Server Error"));

    QCOMPARE(client.send("DELETE", m_session->rootUrl(QStringLiteral("/_emulator/faults")), {}, {}).status, 200L);
    QVERIFY(m_emulator->faults().faults().isEmpty());
}

void TestEmulatorFaults::adminRefusesUnknownFaultKind()
{
    const CurlResult result = m_session->client().post(m_session->rootUrl(QStringLiteral("/_emulator/faults")),
                                                       R"({"kind":"explode","path":"/x"})");
    QCOMPARE(result.status, 400L);
    QCOMPARE(result.object().value(QStringLiteral("message")).toString(), QStringLiteral("unknown fault kind 'explode'"));
    QVERIFY(m_emulator->faults().faults().isEmpty());
}

void TestEmulatorFaults::adminRequests()
{
    m_session->post(QStringLiteral("/cart/create"), till);
    CurlClient &client = m_session->client();
    const QJsonArray requests = client.get(m_session->rootUrl(QStringLiteral("/_emulator/requests"))).array();
    QCOMPARE(requests.size(), 1);
    const QJsonObject entry = requests.first().toObject();
    QCOMPARE(entry.value(QStringLiteral("method")).toString(), QStringLiteral("POST"));
    QCOMPARE(entry.value(QStringLiteral("path")).toString(), QStringLiteral("/api/cart/create"));
    QCOMPARE(entry.value(QStringLiteral("status")).toInt(), 200);
    QCOMPARE(entry.value(QStringLiteral("outcome")).toString(), QStringLiteral("answered"));
    QCOMPARE(entry.value(QStringLiteral("headers")).toObject().value(QStringLiteral("Content-Type")).toString(),
             QStringLiteral("application/json"));
    QCOMPARE(QJsonDocument::fromJson(entry.value(QStringLiteral("body")).toString().toUtf8()).object(), till);

    QCOMPARE(client.send("DELETE", m_session->rootUrl(QStringLiteral("/_emulator/requests")), {}, {}).status, 200L);
    QCOMPARE(client.get(m_session->rootUrl(QStringLiteral("/_emulator/requests"))).array(), QJsonArray());
    QCOMPARE(m_emulator->journal().size(), 0);
}

void TestEmulatorFaults::adminRequestsHideSecretsUnlessTold_data()
{
    QTest::addColumn<bool>("shown");
    QTest::newRow("by default") << false;
    QTest::newRow("told to show them") << true;
}

void TestEmulatorFaults::adminRequestsHideSecretsUnlessTold()
{
    QFETCH(bool, shown);
    m_session.reset();
    m_emulator.reset();
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.showSecretsInJournal = shown;
    m_emulator = std::make_unique<Emulator>(settings);
    QVERIFY(m_emulator->startInThread() != 0);
    m_session = std::make_unique<ServiceSession>(*m_emulator);
    const QString token = m_session->fetchToken();
    QVERIFY(!token.isEmpty());
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till, {"X-Api-Key: api-key-5e"}).status, 200L);

    const CurlResult journal = m_session->client().get(m_session->rootUrl(QStringLiteral("/_emulator/requests")));
    QCOMPARE(journal.array().size(), 2);
    const QByteArrayList secrets{token.toUtf8(), "dGlsbDpzZWNyZXQ=", "api-key-5e"};
    for (const QByteArray &secret : secrets)
        QVERIFY2(journal.body.contains(secret) == shown, secret.constData());
    if (!shown) {
        const QJsonObject headers = journal.array().at(1)[QStringLiteral("headers")].toObject();
        QCOMPARE(headers.value(QStringLiteral("Authorization")).toString(), QStringLiteral("Bearer <%1 chars>").arg(token.size()));
        QCOMPARE(headers.value(QStringLiteral("X-Api-Key")).toString(), QStringLiteral("<10 chars>"));
        QCOMPARE(journal.array().at(0)[QStringLiteral("headers")][QStringLiteral("Authorization")].toString(), QStringLiteral("Basic <16 chars>"));
    }
    // The emulator's own callers (tests, the till's simulation) still see every request as it came.
    QCOMPARE(m_emulator->journal().entries().at(1).exchange.header("authorization"), "Bearer " + token.toUtf8());
}

void TestEmulatorFaults::adminClockStateShiftsTokens()
{
    CurlClient &client = m_session->client();
    const QUrl clock = m_session->rootUrl(QStringLiteral("/_emulator/clock"));
    const CurlResult set = client.post(clock, R"({"now":"2024-01-31T23:59:59Z","advanceSeconds":60})");
    QCOMPARE(set.object().value(QStringLiteral("now")).toString(), QStringLiteral("2024-02-01T00:00:59.000Z"));
    QCOMPARE(m_emulator->clock().now(), QDateTime(QDate(2024, 2, 1), QTime(0, 0, 59), Qt::UTC));
    QCOMPARE(client.post(clock, R"({"now":"yesterday"})").status, 400L);

    const CurlResult shifts = client.post(m_session->rootUrl(QStringLiteral("/_emulator/shifts")),
                                          R"({"storeNo":1,"tillNo":2,"open":false})");
    QCOMPARE(shifts.status, 200L);
    QVERIFY(!m_emulator->state().shifts.isOpen(1, 2));

    m_emulator->state().shifts.setOpen(1, 2, true);
    m_session->post(QStringLiteral("/cart/create"), till);
    const QJsonObject state = client.get(m_session->rootUrl(QStringLiteral("/_emulator/state"))).object();
    QCOMPARE(state.value(QStringLiteral("carts")).toArray().size(), 1);
    QCOMPARE(state.value(QStringLiteral("tills")).toArray().first().toObject().value(QStringLiteral("shiftOpen")).toBool(),
             true);

    const QByteArray bearer = "Bearer " + m_session->fetchToken().toLatin1();
    QVERIFY(m_emulator->tokens().accepts(bearer));
    QCOMPARE(client.send("DELETE", m_session->rootUrl(QStringLiteral("/_emulator/tokens")), {}, {}).status, 200L);
    QVERIFY(!m_emulator->tokens().accepts(bearer));
    QCOMPARE(client.get(m_session->rootUrl(QStringLiteral("/_emulator/nothing"))).status, 404L);
    // Admin requests stay out of the journal: only the cart and the token are there.
    QCOMPARE(m_emulator->journal().size(), 2);
}

QTEST_GUILESS_MAIN(TestEmulatorFaults)
#include "tst_emulatorfaults.moc"
