#include "paymentlines.h"

#include <moneyitem.h>

namespace tessaro::detail {

FoldedPayments foldCash(const QList<QSharedPointer<MoneyItem>> &moneyItems,
                        const std::function<QJsonObject(const QSharedPointer<MoneyItem> &)> &paymentFor)
{
    FoldedPayments folded;
    for (const QSharedPointer<MoneyItem> &moneyItem : moneyItems) {
        const QJsonObject payment = paymentFor(moneyItem);
        if (moneyItem->getValutType() == MoneyItem::Cash && !moneyItem->isChange()) {
            folded.cashTotal += moneyItem->getAmount();
            folded.cash = payment;
        } else {
            folded.payments.append(payment);
        }
    }
    return folded;
}

} // namespace tessaro::detail
