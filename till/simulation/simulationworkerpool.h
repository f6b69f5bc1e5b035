#pragma once

#include "simulationreport.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QElapsedTimer;
class QEventLoop;
class QTextStream;

namespace till {

/// The worker processes of a simulation run. Each worker plays every
/// stride-th session from its first and writes one JSON line as it begins a
/// session and one with the session's outcome; the pool adds the outcomes to
/// the report. A worker that dies inside a session counts as a crash of that
/// session and is started again at its next one; one that ends badly between
/// sessions (a sanitizer's report at exit) counts as a violation of its own.
class SimulationWorkerPool
{
public:
    struct Setup
    {
        /// The program the workers run.
        QString program;
        /// How many workers, and so each one's step between sessions.
        int jobs = 1;
        /// The sessions of the run.
        int total = 0;
        /// When no session starts any more, ms since the epoch; 0 for never.
        qint64 deadline = 0;
        /// A worker's command line when it starts at session \a first.
        std::function<QStringList(int first)> arguments;
        /// The command that replays the session of a seed.
        std::function<QString(quint64 seed)> replayCommand;
    };

    /// Adds to \a report, tells of failures and progress on \a err.
    SimulationWorkerPool(const Setup &setup, SimulationReport *report, QTextStream *err);
    ~SimulationWorkerPool();

    /// Starts the workers and returns when all have ended; the report's
    /// progress line, with the time \a clock tells, every two seconds.
    void run(const QElapsedTimer &clock);

private:
    struct Worker;

    void start(Worker *worker, int first);
    void readLines(Worker *worker);
    void finished(Worker *worker, int exitCode, QProcess::ExitStatus status);
    void failedToStart();
    void ended();

    Setup m_setup;
    SimulationReport *m_report;
    QTextStream *m_err;
    std::unique_ptr<QEventLoop> m_loop;
    std::vector<std::unique_ptr<Worker>> m_workers;
    int m_alive = 0;
};

} // namespace till
