#include "simulationreport.h"

#include "reportwords.h"

#include <QJsonArray>

namespace till {

SimulationReport::SimulationReport(quint64 seed)
    : m_seed(seed)
{
}

void SimulationReport::add(const SessionOutcome &outcome)
{
    ++m_sessions;
    m_steps += outcome.steps;
    m_requests += outcome.requests;
    for (auto it = outcome.faults.cbegin(); it != outcome.faults.cend(); ++it)
        m_faults[it.key()] += it.value();
    m_kills += outcome.kills;
    m_invariantsChecked += outcome.invariantsChecked;
    m_violations += int(outcome.violations.size());
    m_lostAnswers += outcome.lostAnswers;
}

void SimulationReport::addFailure(const Failure &failure)
{
    m_failures << failure;
}

void SimulationReport::addWorkerFailure(const Failure &failure)
{
    ++m_violations;
    m_failures << failure;
}

double SimulationReport::sessionsPerMinute() const
{
    return m_elapsedMs > 0 ? m_sessions * 60000.0 / double(m_elapsedMs) : 0.0;
}

QString SimulationReport::progressLine() const
{
    return QStringLiteral("simulate: ")
        + ReportWords::tally({ReportWords::count(m_sessions, QStringLiteral("sessions")), ReportWords::count(m_steps, QStringLiteral("steps")),
                              ReportWords::count(m_requests, QStringLiteral("requests")), ReportWords::count(m_kills, QStringLiteral("kills")),
                              ReportWords::count(m_violations, QStringLiteral("violations")),
                              ReportWords::count(m_lostAnswers, QStringLiteral("lost answers")),
                              ReportWords::count(qRound(sessionsPerMinute()), QStringLiteral("sessions/min"))});
}

QString SimulationReport::text() const
{
    QString text = QStringLiteral("seed %1\n").arg(m_seed);
    text += QStringLiteral("sessions            %1\n").arg(m_sessions);
    text += QStringLiteral("steps               %1\n").arg(m_steps);
    text += QStringLiteral("requests            %1\n").arg(m_requests);
    text += QStringLiteral("faults\n");
    for (auto it = m_faults.cbegin(); it != m_faults.cend(); ++it)
        text += QStringLiteral("  %1 %2\n").arg(it.key(), -20).arg(it.value());
    text += QStringLiteral("kills               %1\n").arg(m_kills);
    text += QStringLiteral("invariants checked  %1\n").arg(m_invariantsChecked);
    text += QStringLiteral("violations          %1\n").arg(m_violations);
    text += QStringLiteral("lost answers        %1\n").arg(m_lostAnswers);
    text += QStringLiteral("sessions per minute %1\n").arg(qRound(sessionsPerMinute()));
    for (const Failure &failure : m_failures) {
        text += QStringLiteral("\n%1 session %2: %3: %4\n  replay:   %5\n")
                    .arg(ReportWords::verdict(false))
                    .arg(failure.seed)
                    .arg(failure.invariant, failure.detail, failure.replay);
        if (!failure.scenario.isEmpty())
            text += QStringLiteral("  scenario: %1\n").arg(failure.scenario);
    }
    return text;
}

QJsonObject SimulationReport::toJson() const
{
    QJsonObject faults;
    for (auto it = m_faults.cbegin(); it != m_faults.cend(); ++it)
        faults.insert(it.key(), it.value());
    QJsonArray failures;
    for (const Failure &failure : m_failures)
        failures << QJsonObject{{QStringLiteral("seed"), double(failure.seed)},
                                {QStringLiteral("invariant"), failure.invariant},
                                {QStringLiteral("replay"), failure.replay},
                                {QStringLiteral("scenario"), failure.scenario}};
    return QJsonObject{{QStringLiteral("seed"), double(m_seed)},
                       {QStringLiteral("sessions"), m_sessions},
                       {QStringLiteral("steps"), m_steps},
                       {QStringLiteral("requests"), m_requests},
                       {QStringLiteral("faults"), faults},
                       {QStringLiteral("kills"), m_kills},
                       {QStringLiteral("invariantsChecked"), m_invariantsChecked},
                       {QStringLiteral("violations"), m_violations},
                       {QStringLiteral("lostAnswers"), m_lostAnswers},
                       {QStringLiteral("sessionsPerMinute"), qRound(sessionsPerMinute() * 10) / 10.0},
                       {QStringLiteral("failures"), failures}};
}

} // namespace till
