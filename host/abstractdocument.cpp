#include "abstractdocument.h"

#include <QUuid>

AbstractDocument::AbstractDocument(int type, QObject *parent)
    : QObject(parent)
    , m_type(type)
    , m_id(QUuid::createUuid().toString(QUuid::WithoutBraces))
    , m_dateTime(QDateTime::currentDateTime())
{
}

AbstractDocument::~AbstractDocument() = default;

QVariant AbstractDocument::getDocumentProperty(const QString &name, const QVariant &defaultValue) const
{
    return m_properties.value(name, defaultValue);
}

void AbstractDocument::setDocumentProperty(const QString &name, const QVariant &value)
{
    m_properties.insert(name, value);
}

void AbstractDocument::addGoodsItem(const QSharedPointer<GoodsItem> &item)
{
    if (item->getPosnum() <= 0)
        item->setPosnum(int(m_goods.size()) + 1);
    m_goods << item;
}

QSharedPointer<GoodsItem> AbstractDocument::getGoodsItemByPosnum(int posnum) const
{
    for (const auto &item : m_goods) {
        if (item->getPosnum() == posnum)
            return item;
    }
    return {};
}

QSharedPointer<DocumentCardRecord> AbstractDocument::getCardRecord(int cardType) const
{
    for (const auto &card : m_cards) {
        if (card->getCardType() == cardType)
            return card;
    }
    return {};
}

QVariant AbstractDocument::getPluginData(int system, const QString &key, const QVariant &defaultValue) const
{
    return m_pluginData.value(system).value(key, defaultValue);
}

void AbstractDocument::setPluginData(int system, const QString &key, const QVariant &value)
{
    m_pluginData[system].insert(key, value);
}
