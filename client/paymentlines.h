#pragma once

// PaymentLines: a document's payments as the service takes them, with the
// cash paid out folded into one line.

#include <QJsonArray>
#include <QJsonObject>

class MoneyItem;

namespace tessaro {

/// A document's payments as the service takes them, in the cart's PAID body
/// and in a return's advice note alike.
///
/// Every payment goes as its own line, in the order added, except the cash
/// paid out: that goes as one line, the last cash payment's, appended after
/// all others with the cash total and the receipt's rounding. Change is no
/// cash paid out and goes as a line of its own. The lines themselves are the
/// caller's, since the two bodies describe a payment differently.
class PaymentLines
{
public:
    /// Adds the payment \a moneyItem, described by \a line.
    void add(const MoneyItem &moneyItem, const QJsonObject &line);

    /// Whether a cash line is kept; only then does the receipt's rounding count.
    bool hasCash() const { return !m_cash.isEmpty(); }

    /// The lines in order, then the cash line, if any, carrying the cash
    /// total rounded to hundredths as "paymentAmount" and, when \a rounding
    /// is above half a kopeck, \a rounding rounded to hundredths as
    /// "paymentRoundingAmount".
    QJsonArray toJsonArray(double rounding) const;

private:
    QJsonArray m_lines;
    QJsonObject m_cash;  ///< empty while nothing was paid out in cash
    double m_cashTotal = 0.0;
};

} // namespace tessaro
