#include "sessionshrinker.h"

namespace till {

namespace {

/// Cuts chunks of halving size out of \a items while \a keep accepts the rest.
template <typename T>
bool cutChunks(QList<T> *items, const std::function<bool(const QList<T> &)> &keep)
{
    bool changed = false;
    for (qsizetype chunk = qMax<qsizetype>(1, items->size() / 2); chunk >= 1; chunk /= 2) {
        for (qsizetype start = items->size() - chunk; start >= 0; start -= chunk) {
            QList<T> candidate = *items;
            candidate.remove(start, chunk);
            if (keep(candidate)) {
                *items = candidate;
                changed = true;
            }
        }
        if (chunk == 1)
            break;
    }
    return changed;
}

} // namespace

SessionShrinker::SessionShrinker(const StillFails &stillFails, int budget)
    : m_stillFails(stillFails)
    , m_budget(budget)
{
}

bool SessionShrinker::tryCandidate(const SimulatedSession &candidate)
{
    if (m_replays >= m_budget)
        return false;
    ++m_replays;
    return m_stillFails(candidate);
}

template <typename T>
bool SessionShrinker::cutWithin(SimulatedSession *session, QList<T> Scenario::*list)
{
    QList<T> items = session->scenario.*list;
    const bool changed = cutChunks<T>(&items, [this, session, list](const QList<T> &candidate) {
        SimulatedSession shorter = *session;
        shorter.scenario.*list = candidate;
        return tryCandidate(shorter);
    });
    session->scenario.*list = items;
    return changed;
}

template <typename T>
bool SessionShrinker::cut(SimulatedSession *session, QList<T> SimulatedSession::*list)
{
    QList<T> items = session->*list;
    const bool changed = cutChunks<T>(&items, [this, session, list](const QList<T> &candidate) {
        SimulatedSession shorter = *session;
        shorter.*list = candidate;
        return tryCandidate(shorter);
    });
    session->*list = items;
    return changed;
}

SimulatedSession SessionShrinker::shrink(const SimulatedSession &failing)
{
    m_replays = 0;
    SimulatedSession session = failing;
    bool changed = true;
    while (changed && m_replays < m_budget) {
        changed = cutWithin(&session, &Scenario::actions);
        changed = cut(&session, &SimulatedSession::faults) || changed;
        changed = cutWithin(&session, &Scenario::answers) || changed;
    }
    // Documents no action opens any more go too.
    QList<DocumentSpec> used;
    for (const DocumentSpec &document : std::as_const(session.scenario.documents)) {
        const bool opened = std::any_of(session.scenario.actions.cbegin(), session.scenario.actions.cend(),
                                        [&document](const ScenarioAction &action) { return action.document == document.name; });
        if (opened)
            used << document;
    }
    session.scenario.documents = used;
    return session;
}

} // namespace till
