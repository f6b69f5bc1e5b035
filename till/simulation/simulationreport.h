#pragma once

#include "sessionoutcome.h"

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

namespace till {

/// The totals of a simulation run: sessions, steps, requests, faults by
/// kind, kills, invariants checked, violations, lost answers, and each
/// failing session with the command that replays it and its shrunk scenario.
class SimulationReport
{
public:
    struct Failure
    {
        quint64 seed = 0;
        QString invariant;
        QString detail;
        QString replay;
        /// The shrunk scenario file; empty when none could be written.
        QString scenario;
    };

    explicit SimulationReport(quint64 seed);

    void add(const SessionOutcome &outcome);
    void addFailure(const Failure &failure);
    /// A failure outside any session (a worker's crash or report at exit): counted as a violation.
    void addWorkerFailure(const Failure &failure);
    void setElapsedMs(qint64 elapsedMs) { m_elapsedMs = elapsedMs; }

    int sessions() const { return m_sessions; }
    int violations() const { return m_violations; }
    double sessionsPerMinute() const;
    QList<Failure> failures() const { return m_failures; }

    /// One line for the progress display.
    QString progressLine() const;
    QString text() const;
    /// {"seed", "sessions", "steps", "requests", "faults", "kills",
    /// "invariantsChecked", "violations", "lostAnswers", "sessionsPerMinute", "failures"}.
    QJsonObject toJson() const;

private:
    quint64 m_seed;
    int m_sessions = 0;
    qint64 m_steps = 0;
    qint64 m_requests = 0;
    QMap<QString, int> m_faults;
    int m_kills = 0;
    qint64 m_invariantsChecked = 0;
    int m_violations = 0;
    int m_lostAnswers = 0;
    qint64 m_elapsedMs = 0;
    QList<Failure> m_failures;
};

} // namespace till
