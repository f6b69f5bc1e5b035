#include "simulationworkerpool.h"

#include "exitcode.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <QTimer>

#include <optional>

namespace till {

namespace {

SimulationReport::Failure failureFromJson(const QJsonObject &json)
{
    return {quint64(json.value(QStringLiteral("seed")).toDouble()), json.value(QStringLiteral("invariant")).toString(),
            json.value(QStringLiteral("detail")).toString(), json.value(QStringLiteral("replay")).toString(),
            json.value(QStringLiteral("scenario")).toString()};
}

} // namespace

/// One worker process and the session it is in the middle of.
struct SimulationWorkerPool::Worker
{
    QProcess process;
    QByteArray buffer;
    std::optional<int> running;
    quint64 runningSeed = 0;
};

SimulationWorkerPool::SimulationWorkerPool(const Setup &setup, SimulationReport *report, QTextStream *err)
    : m_setup(setup)
    , m_report(report)
    , m_err(err)
    , m_loop(std::make_unique<QEventLoop>())
{
}

SimulationWorkerPool::~SimulationWorkerPool() = default;

void SimulationWorkerPool::run(const QElapsedTimer &clock)
{
    for (int job = 0; job < m_setup.jobs; ++job) {
        m_workers.push_back(std::make_unique<Worker>());
        Worker *worker = m_workers.back().get();
        QObject::connect(&worker->process, &QProcess::readyReadStandardOutput, m_loop.get(), [this, worker] { readLines(worker); });
        QObject::connect(&worker->process, &QProcess::finished, m_loop.get(),
                         [this, worker](int exitCode, QProcess::ExitStatus status) { finished(worker, exitCode, status); });
        QObject::connect(&worker->process, &QProcess::errorOccurred, m_loop.get(), [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                failedToStart();
        });
        start(worker, job);
    }
    QTimer progress;
    QObject::connect(&progress, &QTimer::timeout, m_loop.get(), [this, &clock] {
        m_report->setElapsedMs(clock.elapsed());
        *m_err << m_report->progressLine() << Qt::endl;
    });
    progress.start(2000);
    if (m_alive > 0)
        m_loop->exec();
}

void SimulationWorkerPool::start(Worker *worker, int first)
{
    worker->buffer.clear();
    worker->running.reset();
    worker->process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    worker->process.start(m_setup.program, m_setup.arguments(first));
    ++m_alive;
}

void SimulationWorkerPool::readLines(Worker *worker)
{
    worker->buffer += worker->process.readAllStandardOutput();
    qsizetype end;
    while ((end = worker->buffer.indexOf('\n')) >= 0) {
        const QJsonObject line = QJsonDocument::fromJson(worker->buffer.left(end)).object();
        worker->buffer.remove(0, end + 1);
        if (line.contains(QStringLiteral("begin"))) {
            worker->running = line.value(QStringLiteral("begin")).toInt();
            worker->runningSeed = quint64(line.value(QStringLiteral("seed")).toDouble());
            continue;
        }
        if (!line.contains(QStringLiteral("index")))
            continue;
        worker->running.reset();
        m_report->add(SessionOutcome::fromJson(line));
        if (line.contains(QStringLiteral("failure"))) {
            const SimulationReport::Failure failure = failureFromJson(line.value(QStringLiteral("failure")).toObject());
            m_report->addFailure(failure);
            *m_err << QStringLiteral("simulate: session %1 FAILED: %2: %3\n  replay: %4\n  scenario: %5")
                          .arg(failure.seed)
                          .arg(failure.invariant, failure.detail, failure.replay, failure.scenario)
                   << Qt::endl;
        }
    }
}

void SimulationWorkerPool::finished(Worker *worker, int exitCode, QProcess::ExitStatus status)
{
    readLines(worker);
    --m_alive;
    if (worker->running) {
        // The worker died inside a session: a crash or a sanitizer's report.
        SessionOutcome crashed;
        crashed.seed = worker->runningSeed;
        const QString detail = status == QProcess::CrashExit ? QStringLiteral("the till process crashed")
                                                             : QStringLiteral("the till process ended with exit code %1").arg(exitCode);
        const QString replay = m_setup.replayCommand(crashed.seed);
        crashed.violations << InvariantChecker::Violation{QStringLiteral("no-crash"), detail};
        m_report->add(crashed);
        m_report->addFailure({crashed.seed, QStringLiteral("no-crash"), detail, replay, QString()});
        *m_err << QStringLiteral("simulate: session %1 FAILED: %2\n  replay: %3").arg(crashed.seed).arg(detail, replay) << Qt::endl;
        const int next = *worker->running + m_setup.jobs;
        const bool timeLeft = m_setup.deadline == 0 || QDateTime::currentMSecsSinceEpoch() < m_setup.deadline;
        if (next < m_setup.total && timeLeft) {
            start(worker, next);
            return;
        }
    } else if (status == QProcess::CrashExit || exitCode != exitStatus(ExitCode::Passed)) {
        // Between sessions: a sanitizer's report at exit (leaks), or a worker that could not run.
        const QString detail = QStringLiteral("a worker ended with %1 after its sessions")
                                   .arg(status == QProcess::CrashExit ? QStringLiteral("a crash") : QStringLiteral("exit code %1").arg(exitCode));
        m_report->addWorkerFailure({0, QStringLiteral("no-sanitizer-report"), detail, QString(), QString()});
        *m_err << QStringLiteral("simulate: FAILED: ") << detail << Qt::endl;
    }
    ended();
}

void SimulationWorkerPool::failedToStart()
{
    m_report->addWorkerFailure({0, QStringLiteral("setup"), QStringLiteral("a worker could not start: %1").arg(m_setup.program), QString(), QString()});
    --m_alive;
    ended();
}

void SimulationWorkerPool::ended()
{
    if (m_alive == 0)
        m_loop->quit();
}

} // namespace till
