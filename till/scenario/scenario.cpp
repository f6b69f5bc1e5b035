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

const DocumentSpec *Scenario::document(const QString &name) const
{
    for (const DocumentSpec &described : documents) {
        if (described.name == name)
            return &described;
    }
    return nullptr;
}

} // namespace till
