#pragma once

#include "exitcode.h"
#include "sessiongenerator.h"
#include "simulationreport.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QTextStream;

namespace till {

struct SessionOutcome;

/// tessaro-till simulate: plays seeded random sessions against the
/// emulator with faults and kills, checks every invariant after every step,
/// and reports. The sessions run in worker processes (the plug-in is one
/// per process, and a crash must not take the run with it); each worker
/// takes every jobs-th session. A failing session is shrunk and written as
/// a scenario, with the one command that replays it.
class SimulationCommand
{
public:
    struct Options
    {
        quint64 seed = 0;
        /// Unset: as many as fit in seconds (or 100 without seconds).
        std::optional<int> sessions;
        std::optional<int> seconds;
        int jobs = 2;
        SessionGenerator::Rates rates;
        QString pluginFolder;
        bool json = false;
        /// Where failing sessions' scenarios are written.
        QString outFolder;
        /// This program, for the workers and the replay commands.
        QString program;
    };

    SimulationCommand(const Options &options, QTextStream *out, QTextStream *err);

    /// The most worker processes a run may start: four per processor core.
    /// Each worker is a till with the plug-in and its own emulator; beyond
    /// that they only wait for the processor and fill the memory, and a slip
    /// of the finger (--jobs 1000) must not start a thousand processes.
    static int mostJobs();

    /// Plays the session of a seed at a fault rate.
    using Player = std::function<SessionOutcome(quint64 seed, double faultRate)>;
    /// Makes this process's workers and replays play \a player's sessions
    /// (the client's cart sessions) instead of till sessions; those are not shrunk.
    static void setPlayer(const Player &player);

    /// Runs the simulation in worker processes; passes when no invariant was violated.
    ExitCode run();
    /// Plays the one session of \a seed in this process, shrinks and writes it when it fails.
    ExitCode replay(quint64 seed);
    /// Plays the session written in \a scenarioFile (a shrunk failure) in this process.
    ExitCode replayFile(const QString &scenarioFile);
    /// A worker: plays sessions first, first + stride, … until the count or
    /// the deadline (ms since the epoch, 0 for none), one JSON line each.
    ExitCode work(int first, int stride, qint64 deadline);

    /// The command that replays the session of \a seed.
    QString replayCommand(quint64 seed) const;

private:
    /// Shrinks a failing session and writes it; returns the failure for the report.
    SimulationReport::Failure settle(const SessionOutcome &outcome) const;
    SessionOutcome play(quint64 seed) const;
    ExitCode report(const SessionOutcome &outcome, bool settleFailure);
    QStringList workerArguments(int first, int stride, qint64 deadline) const;

    Options m_options;
    QTextStream *m_out;
    QTextStream *m_err;
};

} // namespace till
