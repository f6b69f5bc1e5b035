#include "item.h"

#include "rounding.h"

#include <QJsonArray>
#include <QtGlobal>

namespace tessaro {

Item::Item(const QJsonObject &json)
    : object(json)
{
}

QString Item::name() const
{
    return object.value(QLatin1String("artName")).toString();
}

QString Item::artNo() const
{
    return object.value(QLatin1String("artNo")).toVariant().toString();
}

double Item::quantity() const
{
    return object.value(QLatin1String("quantity")).toDouble();
}

int Item::sequenceNumber() const
{
    return object.value(QLatin1String("sequenceNumber")).toInt();
}

double Item::totalPriceGross() const
{
    return numberAt(QStringLiteral("prices.totalPriceGross"));
}

double Item::totalDiscountGross() const
{
    return numberAt(QStringLiteral("prices.totalDiscountGross"));
}

QStringList Item::coupons() const
{
    QStringList numbers;
    const QJsonArray entries = object.value(QLatin1String("dnr")).toArray();
    for (const QJsonValue &entry : entries) {
        const QString number = entry.toObject().value(QLatin1String("couponNo")).toString();
        if (!number.isEmpty())
            numbers << number;
    }
    return numbers;
}

double Item::getPriceForItem() const
{
    const double count = quantity();
    if (qAbs(count) < 0.0005)
        return 0.0;
    return roundToHundredths(totalPriceGross() / count);
}

std::optional<orvel::Traceability> Item::traceability() const
{
    const QJsonArray records = object.value(QLatin1String("traceability")).toArray();
    if (records.isEmpty())
        return std::nullopt;
    return orvel::Traceability::fromMap(records.first().toObject().toVariantMap());
}

double Item::numberAt(const QString &path) const
{
    const QStringList keys = path.split(QLatin1Char('.'));
    QJsonValue value = object;
    for (const QString &key : keys)
        value = value.toObject().value(key);
    return value.toDouble();
}

} // namespace tessaro
