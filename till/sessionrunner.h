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
    explicit SessionRunner(const QString &pluginFolder);

    SessionOutcome run(const SimulatedSession &session) const;

    /// The emulator's settings for \a session: its authentication, the
    /// till's shift, and the gateway's key and secret.
    static tessaro::emulator::EmulatorSettings emulatorSettings(const SimulatedSession &session);
    /// The values no log line may show.
    static QStringList secrets();

private:
    QString m_pluginFolder;
};

} // namespace till
