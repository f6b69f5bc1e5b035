#pragma once

#include "sessionoutcome.h"
#include "simulatedsession.h"

#include <QString>

namespace till {

class EmulatedTill;

/// Plays a session as a till process of its own (tessaro-till run, with the
/// strict host) against the emulator in this process, kills it with SIGKILL,
/// and runs the same command again, which starts the till from its data
/// folder and finishes the session. The kill comes either while the service
/// holds one of its advice notes (the till is inside its close hook then), or
/// right after the close hook let the close go on and before the host saved
/// anything, so that only the plug-in's own saves are on disk. The invariant
/// checker judges what the kill left on disk and what the finished run left
/// there and at the service.
class KilledTillRun
{
public:
    enum class Kill { HeldAdviceNote, AfterCloseHook };

    KilledTillRun(const QString &program, const QString &pluginFolder);

    /// \a played is a session as it ran in process (answers and faults written
    /// down); its counters and violations are added to \a outcome. False when
    /// the session never reached the service, or the till never came to the
    /// point of \a kill, so there was nothing to kill in.
    bool run(const SimulatedSession &played, Kill kill, SessionOutcome *outcome) const;

private:
    /// Runs the till processes of \a killed against \a service and hands \a checker what they left.
    bool play(const SimulatedSession &killed, Kill kill, EmulatedTill *service, InvariantChecker *checker, SessionOutcome *outcome) const;

    QString m_program;
    QString m_pluginFolder;
};

} // namespace till
