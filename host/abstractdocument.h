#pragma once

#include "documentcardrecord.h"
#include "documentimpact.h"
#include "goodsitem.h"
#include "moneyitem.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QVariantMap>

/// A document (receipt) of the host: its positions, payments, discounts and
/// cards, named properties, and the values each loyalty system keeps on it.
class AbstractDocument : public QObject
{
    Q_OBJECT

public:
    explicit AbstractDocument(int type = 1, QObject *parent = nullptr);
    ~AbstractDocument() override;

    int getType() const { return m_type; }
    /// Whether the document's type is one of \a types.
    virtual bool hasType(const QList<int> &types) const { return types.contains(m_type); }

    QString getId() const { return m_id; }
    void setId(const QString &id) { m_id = id; }
    QDateTime getDateTime() const { return m_dateTime; }
    void setDateTime(const QDateTime &dateTime) { m_dateTime = dateTime; }
    /// The store the document was made in.
    QString getShopCode() const { return m_shopCode; }
    void setShopCode(const QString &code) { m_shopCode = code; }

    QVariant getDocumentProperty(const QString &name, const QVariant &defaultValue = QVariant()) const;
    void setDocumentProperty(const QString &name, const QVariant &value);
    QVariantMap documentProperties() const { return m_properties; }

    QList<QSharedPointer<GoodsItem>> getGoodsItems() const { return m_goods; }
    void addGoodsItem(const QSharedPointer<GoodsItem> &item);
    /// The position with the number \a posnum, or null.
    QSharedPointer<GoodsItem> getGoodsItemByPosnum(int posnum) const;
    void removeGoodsItems() { m_goods.clear(); }

    QList<QSharedPointer<MoneyItem>> getMoneyItems() const { return m_payments; }
    void addMoneyItem(const QSharedPointer<MoneyItem> &item) { m_payments << item; }

    QList<QSharedPointer<DocumentImpact>> getImpacts() const { return m_impacts; }
    void addImpact(const QSharedPointer<DocumentImpact> &impact) { m_impacts << impact; }

    /// The card of \a cardType presented for the document, or null.
    QSharedPointer<DocumentCardRecord> getCardRecord(int cardType) const;
    QList<QSharedPointer<DocumentCardRecord>> getCardRecords() const { return m_cards; }
    void addCardRecord(const QSharedPointer<DocumentCardRecord> &card) { m_cards << card; }

    /// The return reason chosen for the whole document; null when none is chosen.
    QVariant getCommonBackReason() const { return m_commonBackReason; }
    void setCommonBackReason(const QVariant &reason) { m_commonBackReason = reason; }
    /// The dictionary of return reasons that applies to this document.
    int getBackReasonDictionaryKind() const { return m_backReasonDictionaryKind; }
    void setBackReasonDictionaryKind(int kind) { m_backReasonDictionaryKind = kind; }

    /// The document's own rounding of its total to what can be paid.
    double getRoundingSum() const { return m_roundingSum; }
    void setRoundingSum(double sum) { m_roundingSum = sum; }

    QVariant getPluginData(int system, const QString &key, const QVariant &defaultValue = QVariant()) const;
    void setPluginData(int system, const QString &key, const QVariant &value);
    QHash<int, QVariantMap> pluginData() const { return m_pluginData; }
    void setPluginData(const QHash<int, QVariantMap> &data) { m_pluginData = data; }

    /// Tells the host that a plug-in changed the document, so it is shown and saved anew.
    void markChanged() { ++m_changeCount; }
    int changeCount() const { return m_changeCount; }

    bool isClosed() const { return m_closed; }
    void setClosed(bool closed) { m_closed = closed; }

private:
    int m_type;
    QString m_id;
    QDateTime m_dateTime;
    QString m_shopCode;
    QVariantMap m_properties;
    QList<QSharedPointer<GoodsItem>> m_goods;
    QList<QSharedPointer<MoneyItem>> m_payments;
    QList<QSharedPointer<DocumentImpact>> m_impacts;
    QList<QSharedPointer<DocumentCardRecord>> m_cards;
    QVariant m_commonBackReason;
    int m_backReasonDictionaryKind = 2;
    double m_roundingSum = 0.0;
    QHash<int, QVariantMap> m_pluginData;
    int m_changeCount = 0;
    bool m_closed = false;
};

Q_DECLARE_METATYPE(QSharedPointer<AbstractDocument>)
