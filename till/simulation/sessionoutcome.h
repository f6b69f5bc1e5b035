#pragma once

#include "invariantchecker.h"
#include "simulatedsession.h"

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

namespace till {

/// What one simulated session did and found.
struct SessionOutcome
{
    quint64 seed = 0;
    int steps = 0;
    int requests = 0;
    /// Fault kind to the number of requests it struck.
    QMap<QString, int> faults;
    int kills = 0;
    int invariantsChecked = 0;
    int lostAnswers = 0;
    QList<InvariantChecker::Violation> violations;
    /// The session as it ran (answers and faults written down), for replay and shrinking.
    SimulatedSession played;

    bool failed() const { return !violations.isEmpty(); }
    /// The counters and violations as one JSON object (a worker's report line).
    QJsonObject toJson() const;
    static SessionOutcome fromJson(const QJsonObject &json);
};

} // namespace till
