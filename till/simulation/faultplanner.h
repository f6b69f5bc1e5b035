#pragma once

#include "simulatedsession.h"

#include <QHash>
#include <QList>

#include <optional>
#include <random>

namespace till {

/// Decides which requests of a session the service fails, and how: drawn
/// from a seed at the given rate, or replayed from a list. Every request
/// is counted per path, so a decision names its request as (path, ordinal).
///
/// Drawn kinds: a hang past the time-out, a delay under it, the connection
/// closed before and after the service applied the request, a reset, a
/// truncated, malformed or empty body, error statuses with and without a
/// message, an invalid token, the shift closed (once, or twice in a row) and
/// the service unreachable.
class FaultPlanner
{
public:
    /// Draws a fault for each request with chance \a rate.
    FaultPlanner(quint64 seed, double rate, int timeoutMs);
    /// Replays \a faults.
    explicit FaultPlanner(const QList<SessionFault> &faults);

    /// The fault for the next request to \a path, if any.
    std::optional<SessionFault> next(const QString &path);
    /// The faults that struck, in order.
    QList<SessionFault> struck() const { return m_struck; }

private:
    SessionFault draw(const QString &path, int ordinal);

    bool m_drawn = false;
    double m_rate = 0.0;
    int m_timeoutMs = 1000;
    std::mt19937_64 m_random;
    QList<SessionFault> m_planned;
    QHash<QString, int> m_counts;
    QList<SessionFault> m_struck;
};

} // namespace till
