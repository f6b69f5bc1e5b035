#pragma once

#include "simulatedsession.h"

#include <functional>

namespace till {

/// Makes a failing session small: drops runs of actions, then single
/// actions, faults and answers, keeping each cut that still fails the same
/// way, until no single cut does or the budget of replays is spent.
class SessionShrinker
{
public:
    /// Whether \a candidate still fails as the original did.
    using StillFails = std::function<bool(const SimulatedSession &candidate)>;

    SessionShrinker(const StillFails &stillFails, int budget);

    SimulatedSession shrink(const SimulatedSession &failing);
    /// How many replays the last shrink took.
    int replays() const { return m_replays; }

private:
    template <typename T>
    bool cut(SimulatedSession *session, QList<T> SimulatedSession::*list);
    template <typename T>
    bool cutWithin(SimulatedSession *session, QList<T> Scenario::*list);
    bool tryCandidate(const SimulatedSession &candidate);

    StillFails m_stillFails;
    int m_budget;
    int m_replays = 0;
};

} // namespace till
