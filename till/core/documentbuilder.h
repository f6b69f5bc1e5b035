#pragma once

#include "documentspec.h"

#include <abstractdocument.h>
#include <goodsitem.h>
#include <moneyitem.h>

#include <QSharedPointer>

namespace till {

/// Makes host documents, positions and payments from their scenario descriptions.
class DocumentBuilder
{
public:
    /// \a cardType is the type of card the plug-in looks for (its loyalty-system type);
    /// \a store the till's store, used when the description names none.
    DocumentBuilder(int cardType, const QString &store);

    QSharedPointer<AbstractDocument> document(const DocumentSpec &described, const QString &id, const QDateTime &now) const;
    static QSharedPointer<GoodsItem> position(const PositionSpec &described, int posnum);
    /// A payment in the currency \a described names, with that currency's name and type.
    static QSharedPointer<MoneyItem> payment(const PaymentSpec &described);

private:
    int m_cardType;
    QString m_store;
};

} // namespace till
