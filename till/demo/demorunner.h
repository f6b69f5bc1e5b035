#pragma once

#include "exitcode.h"
#include "report.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

class QTextStream;

namespace till {

class CassetteRecorder;

/// Plays the bundled scenarios against the Tessaro service emulator, which
/// runs in the process on a free loopback port: one fresh emulator and one
/// fresh till per scenario, a progress line per step, and a closing summary.
class DemoRunner
{
public:
    /// One scenario to play: its file content, and the emulator's settings for it (JSON, may be empty).
    struct Play
    {
        QString name;
        QByteArray scenario;
        QByteArray emulatorSettings;
    };

    /// The scenarios bundled with the till, in the order of their file names.
    static QList<Play> bundled();

    /// Plays \a play in a new till in \a folder against a new emulator. The
    /// till restarts within the process, since the emulator lives in it. The
    /// emulator's journal is compared with the requests the till recorded.
    /// \a recorder, when given, keeps the exchanges with the emulator.
    static bool play(const Play &play, const QString &folder, const QString &pluginFolder, Report *report, QString *error,
                     const std::function<void(const ActionRecord &, int)> &onRecord = {}, CassetteRecorder *recorder = nullptr);

    explicit DemoRunner(QTextStream *out);

    /// Plays every bundled scenario; \a keepFolder keeps the tills there
    /// (one folder per scenario) instead of in a temporary folder. Passes when
    /// every scenario passed; cannot run when a scenario could not be played
    /// (no plug-in, a till or cassette that cannot be written).
    ExitCode run(const QString &pluginFolder, const QString &keepFolder);
    /// Records each scenario's exchanges in \a folder/<scenario>.json; empty: none.
    void setCassetteFolder(const QString &folder) { m_cassetteFolder = folder; }

private:
    QTextStream *m_out;
    QString m_cassetteFolder;
};

} // namespace till
