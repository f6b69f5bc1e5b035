#include "documentsnapshot.h"

#include <backbysaledocument.h>

#include <QJsonArray>

namespace till {

QJsonObject DocumentSnapshot::toJson(const AbstractDocument &document, int pluginSystem)
{
    QJsonArray positions;
    for (const auto &item : document.getGoodsItems()) {
        QJsonObject data;
        const auto additional = item->additionalData();
        for (auto it = additional.cbegin(); it != additional.cend(); ++it)
            data.insert(it.key(), QJsonObject::fromVariantMap(it.value()));
        positions << QJsonObject{{QStringLiteral("posnum"), item->getPosnum()},
                                 {QStringLiteral("code"), item->getCode()},
                                 {QStringLiteral("barcode"), item->getBarcode()},
                                 {QStringLiteral("name"), item->getName()},
                                 {QStringLiteral("quantity"), item->getQuantity()},
                                 {QStringLiteral("price"), item->getPrice()},
                                 {QStringLiteral("sum"), item->getSumb()},
                                 {QStringLiteral("data"), data}};
    }
    QJsonArray payments;
    for (const auto &item : document.getMoneyItems())
        payments << QJsonObject{{QStringLiteral("code"), item->getValCode()},
                                {QStringLiteral("name"), item->getValName()},
                                {QStringLiteral("amount"), item->getAmount()},
                                {QStringLiteral("change"), item->isChange()}};
    QJsonArray cards;
    for (const auto &card : document.getCardRecords())
        cards << QJsonObject{{QStringLiteral("type"), card->getCardType()},
                             {QStringLiteral("number"), card->getNumber().toString()}};
    QJsonObject json{{QStringLiteral("id"), document.getId()},
                     {QStringLiteral("type"), document.getType()},
                     {QStringLiteral("closed"), document.isClosed()},
                     {QStringLiteral("commonReason"), QJsonValue::fromVariant(document.getCommonBackReason())},
                     {QStringLiteral("pluginData"), QJsonObject::fromVariantMap(document.pluginData().value(pluginSystem))},
                     {QStringLiteral("properties"), QJsonObject::fromVariantMap(document.documentProperties())},
                     {QStringLiteral("positions"), positions},
                     {QStringLiteral("payments"), payments},
                     {QStringLiteral("cards"), cards}};
    if (const auto *backBySale = qobject_cast<const BackBySaleDocument *>(&document))
        json.insert(QStringLiteral("saleIdentifier"), backBySale->getSaleIdentifier());
    return json;
}

} // namespace till
