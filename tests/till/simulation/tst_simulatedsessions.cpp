#include "sessionfile.h"
#include "sessiongenerator.h"
#include "sessionrunner.h"

#include <QDir>
#include <QTest>

using namespace till;

/// Simulated sessions with the real plug-in against the emulator: drawn
/// sessions with faults and restarts hold every invariant, a session replays
/// exactly as it was played, and every regression session found by the
/// simulation (tests/data/simulation) holds every invariant.
class TestSimulatedSessions : public QObject
{
    Q_OBJECT

private slots:
    void drawnSessionHolds_data();
    void drawnSessionHolds();
    void playedSessionReplaysExactly();
    void regressionSessionHolds_data();
    void regressionSessionHolds();
    void lostAnswerIsCounted();
};

namespace {

QString violations(const SessionOutcome &outcome)
{
    QStringList lines;
    for (const InvariantChecker::Violation &violation : outcome.violations)
        lines << violation.invariant + QStringLiteral(": ") + violation.detail;
    return lines.join(QLatin1Char('\n'));
}

} // namespace

void TestSimulatedSessions::drawnSessionHolds_data()
{
    QTest::addColumn<quint64>("seed");
    for (quint64 index = 0; index < 24; ++index)
        QTest::newRow(qPrintable(QStringLiteral("session %1").arg(index))) << SessionGenerator::sessionSeed(20240301, index);
}

void TestSimulatedSessions::drawnSessionHolds()
{
    QFETCH(quint64, seed);
    const SessionOutcome outcome = SessionRunner(QStringLiteral(TILL_PLUGIN_DIR)).run(SessionGenerator({0.3, 0.2}).generate(seed));
    QVERIFY2(!outcome.failed(), qPrintable(violations(outcome)));
    QVERIFY(outcome.steps > 0);
    QVERIFY(outcome.invariantsChecked > outcome.steps);
}

void TestSimulatedSessions::playedSessionReplaysExactly()
{
    const SessionRunner runner(QStringLiteral(TILL_PLUGIN_DIR));
    const SessionGenerator generator({0.5, 0.3});
    int faults = 0;
    for (quint64 index = 0; index < 8; ++index) {
        const SessionOutcome drawn = runner.run(generator.generate(SessionGenerator::sessionSeed(99, index)));
        const SessionOutcome replayed = runner.run(drawn.played);
        QCOMPARE(replayed.steps, drawn.steps);
        QCOMPARE(replayed.requests, drawn.requests);
        QCOMPARE(replayed.faults, drawn.faults);
        QCOMPARE(replayed.lostAnswers, drawn.lostAnswers);
        QCOMPARE(replayed.played.scenario.answers.size(), drawn.played.scenario.answers.size());
        faults += int(drawn.played.faults.size());
    }
    QVERIFY(faults > 0);
}

void TestSimulatedSessions::regressionSessionHolds_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(QStringLiteral(TILL_SIMULATION_DIR));
    const QStringList files = folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    QVERIFY(!files.isEmpty());
    for (const QString &file : files)
        QTest::newRow(qPrintable(file)) << folder.filePath(file);
}

void TestSimulatedSessions::regressionSessionHolds()
{
    QFETCH(QString, file);
    QString error;
    const std::optional<SimulatedSession> session = SessionFile::load(file, &error);
    QVERIFY2(session, qPrintable(error));
    const SessionOutcome outcome = SessionRunner(QStringLiteral(TILL_PLUGIN_DIR)).run(*session);
    QVERIFY2(!outcome.failed(), qPrintable(violations(outcome)));
}

void TestSimulatedSessions::lostAnswerIsCounted()
{
    // The first advice note is applied and its answer lost: sending it again is the protocol's blind spot, counted.
    QString error;
    const std::optional<SimulatedSession> session =
        SessionFile::load(QStringLiteral(TILL_SIMULATION_DIR "/lost-advice-note-answer.json"), &error);
    QVERIFY2(session, qPrintable(error));
    const SessionOutcome outcome = SessionRunner(QStringLiteral(TILL_PLUGIN_DIR)).run(*session);
    QVERIFY2(!outcome.failed(), qPrintable(violations(outcome)));
    QCOMPARE(outcome.lostAnswers, 1);
    QCOMPARE(outcome.faults.value(QStringLiteral("close-after-apply")), 1);
}

QTEST_GUILESS_MAIN(TestSimulatedSessions)
#include "tst_simulatedsessions.moc"
