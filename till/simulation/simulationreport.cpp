#include "simulationreport.h"

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
    return QStringLiteral("simulate: %1 sessions, %2 steps, %3 requests, %4 kills, %5 violations, %6 lost answers, %7 sessions/min")
        .arg(m_sessions)
        .arg(m_steps)
        .arg(m_requests)
        .arg(m_kills)
        .arg(m_violations)
        .arg(m_lostAnswers)
        .arg(qRound(sessionsPerMinute()));
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
        text += QStringLiteral("\nFAILED session %1: %2: %3\n  replay:   %4\n").arg(failure.seed).arg(failure.invariant, failure.detail, failure.replay);
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
