#include "simulationcommand.h"

#include "sessionfile.h"
#include "sessionoutcome.h"
#include "sessionrunner.h"
#include "sessionshrinker.h"
#include "simulationworkerpool.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTextStream>
#include <QThread>

#include <limits>

namespace till {

namespace {

/// Replays a shrinking session may take.
constexpr int shrinkBudget = 150;

bool hasViolation(const SessionOutcome &outcome, const QString &invariant)
{
    return std::any_of(outcome.violations.cbegin(), outcome.violations.cend(),
                       [&invariant](const InvariantChecker::Violation &violation) { return violation.invariant == invariant; });
}

QJsonObject failureJson(const SimulationReport::Failure &failure)
{
    return {{QStringLiteral("seed"), double(failure.seed)},   {QStringLiteral("invariant"), failure.invariant},
            {QStringLiteral("detail"), failure.detail},       {QStringLiteral("replay"), failure.replay},
            {QStringLiteral("scenario"), failure.scenario}};
}

SimulationCommand::Player &player()
{
    static SimulationCommand::Player player;
    return player;
}

} // namespace

int SimulationCommand::mostJobs()
{
    return 4 * qMax(1, QThread::idealThreadCount());
}

SimulationCommand::SimulationCommand(const Options &options, QTextStream *out, QTextStream *err)
    : m_options(options)
    , m_out(out)
    , m_err(err)
{
}

void SimulationCommand::setPlayer(const Player &play)
{
    player() = play;
}

SessionOutcome SimulationCommand::play(quint64 seed) const
{
    if (player())
        return player()(seed, m_options.rates.fault);
    return SessionRunner(m_options.pluginFolder, m_options.program).run(SessionGenerator(m_options.rates).generate(seed));
}

QString SimulationCommand::replayCommand(quint64 seed) const
{
    return QStringLiteral("%1 simulate --replay %2 --fault-rate %3 --kill-rate %4 --plugins %5")
        .arg(m_options.program)
        .arg(seed)
        .arg(m_options.rates.fault)
        .arg(m_options.rates.kill)
        .arg(m_options.pluginFolder);
}

SimulationReport::Failure SimulationCommand::settle(const SessionOutcome &outcome) const
{
    const InvariantChecker::Violation first = outcome.violations.first();
    SimulationReport::Failure failure{outcome.seed, first.invariant, first.detail, replayCommand(outcome.seed), QString()};
    if (player())
        return failure;
    const SessionRunner runner(m_options.pluginFolder, m_options.program);
    SessionShrinker shrinker([&runner, &first](const SimulatedSession &candidate) { return hasViolation(runner.run(candidate), first.invariant); },
                             shrinkBudget);
    const SimulatedSession shrunk = shrinker.shrink(outcome.played);
    // Played once more, so the answers and faults written are those it meets.
    const SessionOutcome final = runner.run(shrunk);
    const SimulatedSession written = hasViolation(final, first.invariant) ? final.played : outcome.played;
    const QString description = QStringLiteral("Shrunk by tessaro-till simulate from session %1 (%2 replays): %3: %4. Replay: %5")
                                    .arg(outcome.seed)
                                    .arg(shrinker.replays())
                                    .arg(first.invariant, first.detail, failure.replay);
    QString error;
    failure.scenario = SessionFile::write(written, m_options.outFolder, QStringLiteral("session-%1").arg(outcome.seed), description, &error);
    if (failure.scenario.isEmpty())
        *m_err << QStringLiteral("tessaro-till: ") << error << Qt::endl;
    return failure;
}

ExitCode SimulationCommand::replay(quint64 seed)
{
    return report(play(seed), true);
}

ExitCode SimulationCommand::replayFile(const QString &scenarioFile)
{
    QString error;
    const std::optional<SimulatedSession> session = SessionFile::load(scenarioFile, &error);
    if (!session) {
        *m_err << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::BadInput;
    }
    return report(SessionRunner(m_options.pluginFolder, m_options.program).run(*session), false);
}

ExitCode SimulationCommand::report(const SessionOutcome &outcome, bool settleFailure)
{
    SimulationReport report(outcome.seed);
    report.add(outcome);
    if (outcome.failed()) {
        const InvariantChecker::Violation &first = outcome.violations.first();
        report.addFailure(settleFailure ? settle(outcome) : SimulationReport::Failure{outcome.seed, first.invariant, first.detail, QString(), QString()});
    }
    if (m_options.json)
        *m_out << QJsonDocument(report.toJson()).toJson(QJsonDocument::Compact) << Qt::endl;
    else
        *m_out << report.text();
    return outcome.failed() ? ExitCode::Failed : ExitCode::Passed;
}

ExitCode SimulationCommand::work(int first, int stride, qint64 deadline)
{
    const int total = m_options.sessions.value_or(std::numeric_limits<int>::max());
    for (qint64 index = first; index < total; index += stride) {
        if (deadline > 0 && QDateTime::currentMSecsSinceEpoch() >= deadline)
            break;
        const quint64 seed = SessionGenerator::sessionSeed(m_options.seed, quint64(index));
        *m_out << QJsonDocument(QJsonObject{{QStringLiteral("begin"), double(index)}, {QStringLiteral("seed"), double(seed)}})
                      .toJson(QJsonDocument::Compact)
               << Qt::endl;
        const SessionOutcome outcome = play(seed);
        QJsonObject line = outcome.toJson();
        line.insert(QStringLiteral("index"), double(index));
        if (outcome.failed())
            line.insert(QStringLiteral("failure"), failureJson(settle(outcome)));
        *m_out << QJsonDocument(line).toJson(QJsonDocument::Compact) << Qt::endl;
    }
    return ExitCode::Passed;
}

QStringList SimulationCommand::workerArguments(int first, int stride, qint64 deadline) const
{
    return {QStringLiteral("simulate"),
            QStringLiteral("--worker"), QString::number(first),
            QStringLiteral("--stride"), QString::number(stride),
            QStringLiteral("--deadline"), QString::number(deadline),
            QStringLiteral("--seed"), QString::number(m_options.seed),
            QStringLiteral("--sessions"), QString::number(m_options.sessions.value_or(std::numeric_limits<int>::max())),
            QStringLiteral("--fault-rate"), QString::number(m_options.rates.fault),
            QStringLiteral("--kill-rate"), QString::number(m_options.rates.kill),
            QStringLiteral("--plugins"), m_options.pluginFolder,
            QStringLiteral("--out"), m_options.outFolder};
}

ExitCode SimulationCommand::run()
{
    if (!m_options.sessions && !m_options.seconds)
        m_options.sessions = 100;
    const qint64 deadline = m_options.seconds ? QDateTime::currentMSecsSinceEpoch() + qint64(*m_options.seconds) * 1000 : 0;
    const int total = m_options.sessions.value_or(std::numeric_limits<int>::max());
    *m_err << QStringLiteral("simulate: seed %1, %2, %3 job(s), fault rate %4, kill rate %5")
                  .arg(m_options.seed)
                  .arg(m_options.sessions ? QStringLiteral("%1 sessions").arg(*m_options.sessions)
                                          : QStringLiteral("%1 s").arg(*m_options.seconds))
                  .arg(m_options.jobs)
                  .arg(m_options.rates.fault)
                  .arg(m_options.rates.kill)
           << Qt::endl;

    SimulationReport report(m_options.seed);
    QElapsedTimer clock;
    clock.start();
    SimulationWorkerPool::Setup workers;
    workers.program = m_options.program;
    workers.jobs = qMax(1, m_options.jobs);
    workers.total = total;
    workers.deadline = deadline;
    workers.arguments = [this, stride = workers.jobs, deadline](int first) { return workerArguments(first, stride, deadline); };
    workers.replayCommand = [this](quint64 seed) { return replayCommand(seed); };
    SimulationWorkerPool(workers, &report, m_err).run(clock);
    report.setElapsedMs(clock.elapsed());
    if (m_options.json)
        *m_out << QJsonDocument(report.toJson()).toJson(QJsonDocument::Compact) << Qt::endl;
    else
        *m_out << report.text();
    return report.violations() == 0 ? ExitCode::Passed : ExitCode::Failed;
}

} // namespace till
