#pragma once

#include "simulatedsession.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace till {

/// A simulated session in the till's scenario format (docs/scenarios.md):
/// the scenario file, and beside it, in emulator/ under the same name, the
/// emulator's settings with the session's faults, as the bundled scenarios
/// keep theirs. A session read back replays exactly as it ran. The service
/// unreachable is written as a reset, which the plug-in meets the same way.
class SessionFile
{
public:
    static QJsonObject scenarioJson(const SimulatedSession &session, const QString &description);
    static QJsonObject emulatorJson(const SimulatedSession &session);

    /// Writes \a folder/NAME.json and \a folder/emulator/NAME.json; returns the
    /// scenario file's path, empty on failure (\a error says why).
    static QString write(const SimulatedSession &session, const QString &folder, const QString &name, const QString &description,
                         QString *error);
    /// Reads the session of \a scenarioFile and of the emulator settings of the same name in emulator/ beside it.
    static std::optional<SimulatedSession> load(const QString &scenarioFile, QString *error);
    /// Reads a session from its scenario and emulator settings.
    static std::optional<SimulatedSession> read(const QByteArray &scenario, const QByteArray &emulator, const QString &name,
                                                QString *error);
};

} // namespace till
