#include "cartupdateresponse.h"

#include <QJsonArray>

namespace tessaro {

CartUpdateResponse::CartUpdateResponse(const Response &response)
    : Response(response)
{
}

Response::Status CartUpdateResponse::status() const
{
    const QString state = statusString();
    if (state == QLatin1String("init") || state == QLatin1String("collecting"))
        return Success;
    if (state == QLatin1String("3V not available"))
        return ValidationUnavailable;
    if (state == QLatin1String("3V validation error"))
        return ValidationError;
    if (statusCode() == 3001)
        return CartUpdateConflict;
    return Response::status();
}

QString CartUpdateResponse::uuid() const
{
    return object.value(QLatin1String("uuid")).toString();
}

QList<Item> CartUpdateResponse::items() const
{
    QList<Item> lines;
    const QJsonArray entries = object.value(QLatin1String("items")).toArray();
    for (const QJsonValue &entry : entries)
        lines << Item(entry.toObject());
    return lines;
}

int CartUpdateResponse::statusCode() const
{
    return object.value(QLatin1String("statusCode")).toInt(-1);
}

int CartUpdateResponse::pointsToRredeem() const
{
    return object.value(QLatin1String("pointsToRredeem")).toInt();
}

int CartUpdateResponse::totalItems() const
{
    return object.value(QLatin1String("totalItems")).toInt();
}

double CartUpdateResponse::totalQuantity() const
{
    double total = 0.0;
    const QList<Item> lines = items();
    for (const Item &line : lines)
        total += line.quantity();
    return total;
}

QStringList CartUpdateResponse::messages() const
{
    QStringList texts;
    const QJsonArray entries = object.value(QLatin1String("messages")).toArray();
    for (const QJsonValue &entry : entries)
        texts << entry.toObject().value(QLatin1String("text")).toString();
    return texts;
}

} // namespace tessaro
