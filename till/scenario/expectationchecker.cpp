#include "expectationchecker.h"

#include "jsontext.h"

#include <QJsonArray>
#include <QRegularExpression>

#include <cmath>

namespace till {

namespace {

QString shown(const QJsonValue &value)
{
    return JsonText::of(value);
}

QString textOf(const QJsonValue &value)
{
    return value.isString() ? value.toString() : shown(value);
}

QStringList objectMismatches(const QString &prefix, const QJsonObject &expected, const QJsonObject &found)
{
    QStringList failures;
    for (auto it = expected.constBegin(); it != expected.constEnd(); ++it) {
        const QString problem = ExpectationChecker::mismatch(it.value(), found.contains(it.key()) ? found.value(it.key()) : QJsonValue(QJsonValue::Undefined));
        if (!problem.isEmpty())
            failures << QStringLiteral("%1%2: %3").arg(prefix, it.key(), problem);
    }
    return failures;
}

QJsonObject positionWith(const QJsonObject &document, int posnum)
{
    for (const QJsonValue &position : document.value(QStringLiteral("positions")).toArray()) {
        if (position[QStringLiteral("posnum")].toInt() == posnum)
            return position.toObject();
    }
    return {};
}

QStringList documentMismatches(const QString &prefix, const DocumentCheck &check, const QJsonObject &document)
{
    if (document.isEmpty())
        return {QStringLiteral("%1: there is no such document").arg(prefix)};
    QStringList failures;
    failures << objectMismatches(prefix + QStringLiteral(".pluginData."), check.pluginData, document.value(QStringLiteral("pluginData")).toObject());
    failures << objectMismatches(prefix + QStringLiteral(".properties."), check.properties, document.value(QStringLiteral("properties")).toObject());
    if (check.closed && document.value(QStringLiteral("closed")).toBool() != *check.closed)
        failures << QStringLiteral("%1.closed: expected %2").arg(prefix, *check.closed ? QStringLiteral("closed") : QStringLiteral("open"));
    const int payments = int(document.value(QStringLiteral("payments")).toArray().size());
    if (check.payments && payments != *check.payments)
        failures << QStringLiteral("%1.payments: expected %2, found %3").arg(prefix).arg(*check.payments).arg(payments);
    const int positions = int(document.value(QStringLiteral("positions")).toArray().size());
    if (check.positionCount && positions != *check.positionCount)
        failures << QStringLiteral("%1.positionCount: expected %2, found %3").arg(prefix).arg(*check.positionCount).arg(positions);
    if (!check.commonReason.isUndefined()) {
        const QString problem = ExpectationChecker::mismatch(check.commonReason, document.value(QStringLiteral("commonReason")));
        if (!problem.isEmpty())
            failures << QStringLiteral("%1.commonReason: %2").arg(prefix, problem);
    }
    for (const PositionCheck &positionCheck : check.positions) {
        const QString at = QStringLiteral("%1.positions[posnum %2]").arg(prefix).arg(positionCheck.posnum);
        const QJsonObject position = positionWith(document, positionCheck.posnum);
        if (position.isEmpty()) {
            failures << QStringLiteral("%1: there is no such position").arg(at);
            continue;
        }
        failures << objectMismatches(at + QLatin1Char('.'), positionCheck.fields, position);
        const QJsonObject data = position.value(QStringLiteral("data")).toObject();
        for (auto ns = positionCheck.data.constBegin(); ns != positionCheck.data.constEnd(); ++ns)
            failures << objectMismatches(QStringLiteral("%1.data.%2.").arg(at, ns.key()), ns.value().toObject(), data.value(ns.key()).toObject());
    }
    return failures;
}

} // namespace

QString ExpectationChecker::mismatch(const QJsonValue &expected, const QJsonValue &found)
{
    if (expected.isObject()) {
        const QJsonObject matcher = expected.toObject();
        if (matcher.size() == 1 && matcher.contains(QStringLiteral("$present"))) {
            const bool wanted = matcher.value(QStringLiteral("$present")).toBool();
            const bool present = !found.isUndefined() && !found.isNull();
            if (wanted == present)
                return QString();
            return wanted ? QStringLiteral("expected a value, found nothing") : QStringLiteral("expected nothing, found %1").arg(shown(found));
        }
        if (matcher.size() == 1 && matcher.contains(QStringLiteral("$matches"))) {
            const QRegularExpression expression(matcher.value(QStringLiteral("$matches")).toString());
            if (!found.isUndefined() && expression.match(textOf(found)).hasMatch())
                return QString();
            return QStringLiteral("expected a match of %1, found %2").arg(expression.pattern(), shown(found));
        }
        if (!found.isObject())
            return QStringLiteral("expected %1, found %2").arg(shown(expected), shown(found));
        const QStringList inner = objectMismatches(QString(), matcher, found.toObject());
        return inner.isEmpty() ? QString() : inner.join(QStringLiteral("; "));
    }
    if (expected.isArray()) {
        const QJsonArray wanted = expected.toArray();
        const QJsonArray got = found.toArray();
        if (!found.isArray() || wanted.size() != got.size())
            return QStringLiteral("expected %1, found %2").arg(shown(expected), shown(found));
        for (qsizetype i = 0; i < wanted.size(); ++i) {
            if (!mismatch(wanted.at(i), got.at(i)).isEmpty())
                return QStringLiteral("expected %1, found %2").arg(shown(expected), shown(found));
        }
        return QString();
    }
    if (expected.isDouble() && found.isDouble()) {
        const double a = expected.toDouble();
        const double b = found.toDouble();
        if (std::fabs(a - b) <= 1e-6 * qMax(1.0, std::fabs(a)))
            return QString();
    } else if (expected == found) {
        return QString();
    }
    return QStringLiteral("expected %1, found %2").arg(shown(expected), shown(found));
}

QStringList ExpectationChecker::check(const Expectation &expectation, const Observation &observation)
{
    QStringList failures;
    if (expectation.result) {
        if (!observation.result)
            failures << QStringLiteral("result: expected %1, the action did not run").arg(*expectation.result);
        else if (*observation.result != *expectation.result)
            failures << QStringLiteral("result: expected %1, found %2").arg(*expectation.result).arg(*observation.result);
    }
    if (expectation.dialogs && *expectation.dialogs != observation.dialogIds)
        failures << QStringLiteral("dialogs: expected [%1], found [%2]")
                        .arg(expectation.dialogs->join(QStringLiteral(", ")), observation.dialogIds.join(QStringLiteral(", ")));
    for (auto it = expectation.requests.cbegin(); it != expectation.requests.cend(); ++it) {
        int count = 0;
        for (const QString &path : observation.requestPaths)
            count += path.endsWith(it.key()) ? 1 : 0;
        if (count != it.value())
            failures << QStringLiteral("requests: %1: expected %2, found %3").arg(it.key()).arg(it.value()).arg(count);
    }
    if (expectation.document)
        failures << documentMismatches(QStringLiteral("document"), *expectation.document, observation.document);
    for (auto it = expectation.documents.cbegin(); it != expectation.documents.cend(); ++it)
        failures << documentMismatches(QStringLiteral("documents.") + it.key(), it.value(), observation.documents.value(it.key()));
    failures << objectMismatches(QStringLiteral("storage."), expectation.storage, observation.storage);
    for (auto it = expectation.paymentTotals.cbegin(); it != expectation.paymentTotals.cend(); ++it) {
        const QString problem = mismatch(it.value(), observation.paymentTotals.value(it.key(), 0.0));
        if (!problem.isEmpty())
            failures << QStringLiteral("paymentTotals.%1: %2").arg(it.key()).arg(problem);
    }
    return failures;
}

} // namespace till
