#include "core.h"

#include "../../goodsitem.h"

namespace control::args {

Core::Core(const Action &action)
    : m_action(action)
{
}

QSharedPointer<GoodsItem> Core::getPosition() const
{
    return m_action.value(QStringLiteral("position")).value<QSharedPointer<GoodsItem>>();
}

void Core::setPosition(const QSharedPointer<GoodsItem> &position) const
{
    m_action.insert(QStringLiteral("position"), QVariant::fromValue(position));
}

int Core::positionNumber() const
{
    return m_action.value(QStringLiteral("positionNumber"), 0).toInt();
}

int Core::kind() const
{
    return m_action.value(QStringLiteral("kind"), 0).toInt();
}

} // namespace control::args
