#include "documentbuilder.h"

#include <backbysaledocument.h>
#include <documentimpact.h>
#include <edocumenttype.h>
#include <singleton.h>
#include <valutcollection.h>

namespace till {

DocumentBuilder::DocumentBuilder(int cardType, const QString &store)
    : m_cardType(cardType)
    , m_store(store)
{
}

QSharedPointer<AbstractDocument> DocumentBuilder::document(const DocumentSpec &spec, const QString &id, const QDateTime &now) const
{
    QSharedPointer<AbstractDocument> document;
    if (spec.type == EDocumentType::BackBySale) {
        auto backBySale = QSharedPointer<BackBySaleDocument>::create();
        backBySale->setSaleIdentifier(spec.saleIdentifier);
        if (spec.saleDate) {
            auto sale = QSharedPointer<AbstractDocument>::create(EDocumentType::Sale);
            sale->setDateTime(QDateTime(*spec.saleDate, QTime(12, 0)));
            sale->setShopCode(spec.store.isEmpty() ? m_store : spec.store);
            backBySale->setSourceDocument(sale);
        }
        document = backBySale;
    } else if (spec.type == EDocumentType::Back) {
        document = QSharedPointer<BackDocument>::create();
    } else {
        document = QSharedPointer<AbstractDocument>::create(spec.type);
    }
    document->setId(id);
    document->setDateTime(spec.dateTime.value_or(now));
    document->setShopCode(spec.store.isEmpty() ? m_store : spec.store);
    for (auto it = spec.properties.cbegin(); it != spec.properties.cend(); ++it)
        document->setDocumentProperty(it.key(), it.value());
    int posnum = 0;
    for (const PositionSpec &position : spec.positions)
        document->addGoodsItem(DocumentBuilder::position(position, ++posnum));
    for (const PaymentSpec &payment : spec.payments)
        document->addMoneyItem(DocumentBuilder::payment(payment));
    for (const ImpactSpec &impactSpec : spec.impacts) {
        auto impact = QSharedPointer<DocumentImpact>::create();
        for (const auto &[mode, sum] : impactSpec.totals)
            impact->addTotal(DocumentImpactDetail(mode, sum));
        document->addImpact(impact);
    }
    if (!spec.card.isEmpty())
        document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(m_cardType, spec.card));
    document->setCommonBackReason(spec.commonReason);
    document->setBackReasonDictionaryKind(spec.reasonDictionary);
    document->setRoundingSum(spec.roundingSum);
    for (auto it = spec.pluginData.cbegin(); it != spec.pluginData.cend(); ++it)
        document->setPluginData(m_cardType, it.key(), it.value());
    return document;
}

QSharedPointer<GoodsItem> DocumentBuilder::position(const PositionSpec &spec, int posnum)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(posnum);
    item->setCode(spec.code);
    item->setBarcode(spec.barcode);
    item->setName(spec.name);
    if (spec.quantity)
        item->setBquant(*spec.quantity);
    item->setPrice(spec.price);
    item->setSumb(spec.sum.value_or(item->getQuantity() * spec.price));
    item->setVatRate(spec.vatRate);
    item->setActualVatIndex(spec.vatIndex);
    item->setVatCodesArray(spec.vatCodes);
    item->setVatSumsArray(spec.vatSums);
    item->setTmc(QSharedPointer<Tmc>::create(QSet<int>(spec.getMethods.cbegin(), spec.getMethods.cend())));
    item->setTmcUnit(QSharedPointer<TmcUnit>::create(spec.fractional));
    item->setInputType(spec.inputType);
    item->setExciseMark(spec.exciseMark);
    item->setGoodsKitBarcode(spec.goodsKitBarcode);
    item->setInputRawData(spec.inputRawData);
    item->setBcodeMode(spec.bcodeMode);
    item->setAdditionalData(spec.data);
    return item;
}

QSharedPointer<MoneyItem> DocumentBuilder::payment(const PaymentSpec &spec)
{
    auto item = QSharedPointer<MoneyItem>::create();
    const ValutCollection::Valut valut = Singleton<ValutCollection>::instance()->getValut(spec.code);
    item->setValCode(spec.code);
    item->setValName(valut.name);
    if (valut.type != 0)
        item->setValutType(valut.type);
    item->setAmount(spec.amount);
    item->setChange(spec.change);
    for (auto it = spec.details.cbegin(); it != spec.details.cend(); ++it)
        item->setProperty(it.key().toLatin1().constData(), it.value());
    return item;
}

} // namespace till
