#include "backbysale.h"

namespace control::args {

BackBySale::BackBySale(const Action &action)
    : m_action(action)
{
}

QString BackBySale::identifier() const
{
    return m_action.value(QStringLiteral("identifier")).toString();
}

void BackBySale::setIdentifier(const QString &identifier) const
{
    m_action.insert(QStringLiteral("identifier"), identifier);
}

} // namespace control::args
