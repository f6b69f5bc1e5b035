#pragma once

#include "simulatedsession.h"

#include <QDateTime>

#include <random>

namespace till {

/// Draws cashier sessions from a seed: the till's configuration (reasons,
/// currency tables, gateway, token authorisation, a short time-out), the
/// service's shift, documents of every kind with identifiers and cards valid
/// and not, and a run of actions (positions, payments, coupons, input,
/// reasons, storno, close attempts, restarts). The same seed always gives the
/// same session.
class SessionGenerator
{
public:
    struct Rates
    {
        /// The chance of a fault on each request.
        double fault = 0.2;
        /// The chance of a till restart after each action; a tenth of it is
        /// the chance that the session runs in a child process that is killed.
        double kill = 0.1;
    };

    explicit SessionGenerator(const Rates &rates);

    /// The seed of session \a index of the run \a runSeed.
    static quint64 sessionSeed(quint64 runSeed, quint64 index);
    /// The fixed time the till and the service live at.
    static QDateTime epoch();

    SimulatedSession generate(quint64 seed) const;

private:
    using Random = std::mt19937_64;

    TillSettings till(Random &random, SimulatedSession *session) const;
    DocumentSpec document(Random &random, int index) const;
    QList<ScenarioAction> actions(Random &random, const DocumentSpec &document) const;
    ScenarioAction action(Random &random) const;
    static PositionSpec position(Random &random);
    static PaymentSpec payment(Random &random);

    Rates m_rates;
};

} // namespace till
