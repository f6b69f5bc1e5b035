#include "killedtillrun.h"

#include "emulatedtill.h"
#include "exitcode.h"
#include "jsonfile.h"
#include "report.h"
#include "sessionfile.h"
#include "sessiongenerator.h"
#include "tilldatafolder.h"

#include <control/eactiontype.h>
#include <documentsdao.h>
#include <documentserializer.h>
#include <emulator/emulator.h>
#include <emulator/journal.h>
#include <emulator/journalentry.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

#include <algorithm>

namespace till {

namespace {

constexpr int childMs = 120000;

void violate(SessionOutcome *outcome, const QString &invariant, const QString &detail)
{
    outcome->violations << InvariantChecker::Violation{invariant, QStringLiteral("killed till: ") + detail};
}

int count(SessionOutcome *outcome, bool holds, const QString &invariant, const QString &detail)
{
    ++outcome->invariantsChecked;
    if (!holds)
        violate(outcome, invariant, detail);
    return holds ? 1 : 0;
}

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
    tessaro::emulator::Emulator &emulator = service.emulator();
    emulator.clock().setNow(SessionGenerator::epoch());
    const bool started = service.start(&error, EmulatedTill::CurrencyTables::Removed);
    const QString scenarioFile = service.filePath(QStringLiteral("session.json"));
    const QString reportFile = service.filePath(QStringLiteral("report.json"));
    if (!started || !JsonFile::write(scenarioFile, SessionFile::scenarioJson(killed, QString()), &error)) {
        violate(outcome, QStringLiteral("setup"), error);
        return true;
    }
    const TillDataFolder &folder = service.folder();
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

    const QDir documents(folder.documentsDir());
    for (const QString &name : documents.entryList({QStringLiteral("*.json")}, QDir::Files)) {
        QJsonObject json;
        count(outcome, JsonFile::read(documents.filePath(name), &json, &error) && DocumentSerializer::fromJson(json),
              QStringLiteral("documents-load-after-kill"), QStringLiteral("the document file %1 does not load").arg(name));
    }

    // Finished is done, passed or failed: after a kill an expectation may rightly fail.
    QProcess again;
    again.start(m_program, arguments);
    const bool finished = again.waitForFinished(childMs);
    if (!finished || again.exitStatus() != QProcess::NormalExit || again.exitCode() > exitStatus(ExitCode::Failed)) {
        violate(outcome, QStringLiteral("no-crash"),
                QStringLiteral("the till did not finish the session after the kill (exit code %1): %2")
                    .arg(again.exitCode())
                    .arg(QString::fromUtf8(again.readAllStandardError().right(500))));
        return true;
    }
    QJsonObject report;
    if (!JsonFile::read(reportFile, &report, &error)) {
        violate(outcome, QStringLiteral("setup"), error);
        return true;
    }

    // Read from the journal: the killed run's records did not survive it.
    QHash<QString, int> lost;
    bool tillOpened = false;
    for (const tessaro::emulator::JournalEntry &entry : emulator.journal().entries()) {
        const bool broken = entry.fault == QLatin1String("truncated-json") || entry.fault == QLatin1String("malformed-json")
            || entry.fault == QLatin1String("empty-body");
        // An answer the till got whole; any other may have been applied without the till knowing.
        const bool answered = entry.outcome == tessaro::emulator::JournalEntry::Outcome::Answered && !broken;
        const bool genuine = entry.fault.isEmpty() || entry.fault == QLatin1String("delay");
        if (entry.exchange.path.endsWith(QLatin1String("/till/open")))
            tillOpened = tillOpened || (answered && genuine && (entry.status == 200 || entry.status == 409));
        if (entry.exchange.path.endsWith(QLatin1String("/advicenote")) && !answered)
            ++lost[QString::fromUtf8(QJsonDocument(entry.exchange.jsonObject()).toJson(QJsonDocument::Compact))];
    }
    const QJsonObject states = report.value(QStringLiteral("documents")).toObject();
    QSet<QString> held;
    for (const QJsonValue &state : states)
        held.insert(state.toObject().value(QStringLiteral("pluginData")).toObject().value(QStringLiteral("invoiceIDRaw")).toString());
    // Returns with the same contents send the same body, each once: every
    // document that holds the answer to one of a body's applications had that
    // application of its own. Beyond them a body is applied once, plus once
    // for each answer the till never got.
    QHash<QString, int> applications;
    QHash<QString, int> holders;
    QSet<QString> keys;
    for (const auto &note : emulator.state().adviceNotes.notes()) {
        const QString body = QString::fromUtf8(QJsonDocument(note.body).toJson(QJsonDocument::Compact));
        ++applications[body];
        if (held.contains(note.key4))
            ++holders[body];
        keys.insert(note.key4);
    }
    for (auto it = applications.cbegin(); it != applications.cend(); ++it) {
        // The request the kill cut off was held, not applied, and is not in the finished run's records.
        const int owned = qMax(1, holders.value(it.key()));
        count(outcome, it.value() <= owned + lost.value(it.key()), QStringLiteral("advice-note-applied-once"),
              QStringLiteral("an advice note was applied %1 times for %2 return(s) with %3 lost answer(s)")
                  .arg(it.value())
                  .arg(owned)
                  .arg(lost.value(it.key())));
        outcome->lostAnswers += qMax(0, it.value() - owned);
    }

    for (auto it = states.constBegin(); it != states.constEnd(); ++it) {
        const QJsonObject state = it.value().toObject();
        const QJsonObject data = state.value(QStringLiteral("pluginData")).toObject();
        const QString raw = data.value(QStringLiteral("invoiceIDRaw")).toString();
        if (raw.isEmpty())
            continue;
        QString plain = raw;
        plain.remove(QLatin1Char('/'));
        count(outcome, keys.contains(raw) && data.value(QStringLiteral("invoiceID")).toString() == plain,
              QStringLiteral("close-stores-invoice"), QStringLiteral("%1 holds the invoice %2, which the service never gave").arg(it.key(), raw));
    }

    bool present = false;
    for (const StorageItem &item : DocumentsDao(folder.databaseFile()).getStorageItems(1))
        present = present || item.getName() == QLatin1String("tillOpen");
    count(outcome, present == tillOpened, QStringLiteral("till-open-record"),
          QStringLiteral("the shift record \"tillOpen\" is %1 although the till was %2 at the service")
              .arg(present ? QStringLiteral("there") : QStringLiteral("missing"), tillOpened ? QStringLiteral("opened") : QStringLiteral("never opened")));
    outcome->requests += emulator.journal().size();
    if (kill == Kill::HeldAdviceNote)
        outcome->faults[QStringLiteral("hang")] += 1;
    return true;
}

} // namespace till
