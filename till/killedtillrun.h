#pragma once

#include "sessionoutcome.h"
#include "simulatedsession.h"

#include <QString>

namespace till {

/// Plays a session as a till process of its own (tessaro-till run) against
/// the emulator in this process, kills it with SIGKILL while the service
/// holds one of its advice notes (the till is inside its close hook then),
/// and runs the same command again, which starts the till from its data
/// folder and finishes the session. Checked: every document file loads after
/// the kill, the finished run's returns hold the invoice numbers the service
/// gave, no advice note was applied twice except after a lost answer, and
/// the shift record "tillOpen" is there exactly when a till opening succeeded.
class KilledTillRun
{
public:
    KilledTillRun(const QString &program, const QString &pluginFolder);

    /// \a played is a session as it ran in process (answers and faults written
    /// down); its counters and violations are added to \a outcome. False when
    /// the session never reached the service, so there was nothing to kill in.
    bool run(const SimulatedSession &played, SessionOutcome *outcome) const;

private:
    QString m_program;
    QString m_pluginFolder;
};

} // namespace till
