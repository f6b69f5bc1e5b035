#include "faultplanner.h"
#include "invariantchecker.h"
#include "killedtillrun.h"
#include "logwatch.h"
#include "messagetable.h"
#include "sessionfile.h"
#include "sessiongenerator.h"
#include "sessionrunner.h"
#include "sessionshrinker.h"

#include <emulator/emulator.h>
#include <log4qt/logger.h>

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace till;

/// The simulation's parts: the generator, the fault planner, the session
/// files, the message table, the shrinker, and the invariant checks, which
/// must find the stand-in plug-in's messages that are not the system's.
class TestSimulation : public QObject
{
    Q_OBJECT

private slots:
    void sameSeedSameSession();
    void sessionSeedsDiffer();
    void faultPlannerReplaysItsDraws();
    void sessionFileRoundTrip();
    void sessionFileRefusesAnUnknownFaultKind();
    void messageTable_data();
    void messageTable();
    void shrinkerKeepsWhatFails();
    void logWatchSeesDebugLines();
    void leakedSecretIsNamedButNotShown();
    void foreignMessageIsFoundShrunkAndReplayed();
    void killWaitsForTheHeldAdviceNote();
    void killedTillCountsEachReturnsNote_data();
    void killedTillCountsEachReturnsNote();
    void killedTillTakesTheShiftAlreadyOpenedAsOpened();
};

namespace {

QByteArray scenarioText(const SimulatedSession &session)
{
    return QJsonDocument(SessionFile::scenarioJson(session, QString())).toJson(QJsonDocument::Compact);
}

} // namespace

void TestSimulation::sameSeedSameSession()
{
    const SessionGenerator generator({0.3, 0.2});
    for (quint64 seed : {quint64(1), quint64(42), quint64(9007199254740991)}) {
        const SimulatedSession first = generator.generate(seed);
        const SimulatedSession second = generator.generate(seed);
        QCOMPARE(scenarioText(first), scenarioText(second));
        QCOMPARE(first.auth, second.auth);
        QCOMPARE(first.killChild, second.killChild);
        QVERIFY(!first.scenario.actions.isEmpty());
    }
    QVERIFY(scenarioText(generator.generate(1)) != scenarioText(generator.generate(2)));
}

void TestSimulation::sessionSeedsDiffer()
{
    QSet<quint64> seeds;
    for (quint64 index = 0; index < 1000; ++index) {
        const quint64 seed = SessionGenerator::sessionSeed(7, index);
        QVERIFY(seed < (quint64(1) << 53));
        seeds.insert(seed);
    }
    QCOMPARE(seeds.size(), 1000);
    QCOMPARE(SessionGenerator::sessionSeed(7, 3), SessionGenerator::sessionSeed(7, 3));
}

void TestSimulation::faultPlannerReplaysItsDraws()
{
    FaultPlanner drawn(5, 0.5, 1000);
    const QStringList paths{QStringLiteral("/token"), QStringLiteral("/advicenote"), QStringLiteral("/advicenote"),
                            QStringLiteral("/till/open"), QStringLiteral("/advicenote"), QStringLiteral("/advicenote")};
    QStringList first;
    for (const QString &path : paths) {
        const std::optional<SessionFault> fault = drawn.next(path);
        first << (fault ? fault->kindName() : QString());
    }
    QVERIFY(!drawn.struck().isEmpty());
    FaultPlanner replayed(drawn.struck());
    QStringList second;
    for (const QString &path : paths) {
        const std::optional<SessionFault> fault = replayed.next(path);
        second << (fault ? fault->kindName() : QString());
    }
    QCOMPARE(second, first);
}

void TestSimulation::sessionFileRoundTrip()
{
    SimulatedSession session = SessionGenerator({0.3, 0.2}).generate(11);
    session.scripted = true;
    session.faults = {{QStringLiteral("/advicenote"), 0, SessionFault::Kind::ShiftClosed, 0, 0, {}},
                      {QStringLiteral("/advicenote"), 2, SessionFault::Kind::HttpStatus, 0, 500, R"({"message": "Internal Server Error"})"},
                      {QStringLiteral("/token"), 1, SessionFault::Kind::Delay, 40, 0, {}}};
    QTemporaryDir dir;
    QString error;
    const QString file = SessionFile::write(session, dir.path(), QStringLiteral("s"), QStringLiteral("round trip"), &error);
    QVERIFY2(!file.isEmpty(), qPrintable(error));
    const std::optional<SimulatedSession> read = SessionFile::load(file, &error);
    QVERIFY2(read, qPrintable(error));
    QCOMPARE(scenarioText(*read), scenarioText(session));
    QCOMPARE(read->auth, session.auth);
    QCOMPARE(read->serviceShiftOpen, session.serviceShiftOpen);
    QCOMPARE(read->timeoutSeconds, session.timeoutSeconds);
    QCOMPARE(read->faults.size(), 3);
    QStringList faults;
    for (const SessionFault &fault : read->faults)
        faults << QStringLiteral("%1 %2 %3").arg(fault.path).arg(fault.ordinal).arg(fault.kindName());
    faults.sort();
    QCOMPARE(faults, QStringList({QStringLiteral("/advicenote 0 shift-closed"), QStringLiteral("/advicenote 2 http-status"),
                                  QStringLiteral("/token 1 delay")}));
}

void TestSimulation::sessionFileRefusesAnUnknownFaultKind()
{
    QTemporaryDir dir;
    QString error;
    SimulatedSession session = SessionGenerator({0.3, 0.2}).generate(11);
    const QString file = SessionFile::write(session, dir.path(), QStringLiteral("s"), QStringLiteral("misspelt"), &error);
    QVERIFY2(!file.isEmpty(), qPrintable(error));
    QFile emulator(dir.filePath(QStringLiteral("emulator/s.json")));
    QVERIFY(emulator.open(QIODevice::WriteOnly | QIODevice::Truncate));
    emulator.write(R"({"auth": "token", "faults": [{"kind": "hnag", "path": "/advicenote", "count": 1}]})");
    emulator.close();
    QVERIFY(!SessionFile::load(file, &error));
    QCOMPARE(error, QStringLiteral("unknown fault kind 'hnag'"));
}

void TestSimulation::messageTable_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("known");
    QTest::newRow("plug-in message") << "tessaroConflictPayment" << "В документе есть несовместимые оплаты" << true;
    QTest::newRow("wrong text") << "tessaroConflictPayment" << "Оплата" << false;
    QTest::newRow("service message") << "tessaroErroritemwasntfound" << "Item wasn't found" << true;
    QTest::newRow("service message, other key") << "tessaroErroritem" << "Item wasn't found" << false;
    QTest::newRow("host input") << "inputQuantity" << "Введите количество" << true;
    QTest::newRow("foreign") << "fakeNoCard" << "Запрещено добавлять товары, если в чеке нет карты" << false;
}

void TestSimulation::messageTable()
{
    QFETCH(QString, id);
    QFETCH(QString, text);
    QFETCH(bool, known);
    QCOMPARE(MessageTable().check(id, text).isEmpty(), known);
}

void TestSimulation::shrinkerKeepsWhatFails()
{
    SimulatedSession session = SessionGenerator({0.0, 0.0}).generate(3);
    ScenarioAction culprit;
    culprit.type = ScenarioAction::Coupon;
    culprit.number = QStringLiteral("culprit");
    session.scenario.actions.insert(session.scenario.actions.size() / 2, culprit);
    const auto fails = [](const SimulatedSession &candidate) {
        return std::any_of(candidate.scenario.actions.cbegin(), candidate.scenario.actions.cend(),
                           [](const ScenarioAction &action) { return action.number == QLatin1String("culprit"); });
    };
    SessionShrinker shrinker(fails, 500);
    const SimulatedSession shrunk = shrinker.shrink(session);
    QCOMPARE(shrunk.scenario.actions.size(), 1);
    QCOMPARE(shrunk.scenario.actions.first().number, QStringLiteral("culprit"));
    QVERIFY(shrunk.scenario.documents.isEmpty());
    QVERIFY(shrinker.replays() <= 500);
}

void TestSimulation::logWatchSeesDebugLines()
{
    LogWatch watch;
    const Log4Qt::Logger logger(QStringLiteral("tessaro"));
    logger.debug(QStringLiteral("Заголовки: Authorization: Bearer 0123"));
    logger.info(QStringLiteral("Получен токен: 0123"));
    const QStringList lines = watch.take();
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.first().endsWith(QStringLiteral("Authorization: Bearer 0123")));
    QVERIFY(watch.take().isEmpty());
}

void TestSimulation::leakedSecretIsNamedButNotShown()
{
    tessaro::emulator::Emulator emulator;
    InvariantChecker checker(&emulator, 5000, {QStringLiteral("gate-secret-61")});
    ScenarioAction action;
    action.type = ScenarioAction::Input;
    ActionRecord record;
    record.title = QStringLiteral("input");

    checker.afterStep(action, record, nullptr, 0, {QStringLiteral("tessaro: signed with gate-secret-61 today")});

    // The violation goes to the terminal and into files: it says where, not what.
    QCOMPARE(checker.violations().size(), 1);
    QCOMPARE(checker.violations().first().invariant, QStringLiteral("no-secrets-in-log"));
    QCOMPARE(checker.violations().first().detail, QStringLiteral("input: a log line shows a secret: tessaro: signed with *** today"));
}

void TestSimulation::foreignMessageIsFoundShrunkAndReplayed()
{
    // The stand-in plug-in shows messages of its own ("fakeNoCard"…): the checks must find them.
    const SessionRunner runner(QStringLiteral(TILL_FAKE_PLUGIN_DIR));
    const SessionGenerator generator({0.0, 0.0});
    std::optional<SessionOutcome> failed;
    for (quint64 seed = 1; seed < 40 && !failed; ++seed) {
        const SessionOutcome outcome = runner.run(generator.generate(seed));
        if (outcome.failed())
            failed = outcome;
    }
    QVERIFY(failed);
    const QString invariant = failed->violations.first().invariant;
    QCOMPARE(invariant, QStringLiteral("known-messages"));
    QVERIFY(failed->played.scripted);

    // The session as played replays to the same failure.
    QCOMPARE(runner.run(failed->played).violations.first().detail, failed->violations.first().detail);

    SessionShrinker shrinker(
        [&runner, &invariant](const SimulatedSession &candidate) {
            const SessionOutcome outcome = runner.run(candidate);
            return outcome.failed() && outcome.violations.first().invariant == invariant;
        },
        100);
    const SimulatedSession shrunk = shrinker.shrink(failed->played);
    QVERIFY(shrunk.scenario.actions.size() <= failed->played.scenario.actions.size());
    QVERIFY(shrunk.scenario.actions.size() <= 3);

    QTemporaryDir dir;
    QString error;
    const QString file = SessionFile::write(shrunk, dir.path(), QStringLiteral("shrunk"), QString(), &error);
    QVERIFY2(!file.isEmpty(), qPrintable(error));
    const std::optional<SimulatedSession> read = SessionFile::load(file, &error);
    QVERIFY2(read, qPrintable(error));
    const SessionOutcome again = runner.run(*read);
    QVERIFY(again.failed());
    QCOMPARE(again.violations.first().invariant, invariant);
}

namespace {

/// Plays the session of \a name (in the test data) with \a faults added, in a
/// till process killed at \a kill, held at the advice note \a killRequest
/// counts; empty when it never came to that point. The violations are
/// printed, for a failing test to show.
std::optional<SessionOutcome> playKilled(const QString &name, KilledTillRun::Kill kill, int killRequest,
                                         const QList<SessionFault> &faults = {})
{
    QString error;
    std::optional<SimulatedSession> session = SessionFile::load(QStringLiteral(TILL_SIMULATION_DIR "/") + name, &error);
    if (!session) {
        qWarning("%s", qPrintable(error));
        return std::nullopt;
    }
    session->killChild = true;
    session->killRequest = killRequest;
    session->faults << faults;
    SessionOutcome outcome;
    outcome.requests = 1;
    if (!KilledTillRun(QStringLiteral(TILL_EXECUTABLE), QStringLiteral(TILL_PLUGIN_DIR)).run(*session, kill, &outcome))
        return std::nullopt;
    for (const InvariantChecker::Violation &violation : std::as_const(outcome.violations))
        qWarning("%s: %s", qPrintable(violation.invariant), qPrintable(violation.detail));
    return outcome;
}

} // namespace

// The service answers the first advice note that its shift is closed, so the
// till opens the shift and sends the note again, and the service holds that
// second note. The kill belongs there, inside the close hook: killed earlier,
// between the opening's answer and its record, the till cannot keep the record
// of an opening the service made. The slow opening keeps the till from the
// held note for 300 ms, so a kill that does not wait for it comes early every
// time.
void TestSimulation::killWaitsForTheHeldAdviceNote()
{
    const std::optional<SessionOutcome> outcome =
        playKilled(QStringLiteral("till-opened-before-the-held-advice-note.json"), KilledTillRun::Kill::HeldAdviceNote, 0,
                   {SessionFault{QStringLiteral("/till/open"), 0, SessionFault::Kind::Delay, 300, 0, {}}});
    QVERIFY(outcome);
    QCOMPARE(outcome->kills, 1);
    QVERIFY(outcome->violations.isEmpty());
}

void TestSimulation::killedTillCountsEachReturnsNote_data()
{
    QTest::addColumn<KilledTillRun::Kill>("kill");
    QTest::addColumn<int>("heldNote");
    QTest::newRow("held first note") << KilledTillRun::Kill::HeldAdviceNote << 0;
    QTest::newRow("held second note") << KilledTillRun::Kill::HeldAdviceNote << 1;
    QTest::newRow("after the close hook") << KilledTillRun::Kill::AfterCloseHook << 0;
}

// Two returns of the same sale without goods send the service the same advice
// note body, once each: two applications of one body are two returns, not
// one return applied twice, whichever of them the kill cut off.
void TestSimulation::killedTillCountsEachReturnsNote()
{
    QFETCH(KilledTillRun::Kill, kill);
    QFETCH(int, heldNote);
    const std::optional<SessionOutcome> outcome = playKilled(QStringLiteral("two-returns-with-the-same-advice-note.json"), kill, heldNote);
    QVERIFY(outcome);
    QCOMPARE(outcome->kills, 1);
    QVERIFY(outcome->violations.isEmpty());
}

// The service's first answer to the advice note says its shift is closed, and
// its answer to the till opening says the shift is already opened: the
// plug-in takes that as the till open and keeps the shift record. Whether the
// till was opened is read from the answer's status text, as the plug-in reads
// it, not from the HTTP status or from whether a fault made the answer.
void TestSimulation::killedTillTakesTheShiftAlreadyOpenedAsOpened()
{
    const std::optional<SessionOutcome> outcome =
        playKilled(QStringLiteral("two-returns-with-the-same-advice-note.json"), KilledTillRun::Kill::AfterCloseHook, 0,
                   {SessionFault{QStringLiteral("/advicenote"), 0, SessionFault::Kind::ShiftClosed, 0, 0, {}},
                    SessionFault{QStringLiteral("/till/open"), 0, SessionFault::Kind::HttpStatus, 0, 409,
                                 R"({"status": "The shift is already opened"})"}});
    QVERIFY(outcome);
    QCOMPARE(outcome->kills, 1);
    QVERIFY(outcome->violations.isEmpty());
}

QTEST_GUILESS_MAIN(TestSimulation)
#include "tst_simulation.moc"
