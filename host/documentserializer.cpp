#include "documentserializer.h"

#include "backbysaledocument.h"
#include "edocumenttype.h"

#include <QJsonArray>
#include <QMetaProperty>

namespace {

QJsonArray intArray(const QList<int> &values)
{
    QJsonArray array;
    for (int value : values)
        array << value;
    return array;
}

QJsonArray doubleArray(const QList<double> &values)
{
    QJsonArray array;
    for (double value : values)
        array << value;
    return array;
}

QJsonObject goodsToJson(const GoodsItem &item)
{
    QJsonObject additional;
    const auto data = item.additionalData();
    for (auto it = data.cbegin(); it != data.cend(); ++it)
        additional.insert(it.key(), QJsonObject::fromVariantMap(it.value()));
    QJsonArray methods;
    for (int method : item.getTmc()->getMethods())
        methods << method;
    return {
        {QStringLiteral("posnum"), item.getPosnum()},
        {QStringLiteral("code"), item.getCode()},
        {QStringLiteral("barcode"), item.getBarcode()},
        {QStringLiteral("name"), item.getName()},
        {QStringLiteral("quantity"), item.getQuantity()},
        {QStringLiteral("price"), item.getPrice()},
        {QStringLiteral("sum"), item.getSumb()},
        {QStringLiteral("vatRate"), item.getVatRate()},
        {QStringLiteral("actualVatIndex"), item.getActualVatIndex()},
        {QStringLiteral("vatCodes"), intArray(item.getVatCodesArray())},
        {QStringLiteral("vatSums"), doubleArray(item.getVatSumsArray())},
        {QStringLiteral("goodsKitBarcode"), item.getGoodsKitBarcode()},
        {QStringLiteral("inputRawData"), item.getInputRawData()},
        {QStringLiteral("exciseMark"), item.getExciseMark()},
        {QStringLiteral("bcodeMode"), item.getBcodeMode()},
        {QStringLiteral("inputType"), item.getInputType()},
        {QStringLiteral("getMethods"), methods},
        {QStringLiteral("fractional"), item.getTmcUnit()->isFractional()},
        {QStringLiteral("additionalData"), additional},
    };
}

QSharedPointer<GoodsItem> goodsFromJson(const QJsonObject &json)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(json.value(QStringLiteral("posnum")).toInt());
    item->setCode(json.value(QStringLiteral("code")).toString());
    item->setBarcode(json.value(QStringLiteral("barcode")).toString());
    item->setName(json.value(QStringLiteral("name")).toString());
    item->setBquant(json.value(QStringLiteral("quantity")).toDouble(1.0));
    item->setPrice(json.value(QStringLiteral("price")).toDouble());
    item->setSumb(json.value(QStringLiteral("sum")).toDouble());
    item->setVatRate(json.value(QStringLiteral("vatRate")).toDouble());
    item->setActualVatIndex(json.value(QStringLiteral("actualVatIndex")).toInt(-1));
    QList<int> codes;
    for (const QJsonValue &value : json.value(QStringLiteral("vatCodes")).toArray())
        codes << value.toInt();
    item->setVatCodesArray(codes);
    QList<double> sums;
    for (const QJsonValue &value : json.value(QStringLiteral("vatSums")).toArray())
        sums << value.toDouble();
    item->setVatSumsArray(sums);
    item->setGoodsKitBarcode(json.value(QStringLiteral("goodsKitBarcode")).toString());
    item->setInputRawData(json.value(QStringLiteral("inputRawData")).toString());
    item->setExciseMark(json.value(QStringLiteral("exciseMark")).toString());
    item->setBcodeMode(json.value(QStringLiteral("bcodeMode")).toInt());
    item->setInputType(json.value(QStringLiteral("inputType")).toInt(GoodsItem::Scanner));
    QSet<int> methods;
    for (const QJsonValue &value : json.value(QStringLiteral("getMethods")).toArray())
        methods.insert(value.toInt());
    item->setTmc(QSharedPointer<Tmc>::create(methods));
    item->setTmcUnit(QSharedPointer<TmcUnit>::create(json.value(QStringLiteral("fractional")).toBool()));
    QHash<QString, QVariantMap> additional;
    const QJsonObject data = json.value(QStringLiteral("additionalData")).toObject();
    for (auto it = data.constBegin(); it != data.constEnd(); ++it)
        additional.insert(it.key(), it.value().toObject().toVariantMap());
    item->setAdditionalData(additional);
    return item;
}

// Payments are written property by property, so every value a template may name survives.
QJsonObject moneyToJson(const MoneyItem &item)
{
    QJsonObject json;
    const QMetaObject *meta = item.metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        json.insert(QString::fromLatin1(property.name()), QJsonValue::fromVariant(property.read(&item)));
    }
    return json;
}

QSharedPointer<MoneyItem> moneyFromJson(const QJsonObject &json)
{
    auto item = QSharedPointer<MoneyItem>::create();
    for (auto it = json.constBegin(); it != json.constEnd(); ++it)
        item->setProperty(it.key().toLatin1().constData(), it.value().toVariant());
    return item;
}

} // namespace

QJsonObject DocumentSerializer::toJson(const AbstractDocument &document)
{
    QJsonArray goods;
    for (const auto &item : document.getGoodsItems())
        goods << goodsToJson(*item);
    QJsonArray payments;
    for (const auto &item : document.getMoneyItems())
        payments << moneyToJson(*item);
    QJsonArray impacts;
    for (const auto &impact : document.getImpacts()) {
        QJsonArray totals;
        for (const auto &detail : impact->getTotals())
            totals << QJsonObject{{QStringLiteral("discountMode"), detail.getDiscountMode()},
                                  {QStringLiteral("discountSum"), detail.getDiscountSum()}};
        impacts << totals;
    }
    QJsonArray cards;
    for (const auto &card : document.getCardRecords())
        cards << QJsonObject{{QStringLiteral("cardType"), card->getCardType()},
                             {QStringLiteral("number"), QJsonValue::fromVariant(card->getNumber())},
                             {QStringLiteral("maxPointsForSpend"), card->getMaxPointsForSpend()}};
    QJsonObject pluginData;
    const auto data = document.pluginData();
    for (auto it = data.cbegin(); it != data.cend(); ++it)
        pluginData.insert(QString::number(it.key()), QJsonObject::fromVariantMap(it.value()));

    QJsonObject json{
        {QStringLiteral("type"), document.getType()},
        {QStringLiteral("id"), document.getId()},
        {QStringLiteral("dateTime"), document.getDateTime().toString(Qt::ISODateWithMs)},
        {QStringLiteral("shopCode"), document.getShopCode()},
        {QStringLiteral("properties"), QJsonObject::fromVariantMap(document.documentProperties())},
        {QStringLiteral("goods"), goods},
        {QStringLiteral("payments"), payments},
        {QStringLiteral("impacts"), impacts},
        {QStringLiteral("cards"), cards},
        {QStringLiteral("commonBackReason"), QJsonValue::fromVariant(document.getCommonBackReason())},
        {QStringLiteral("backReasonDictionaryKind"), document.getBackReasonDictionaryKind()},
        {QStringLiteral("roundingSum"), document.getRoundingSum()},
        {QStringLiteral("pluginData"), pluginData},
        {QStringLiteral("closed"), document.isClosed()},
    };
    if (const auto *backBySale = qobject_cast<const BackBySaleDocument *>(&document)) {
        json.insert(QStringLiteral("saleIdentifier"), backBySale->getSaleIdentifier());
        if (const auto source = backBySale->getSourceDocument())
            json.insert(QStringLiteral("source"), toJson(*source));
    }
    return json;
}

QSharedPointer<AbstractDocument> DocumentSerializer::fromJson(const QJsonObject &json)
{
    if (!json.contains(QStringLiteral("type")))
        return {};
    const int type = json.value(QStringLiteral("type")).toInt();
    QSharedPointer<AbstractDocument> document;
    if (type == EDocumentType::BackBySale) {
        auto backBySale = QSharedPointer<BackBySaleDocument>::create();
        backBySale->setSaleIdentifier(json.value(QStringLiteral("saleIdentifier")).toString());
        if (json.contains(QStringLiteral("source")))
            backBySale->setSourceDocument(fromJson(json.value(QStringLiteral("source")).toObject()));
        document = backBySale;
    } else if (type == EDocumentType::Back) {
        document = QSharedPointer<BackDocument>::create();
    } else {
        document = QSharedPointer<AbstractDocument>::create(type);
    }
    document->setId(json.value(QStringLiteral("id")).toString());
    document->setDateTime(QDateTime::fromString(json.value(QStringLiteral("dateTime")).toString(), Qt::ISODateWithMs));
    document->setShopCode(json.value(QStringLiteral("shopCode")).toString());
    const QVariantMap properties = json.value(QStringLiteral("properties")).toObject().toVariantMap();
    for (auto it = properties.cbegin(); it != properties.cend(); ++it)
        document->setDocumentProperty(it.key(), it.value());
    for (const QJsonValue &value : json.value(QStringLiteral("goods")).toArray())
        document->addGoodsItem(goodsFromJson(value.toObject()));
    for (const QJsonValue &value : json.value(QStringLiteral("payments")).toArray())
        document->addMoneyItem(moneyFromJson(value.toObject()));
    for (const QJsonValue &value : json.value(QStringLiteral("impacts")).toArray()) {
        auto impact = QSharedPointer<DocumentImpact>::create();
        for (const QJsonValue &detail : value.toArray())
            impact->addTotal(DocumentImpactDetail(detail[QStringLiteral("discountMode")].toInt(),
                                                  detail[QStringLiteral("discountSum")].toDouble()));
        document->addImpact(impact);
    }
    for (const QJsonValue &value : json.value(QStringLiteral("cards")).toArray()) {
        auto card = QSharedPointer<DocumentCardRecord>::create(value[QStringLiteral("cardType")].toInt(),
                                                               value[QStringLiteral("number")].toVariant());
        card->setMaxPointsForSpend(value[QStringLiteral("maxPointsForSpend")].toInt());
        document->addCardRecord(card);
    }
    document->setCommonBackReason(json.value(QStringLiteral("commonBackReason")).toVariant());
    document->setBackReasonDictionaryKind(json.value(QStringLiteral("backReasonDictionaryKind")).toInt(2));
    document->setRoundingSum(json.value(QStringLiteral("roundingSum")).toDouble());
    QHash<int, QVariantMap> pluginData;
    const QJsonObject data = json.value(QStringLiteral("pluginData")).toObject();
    for (auto it = data.constBegin(); it != data.constEnd(); ++it)
        pluginData.insert(it.key().toInt(), it.value().toObject().toVariantMap());
    document->setPluginData(pluginData);
    document->setClosed(json.value(QStringLiteral("closed")).toBool());
    return document;
}
