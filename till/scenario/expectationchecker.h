#pragma once

#include "scenario.h"

#include <QJsonObject>
#include <QMap>
#include <QStringList>

#include <optional>

namespace till {

/// What the till saw, to hold an expectation against.
struct Observation
{
    std::optional<int> result;
    QStringList dialogIds;
    /// The paths of the requests sent, in order.
    QStringList requestPaths;
    /// The action's document (DocumentSnapshot form); empty when there is none.
    QJsonObject document;
    /// Documents by scenario name (DocumentSnapshot form).
    QMap<QString, QJsonObject> documents;
    /// Shift storage records: name to value (JSON values when the text is JSON).
    QJsonObject storage;
    /// Payment totals of the current shift by currency code.
    QMap<int, double> paymentTotals;
};

/// Holds an expectation against an observation and says, one line each,
/// what does not match.
///
/// An expected value matches when it equals the value found (numbers within
/// 1e-6; an object matches when each of its keys matches, other keys of the
/// found value are not looked at; arrays element by element), or when it is
/// {"$present": true|false} and the value is there or not, or when it is
/// {"$matches": "regex"} and the value's text matches the expression.
class ExpectationChecker
{
public:
    static QStringList check(const Expectation &expectation, const Observation &observation);
    /// Why \a found does not match \a expected; empty when it does. \a found is
    /// undefined when there is no value.
    static QString mismatch(const QJsonValue &expected, const QJsonValue &found);
};

} // namespace till
