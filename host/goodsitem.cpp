#include "goodsitem.h"

GoodsItem::GoodsItem()
    : m_tmc(QSharedPointer<Tmc>::create())
    , m_tmcUnit(QSharedPointer<TmcUnit>::create())
{
}

QVariant GoodsItem::getAdditionalData(const QString &nameSpace, const QString &key) const
{
    return m_additionalData.value(nameSpace).value(key);
}

void GoodsItem::setAdditionalData(const QString &nameSpace, const QString &key, const QVariant &value)
{
    if (value.isNull())
        m_additionalData[nameSpace].remove(key);
    else
        m_additionalData[nameSpace].insert(key, value);
}
