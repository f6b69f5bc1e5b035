#include "emulator/cartline.h"

#include "emulator/money.h"

#include <QJsonArray>

namespace tessaro::emulator {

double CartLine::totalPriceGross() const
{
    return Money::round(unitPrice * quantity);
}

double CartLine::totalDiscountGross() const
{
    return Money::round((listPrice - unitPrice) * quantity);
}

QJsonObject CartLine::toJson() const
{
    QJsonArray dnr;
    for (const QString &coupon : coupons)
        dnr.append(QJsonObject{{QStringLiteral("couponNo"), coupon}});

    QJsonObject object{
        {QStringLiteral("sequenceNumber"), sequenceNumber},
        {QStringLiteral("artNo"), artNo},
        {QStringLiteral("artName"), artName},
        {QStringLiteral("quantity"), quantity},
        {QStringLiteral("prices"), QJsonObject{
            {QStringLiteral("unitPriceGross"), unitPrice},
            {QStringLiteral("totalPriceGross"), totalPriceGross()},
            {QStringLiteral("totalDiscountGross"), totalDiscountGross()},
        }},
        {QStringLiteral("dnr"), dnr},
        {QStringLiteral("traceability"), traceability.isEmpty() ? QJsonArray() : QJsonArray{traceability}},
    };
    if (!barcode.isEmpty())
        object.insert(QStringLiteral("barcode"), barcode);
    if (!subsysNo.isEmpty())
        object.insert(QStringLiteral("subsysNo"), subsysNo);
    if (eanReasonCode >= 0)
        object.insert(QStringLiteral("eanReasonCode"), eanReasonCode);
    if (priceReasonCode >= 0)
        object.insert(QStringLiteral("priceReasonCode"), priceReasonCode);
    return object;
}

} // namespace tessaro::emulator
