#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QSharedPointer>

#include <functional>

class MoneyItem;

namespace tessaro::detail {

// A document's payments as the service takes them: every payment made by
// \a paymentFor, in order, except that the cash paid out goes as one element,
// the last cash payment's, carrying the cash total (cashTotal); the caller
// completes it and appends it last. Change is no cash paid out and goes as it is.
struct FoldedPayments
{
    QJsonArray payments;
    QJsonObject cash;  ///< empty when nothing was paid out in cash
    double cashTotal = 0.0;
};

FoldedPayments foldCash(const QList<QSharedPointer<MoneyItem>> &moneyItems,
                        const std::function<QJsonObject(const QSharedPointer<MoneyItem> &)> &paymentFor);

} // namespace tessaro::detail
