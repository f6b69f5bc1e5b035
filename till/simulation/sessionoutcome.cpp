#include "sessionoutcome.h"

#include <QJsonArray>

namespace till {

QJsonObject SessionOutcome::toJson() const
{
    QJsonObject faultCounts;
    for (auto it = faults.cbegin(); it != faults.cend(); ++it)
        faultCounts.insert(it.key(), it.value());
    QJsonArray found;
    for (const InvariantChecker::Violation &violation : violations)
        found << QJsonObject{{QStringLiteral("invariant"), violation.invariant}, {QStringLiteral("detail"), violation.detail}};
    return QJsonObject{{QStringLiteral("seed"), double(seed)},
                       {QStringLiteral("steps"), steps},
                       {QStringLiteral("requests"), requests},
                       {QStringLiteral("faults"), faultCounts},
                       {QStringLiteral("kills"), kills},
                       {QStringLiteral("invariantsChecked"), invariantsChecked},
                       {QStringLiteral("lostAnswers"), lostAnswers},
                       {QStringLiteral("violations"), found}};
}

SessionOutcome SessionOutcome::fromJson(const QJsonObject &json)
{
    SessionOutcome outcome;
    outcome.seed = quint64(json.value(QStringLiteral("seed")).toDouble());
    outcome.steps = json.value(QStringLiteral("steps")).toInt();
    outcome.requests = json.value(QStringLiteral("requests")).toInt();
    const QJsonObject faultCounts = json.value(QStringLiteral("faults")).toObject();
    for (auto it = faultCounts.constBegin(); it != faultCounts.constEnd(); ++it)
        outcome.faults.insert(it.key(), it.value().toInt());
    outcome.kills = json.value(QStringLiteral("kills")).toInt();
    outcome.invariantsChecked = json.value(QStringLiteral("invariantsChecked")).toInt();
    outcome.lostAnswers = json.value(QStringLiteral("lostAnswers")).toInt();
    for (const QJsonValue &value : json.value(QStringLiteral("violations")).toArray()) {
        const QJsonObject violation = value.toObject();
        outcome.violations << InvariantChecker::Violation{violation.value(QStringLiteral("invariant")).toString(),
                                                          violation.value(QStringLiteral("detail")).toString()};
    }
    return outcome;
}

} // namespace till
