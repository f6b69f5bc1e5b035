#include "action.h"

namespace control {

Action::Action()
    : Action(EActionType(0), Arguments())
{
}

Action::Action(EActionType type, const Arguments &arguments)
    : m_type(type)
    , m_arguments(QSharedPointer<Arguments>::create(arguments))
{
}

QVariant Action::value(const QString &key, const QVariant &defaultValue) const
{
    return m_arguments->value(key, defaultValue);
}

bool Action::contains(const QString &key) const
{
    return m_arguments->contains(key);
}

void Action::insert(const QString &key, const QVariant &value) const
{
    m_arguments->replace(key, value);
}

Action::Arguments Action::arguments() const
{
    return *m_arguments;
}

} // namespace control
