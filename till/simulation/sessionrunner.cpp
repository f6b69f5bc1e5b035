#include "sessionrunner.h"

#include "actionlog.h"
#include "actionplayer.h"
#include "cashierscript.h"
#include "faultinjectingrestclient.h"
#include "faultplanner.h"
#include "invariantchecker.h"
#include "killedtillrun.h"
#include "logwatch.h"
#include "randomcashier.h"
#include "recordingcashier.h"
#include "sessiongenerator.h"
#include "simulatedclock.h"
#include "till.h"
#include "tillactions.h"
#include "tilldatafolder.h"

#include <emulator/emulator.h>
#include <mockfactory.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

namespace till {

namespace {

constexpr int storeNo = 7;
constexpr int tillNo = 12;

} // namespace

SessionRunner::SessionRunner(const QString &pluginFolder, const QString &program)
    : m_pluginFolder(pluginFolder)
    , m_program(program)
{
}

bool SessionRunner::prepareFolder(const TillDataFolder &folder, const QUrl &service, const QUrl &token, QString *error)
{
    if (!folder.create(service.toString(), token.toString(), error))
        return false;
    // The simulated till starts without currency tables: the session's settings bring its own.
    QSettings ini(folder.configFile(), QSettings::IniFormat);
    ini.remove(QStringLiteral("Tessaro.ForbiddenMixedValuts"));
    ini.remove(QStringLiteral("TessaroBack.AdditionalBackBySaleValuts"));
    ini.sync();
    return ini.status() == QSettings::NoError;
}

QString SessionRunner::workFolder()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    return memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
}

tessaro::emulator::EmulatorSettings SessionRunner::emulatorSettings(const SimulatedSession &session)
{
    using tessaro::emulator::EmulatorSettings;
    EmulatorSettings settings;
    switch (session.auth) {
    case SimulatedSession::Auth::None:
        settings.authMode = EmulatorSettings::AuthMode::None;
        break;
    case SimulatedSession::Auth::Token:
        settings.authMode = EmulatorSettings::AuthMode::Token;
        break;
    case SimulatedSession::Auth::Gateway:
        settings.authMode = EmulatorSettings::AuthMode::Gateway;
        settings.appKey = QStringLiteral("gate-key");
        settings.appSecret = QStringLiteral("gate-secret");
        break;
    }
    EmulatorSettings::Till till;
    till.storeNo = storeNo;
    till.tillNo = tillNo;
    till.shiftOpen = session.serviceShiftOpen;
    settings.tills << till;
    return settings;
}

QStringList SessionRunner::secrets()
{
    // The client's credentials as the data folder configures them, and the gateway's secret.
    return {QStringLiteral("dGlsbDpzZWNyZXQ="), QStringLiteral("gate-secret")};
}

SessionOutcome SessionRunner::run(const SimulatedSession &session) const
{
    SessionOutcome outcome;
    outcome.seed = session.seed;
    outcome.played = session;
    const int timeoutMs = session.timeoutSeconds * 1000;

    tessaro::emulator::Emulator emulator(emulatorSettings(session));
    emulator.clock().setNow(SessionGenerator::epoch());
    InvariantChecker checker(&emulator, timeoutMs, secrets());
    QTemporaryDir dir(workFolder() + QStringLiteral("/tessaro-simulate-XXXXXX"));
    const TillDataFolder folder(dir.filePath(QStringLiteral("till")));
    QString error;
    if (emulator.startInThread(0) == 0 || !prepareFolder(folder, emulator.baseUrl(), emulator.tokenUrl(), &error)) {
        checker.addViolation(QStringLiteral("setup"), QStringLiteral("the session could not be set up: %1").arg(error));
        outcome.violations = checker.violations();
        return outcome;
    }

    RandomCashier drawn(SessionGenerator::sessionSeed(session.seed, 1));
    CashierScript script(session.scenario.answers);
    RecordingCashier cashier(session.scripted ? static_cast<Cashier *>(&script) : &drawn);
    FaultPlanner planner = session.scripted ? FaultPlanner(session.faults)
                                            : FaultPlanner(SessionGenerator::sessionSeed(session.seed, 2), session.faultRate, timeoutMs);
    LogWatch logs;
    ActionLog log;
    Till till(folder, &cashier, &log);
    // Every save the plug-in makes itself is then needed, and a restart shows it.
    till.setStrictHost(true);
    till.setHostInstaller([&log, &planner, &emulator] {
        MockFactory<CurrentTime>::setInstance(QSharedPointer<SimulatedClock>::create());
        MockFactory<RestClient>::setCreator(
            [&log, &planner, &emulator] { return QSharedPointer<RestClient>(new FaultInjectingRestClient(&log, &planner, &emulator)); });
    });
    log.begin(-1, QStringLiteral("start"), QStringLiteral("the till starts"));
    const bool started = till.start(m_pluginFolder, session.scenario.till, &error);
    log.finish();
    if (!started) {
        checker.addViolation(QStringLiteral("setup"), QStringLiteral("the till did not start: %1").arg(error));
        outcome.violations = checker.violations();
        return outcome;
    }
    logs.take();

    TillActions actions(&till, &log);
    ActionPlayer player(session.scenario, 0, &till, &actions, &log);
    for (int i = 0; i < session.scenario.actions.size(); ++i) {
        const ScenarioAction &action = session.scenario.actions.at(i);
        checker.beforeStep(&till);
        QElapsedTimer timer;
        timer.start();
        const ActionPlayer::Played played = player.play(action, i);
        const qint64 elapsed = timer.elapsed();
        if (!played.exception.isEmpty())
            checker.addViolation(QStringLiteral("no-exception-to-host"), QStringLiteral("%1: %2").arg(played.record.title, played.exception));
        ++outcome.steps;
        if (action.type == ScenarioAction::Restart) {
            ++outcome.kills;
            checker.afterRestart(played.restarted, played.restartError, folder.documentsDir());
            if (!played.restarted)
                break;
        }
        checker.afterStep(action, played.record, &till, elapsed, logs.take());
    }
    emulator.releaseHeldConnections();
    checker.atEnd();

    const QList<SessionFault> struck = planner.struck();
    int unreachable = 0;
    for (const SessionFault &fault : struck) {
        ++outcome.faults[fault.kindName()];
        unreachable += fault.unreachable ? 1 : 0;
    }
    outcome.requests = emulator.journal().size() + unreachable;
    outcome.invariantsChecked = checker.checked();
    outcome.lostAnswers = checker.lostAnswers();
    outcome.violations = checker.violations();
    outcome.played.scripted = true;
    outcome.played.scenario.answers = cashier.answers();
    outcome.played.faults = struck;
    if (session.killChild && !m_program.isEmpty()) {
        const KilledTillRun killed(m_program, m_pluginFolder);
        killed.run(outcome.played, KilledTillRun::Kill::HeldAdviceNote, &outcome);
        killed.run(outcome.played, KilledTillRun::Kill::AfterCloseHook, &outcome);
    }
    return outcome;
}

} // namespace till
