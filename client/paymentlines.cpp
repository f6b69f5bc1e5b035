// PaymentLines: a document's payments as the service takes them, with the
// cash paid out folded into one line.

#include "paymentlines.h"

#include "responses/rounding.h"

#include <moneyitem.h>

namespace tessaro {

void PaymentLines::add(const MoneyItem &moneyItem, const QJsonObject &line)
{
    if (moneyItem.getValutType() == MoneyItem::Cash && !moneyItem.isChange()) {
        m_cashTotal += moneyItem.getAmount();
        m_cash = line;
    } else {
        m_lines.append(line);
    }
}

QJsonArray PaymentLines::toJsonArray(double rounding) const
{
    if (!hasCash())
        return m_lines;
    QJsonObject cash = m_cash;
    // Below half a kopeck there is no rounding.
    if (rounding > 0.005)
        cash.insert(QStringLiteral("paymentRoundingAmount"), roundToHundredths(rounding));
    cash.insert(QStringLiteral("paymentAmount"), roundToHundredths(m_cashTotal));
    QJsonArray lines = m_lines;
    lines.append(cash);
    return lines;
}

} // namespace tessaro
