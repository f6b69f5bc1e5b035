// ScenarioParser: the cashier's answers of a scenario, one to each dialog the
// plug-in shows.

#include "scenarioparserdetail.h"

namespace till::detail {

CashierAnswer answerAt(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    static const QStringList kinds{QStringLiteral("choice"), QStringLiteral("form"), QStringLiteral("quantity"),
                                   QStringLiteral("price")};
    if (object.size() != 1 || !kinds.contains(object.constBegin().key()))
        fail(path, QStringLiteral("an answer is an object with exactly one key: choice, form, quantity or price"));
    const QString key = object.constBegin().key();
    const QJsonValue answer = object.constBegin().value();
    const QString at = child(path, key);
    CashierAnswer result;
    result.path = path;
    result.kind = CashierAnswer::Kind(kinds.indexOf(key));
    result.cancel = answer.isNull();
    if (result.cancel)
        return result;
    switch (result.kind) {
    case CashierAnswer::Choice:
        if (answer.isString()) {
            result.item = answer.toString();
        } else if (answer.isDouble()) {
            result.index = integerAt(answer, at);
            if (result.index < 0)
                fail(at, QStringLiteral("a choice counts from 0"));
        } else {
            wrongKind(at, QStringLiteral("an index, an item's text or null"), answer);
        }
        break;
    case CashierAnswer::Form: {
        if (!answer.isObject())
            wrongKind(at, QStringLiteral("an object of field answers or null"), answer);
        const QJsonObject fields = answer.toObject();
        for (auto it = fields.constBegin(); it != fields.constEnd(); ++it)
            result.fields.insert(it.key(), textAt(it.value(), child(at, it.key())));
        break;
    }
    case CashierAnswer::Quantity:
    case CashierAnswer::Price:
        if (!answer.isDouble())
            wrongKind(at, QStringLiteral("a number or null"), answer);
        result.number = answer.toDouble();
        break;
    }
    return result;
}

} // namespace till::detail
