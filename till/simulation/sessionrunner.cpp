#include "sessionrunner.h"

#include "actionlog.h"
#include "actionplayer.h"
#include "cashierscript.h"
#include "emulatedtill.h"
#include "emulatedtillconstants.h"
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

#include <QElapsedTimer>

namespace till {

SessionRunner::SessionRunner(const QString &pluginFolder, const QString &program)
    : m_pluginFolder(pluginFolder)
    , m_program(program)
{
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
        settings.appKey = emulated::appKey;
        settings.appSecret = emulated::appSecret;
        break;
    }
    settings.tills << EmulatedTill::serviceTill(session.serviceShiftOpen);
    return settings;
}

SessionOutcome SessionRunner::run(const SimulatedSession &session) const
{
    SessionOutcome outcome;
    outcome.seed = session.seed;
    outcome.played = session;
    const int timeoutMs = session.timeoutSeconds * 1000;

    EmulatedTill service(emulatorSettings(session), EmulatedTill::workFolder() + QStringLiteral("/tessaro-simulate-XXXXXX"));
    tessaro::emulator::Emulator &emulator = service.emulator();
    emulator.clock().setNow(SessionGenerator::epoch());
    InvariantChecker checker(&emulator, timeoutMs, EmulatedTill::secrets());
    QString error;
    if (!service.start(&error, EmulatedTill::CurrencyTables::Removed)) {
        checker.addViolation(QStringLiteral("setup"), QStringLiteral("the session could not be set up: %1").arg(error));
        outcome.violations = checker.violations();
        return outcome;
    }
    const TillDataFolder &folder = service.folder();

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
