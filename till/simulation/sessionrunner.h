#pragma once

#include "sessionoutcome.h"
#include "simulatedsession.h"

#include <emulator/emulatorsettings.h>

#include <QString>

namespace till {

/// Plays one simulated session in this process: a new emulator on a free
/// loopback port, a new till in a temporary data folder with the real
/// plug-in, each action through the till's action pipeline, restarts within
/// the process, faults armed request by request, and every invariant checked
/// after every step.
class SessionRunner
{
public:
    /// \a program is tessaro-till itself, for the sessions played in a child
    /// process that is killed; without it those are played in this process only.
    explicit SessionRunner(const QString &pluginFolder, const QString &program = QString());

    SessionOutcome run(const SimulatedSession &session) const;

    /// The emulator's settings for \a session: its authentication, the
    /// till's shift, and the gateway's key and secret.
    static tessaro::emulator::EmulatorSettings emulatorSettings(const SimulatedSession &session);

private:
    QString m_pluginFolder;
    QString m_program;
};

} // namespace till
