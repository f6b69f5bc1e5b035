#pragma once

#include "traceability.h"

#include <QJsonObject>
#include <QStringList>

#include <optional>

namespace tessaro {

/// One line of a cart as the service returns it (an element of "items").
///
/// Every accessor reads its field anew; a missing or mistyped field gives the
/// accessor's default.
class Item
{
public:
    Item() = default;
    explicit Item(const QJsonObject &object);

    /// "artName".
    QString name() const;
    /// "artNo", as text also when the service sends a number.
    QString artNo() const;
    double quantity() const;
    /// The line's number on the cart; 0 when missing.
    int sequenceNumber() const;
    /// "prices.totalPriceGross": the line's gross total after discounts.
    double totalPriceGross() const;
    /// "prices.totalDiscountGross".
    double totalDiscountGross() const;
    /// The "couponNo" of each "dnr" entry, in order, without empty ones.
    QStringList coupons() const;
    /// The unit price: the gross total over the quantity, rounded to two
    /// decimals; 0 for a quantity too small to divide by.
    double getPriceForItem() const;
    /// The first record of "traceability"; none when the array is empty or missing.
    std::optional<orvel::Traceability> traceability() const;

    /// The line as the service sent it.
    QJsonObject json() const { return object; }

private:
    /// The number at a dotted \a path of nested objects; 0 when a level is missing.
    double numberAt(const QString &path) const;

    QJsonObject object;
};

} // namespace tessaro
