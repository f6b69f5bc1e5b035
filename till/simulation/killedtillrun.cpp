#include "killedtillrun.h"

#include "emulatedtill.h"
#include "exitcode.h"
#include "invariantchecker.h"
#include "jsonfile.h"
#include "sessionfile.h"
#include "sessiongenerator.h"

#include <control/eactiontype.h>
#include <emulator/journal.h>
#include <emulator/journalentry.h>

#include <QDeadlineTimer>
#include <QProcess>

#include <algorithm>

namespace till {

namespace {

constexpr int childMs = 120000;

// Whether the service holds one of the till's advice notes without an answer.
bool holdsAdviceNote(const tessaro::emulator::Journal &journal)
{
    const QList<tessaro::emulator::JournalEntry> notes = journal.entriesFor(QStringLiteral("/advicenote"));
    return std::any_of(notes.cbegin(), notes.cend(), [](const tessaro::emulator::JournalEntry &entry) {
        return entry.outcome == tessaro::emulator::JournalEntry::Outcome::Hung;
    });
}

// Kills \a till once the service holds one of its advice notes; whether it was held there.
bool killWhileHeld(QProcess *till, const tessaro::emulator::Journal &journal)
{
    // waitForFinished() also notices the child's end, which state() alone does not without an event loop.
    const QDeadlineTimer deadline(childMs);
    bool ended = false;
    // Other faults on "/advicenote" (a closed shift) may come before the
    // hang and move it to a later note, so the kill waits for the hold itself.
    while (!ended && !holdsAdviceNote(journal) && !deadline.hasExpired())
        ended = till->waitForFinished(5);
    const bool held = !ended && holdsAdviceNote(journal);
    till->kill();
    till->waitForFinished(childMs);
    return held;
}

// Waits for \a till, which kills itself after the close hook; whether it did.
bool diedAfterHook(QProcess *till)
{
    if (!till->waitForFinished(childMs)) {
        till->kill();
        till->waitForFinished(childMs);
        return false;
    }
    return till->exitStatus() == QProcess::CrashExit;
}

} // namespace

KilledTillRun::KilledTillRun(const QString &program, const QString &pluginFolder)
    : m_program(program)
    , m_pluginFolder(pluginFolder)
{
}

bool KilledTillRun::run(const SimulatedSession &played, Kill kill, SessionOutcome *outcome) const
{
    if (outcome->requests == 0)
        return false;
    SimulatedSession killed = played;
    // The in-process play had the restarts; the child's only stop is the kill, and each restart would cost it a new process.
    killed.scenario.actions.removeIf([](const ScenarioAction &action) { return action.type == ScenarioAction::Restart; });
    // Held at the service: the till waits inside its close hook when it dies.
    if (kill == Kill::HeldAdviceNote)
        killed.faults << SessionFault{QStringLiteral("/advicenote"), killed.killRequest, SessionFault::Kind::Hang, 0, 0, {}};
    QString error;
    const std::optional<tessaro::emulator::EmulatorSettings> settings =
        tessaro::emulator::EmulatorSettings::fromJson(SessionFile::emulatorJson(killed), &error);
    if (!settings)
        return false;
    EmulatedTill service(*settings, EmulatedTill::workFolder() + QStringLiteral("/tessaro-killed-XXXXXX"));
    service.emulator().clock().setNow(SessionGenerator::epoch());
    InvariantChecker checker(&service.emulator());
    const bool killedThere = play(killed, kill, &service, &checker, outcome);
    for (const InvariantChecker::Violation &violation : checker.violations())
        outcome->violations << InvariantChecker::Violation{violation.invariant, QStringLiteral("killed till: ") + violation.detail};
    outcome->invariantsChecked += checker.checked();
    outcome->lostAnswers += checker.lostAnswers();
    return killedThere;
}

bool KilledTillRun::play(const SimulatedSession &killed, Kill kill, EmulatedTill *service, InvariantChecker *checker,
                         SessionOutcome *outcome) const
{
    tessaro::emulator::Emulator &emulator = service->emulator();
    QString error;
    const bool started = service->start(&error, EmulatedTill::CurrencyTables::Removed);
    const QString scenarioFile = service->filePath(QStringLiteral("session.json"));
    const QString reportFile = service->filePath(QStringLiteral("report.json"));
    if (!started || !JsonFile::write(scenarioFile, SessionFile::scenarioJson(killed, QString()), &error)) {
        checker->addViolation(QStringLiteral("setup"), error);
        return true;
    }
    const TillDataFolder &folder = service->folder();
    const QStringList arguments{QStringLiteral("run"), QStringLiteral("--strict-host"), QStringLiteral("--data"), folder.path(),
                                QStringLiteral("--plugins"), m_pluginFolder, QStringLiteral("--report"), reportFile, scenarioFile};

    QProcess till;
    till.start(m_program, kill == Kill::AfterCloseHook
                              ? arguments + QStringList{QStringLiteral("--kill-after-hook"), QString::number(control::AttemptToDocumentClose)}
                              : arguments);
    if (!till.waitForStarted(childMs))
        return false;
    // Everything below judges a till killed at the planned point; killed
    // anywhere else it may rightly have lost what it was doing.
    const bool killedThere = kill == Kill::HeldAdviceNote ? killWhileHeld(&till, emulator.journal()) : diedAfterHook(&till);
    emulator.releaseHeldConnections();
    if (!killedThere)
        return false;
    ++outcome->kills;
    checker->afterKill(folder.documentsDir());

    // Finished is done, passed or failed: after a kill an expectation may rightly fail.
    QProcess again;
    again.start(m_program, arguments);
    const bool finished = again.waitForFinished(childMs);
    if (!finished || again.exitStatus() != QProcess::NormalExit || again.exitCode() > exitStatus(ExitCode::Failed)) {
        checker->addViolation(QStringLiteral("no-crash"),
                              QStringLiteral("the till did not finish the session after the kill (exit code %1): %2")
                                  .arg(again.exitCode())
                                  .arg(QString::fromUtf8(again.readAllStandardError().right(500))));
        return true;
    }
    QJsonObject report;
    if (!JsonFile::read(reportFile, &report, &error)) {
        checker->addViolation(QStringLiteral("setup"), error);
        return true;
    }
    checker->afterKilledRun(report.value(QStringLiteral("documents")).toObject(), folder.databaseFile());
    outcome->requests += emulator.journal().size();
    if (kill == Kill::HeldAdviceNote)
        outcome->faults[QStringLiteral("hang")] += 1;
    return true;
}

} // namespace till
