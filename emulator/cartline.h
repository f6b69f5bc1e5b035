#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace tessaro::emulator {

/// One line of a cart: the article, its quantity and prices, the coupons bound
/// to it and its traceability record.
class CartLine
{
public:
    /// Gross total of the line after discounts, to the cent.
    double totalPriceGross() const;
    /// Gross discount of the line (list price minus the price charged), to the cent.
    double totalDiscountGross() const;

    /// The line as cart answers show it: "sequenceNumber", "artNo", "artName",
    /// "quantity", "prices" {"unitPriceGross", "totalPriceGross",
    /// "totalDiscountGross"}, "dnr" [{"couponNo"}], "traceability" [record].
    QJsonObject toJson() const;

    int sequenceNumber = 0;
    QString artNo;
    QString artName;
    QString barcode;
    QString subsysNo;
    QString scanerInput;
    double quantity = 0.0;
    double listPrice = 0.0;
    double unitPrice = 0.0;
    int eanReasonCode = -1;       ///< -1: none sent
    int priceReasonCode = -1;     ///< -1: price not overwritten
    QStringList coupons;
    QJsonObject traceability;
};

} // namespace tessaro::emulator
