#include "scenario.h"

namespace till {

namespace {

const char *const actionTypeNames[] = {
    "bind", "backBySale", "input", "card", "coupon", "add", "reason", "pay", "stornoAll", "close", "restart",
};

} // namespace

QString ScenarioAction::typeName(Type type)
{
    return QString::fromLatin1(actionTypeNames[type]);
}

QStringList ScenarioAction::typeNames()
{
    QStringList names;
    for (const char *name : actionTypeNames)
        names << QString::fromLatin1(name);
    return names;
}

bool ScenarioAction::hasResult() const
{
    return type != Bind && type != Card && type != Restart;
}

TillSettings TillSettings::overriddenBy(const TillSettings &other) const
{
    TillSettings merged = *this;
    if (!other.store.isEmpty())
        merged.store = other.store;
    if (!other.till.isEmpty())
        merged.till = other.till;
    if (other.shift)
        merged.shift = other.shift;
    if (other.cashierId) {
        merged.cashierId = other.cashierId;
        merged.cashierCode = other.cashierCode;
        merged.cashierName = other.cashierName;
    }
    for (auto it = other.config.cbegin(); it != other.config.cend(); ++it)
        merged.config.insert(it.key(), it.value());
    if (other.backReasons)
        merged.backReasons = other.backReasons;
    if (other.currencies)
        merged.currencies = other.currencies;
    if (other.fiscalRegistrationNumber)
        merged.fiscalRegistrationNumber = other.fiscalRegistrationNumber;
    if (!other.fiscalDriveSerial.isEmpty())
        merged.fiscalDriveSerial = other.fiscalDriveSerial;
    return merged;
}

const DocumentSpec *Scenario::document(const QString &name) const
{
    for (const DocumentSpec &described : documents) {
        if (described.name == name)
            return &described;
    }
    return nullptr;
}

} // namespace till
