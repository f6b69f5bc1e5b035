#include "typicalbodies.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace typicalbodies {

QString cartUuid()
{
    return QStringLiteral("6f1c2d3e-7a8b-4c9d-8e0f-112233445566");
}

QJsonObject cartUpdateRequest()
{
    QJsonArray items;
    for (int line = 1; line <= 5; ++line) {
        items.append(QJsonObject{{QStringLiteral("sequenceNumber"), line},
                                 {QStringLiteral("artNo"), QStringLiteral("10020%1").arg(line)},
                                 {QStringLiteral("quantity"), 1.5 * line},
                                 {QStringLiteral("barcode"), QStringLiteral("460000000000%1").arg(line)}});
    }
    return {{QStringLiteral("uuid"), cartUuid()}, {QStringLiteral("items"), items}};
}

QByteArray cartUpdateRequestBytes()
{
    return QJsonDocument(cartUpdateRequest()).toJson(QJsonDocument::Compact);
}

QByteArray cartUpdateAnswer()
{
    QJsonArray items;
    for (int line = 1; line <= 5; ++line) {
        items.append(QJsonObject{{QStringLiteral("sequenceNumber"), line},
                                 {QStringLiteral("artNo"), QStringLiteral("10020%1").arg(line)},
                                 {QStringLiteral("artName"), QStringLiteral("Товар %1").arg(line)},
                                 {QStringLiteral("quantity"), 1.5 * line},
                                 {QStringLiteral("prices"), QJsonObject{{QStringLiteral("totalPriceGross"), 99.9 * line}}}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("uuid"), cartUuid()},
                                     {QStringLiteral("status"), QStringLiteral("collecting")},
                                     {QStringLiteral("totalItems"), 5},
                                     {QStringLiteral("items"), items}})
        .toJson(QJsonDocument::Compact);
}

} // namespace typicalbodies
