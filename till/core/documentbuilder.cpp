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

QSharedPointer<AbstractDocument> DocumentBuilder::document(const DocumentSpec &described, const QString &id, const QDateTime &now) const
{
    QSharedPointer<AbstractDocument> document;
    if (described.type == EDocumentType::BackBySale) {
        auto backBySale = QSharedPointer<BackBySaleDocument>::create();
        backBySale->setSaleIdentifier(described.saleIdentifier);
        if (described.saleDate) {
            auto sale = QSharedPointer<AbstractDocument>::create(EDocumentType::Sale);
            sale->setDateTime(QDateTime(*described.saleDate, QTime(12, 0)));
            sale->setShopCode(described.store.isEmpty() ? m_store : described.store);
            backBySale->setSourceDocument(sale);
        }
        document = backBySale;
    } else if (described.type == EDocumentType::Back) {
        document = QSharedPointer<BackDocument>::create();
    } else {
        document = QSharedPointer<AbstractDocument>::create(described.type);
    }
    document->setId(id);
    document->setDateTime(described.dateTime.value_or(now));
    document->setShopCode(described.store.isEmpty() ? m_store : described.store);
    for (auto it = described.properties.cbegin(); it != described.properties.cend(); ++it)
        document->setDocumentProperty(it.key(), it.value());
    int posnum = 0;
    for (const PositionSpec &position : described.positions)
        document->addGoodsItem(DocumentBuilder::position(position, ++posnum));
    for (const PaymentSpec &payment : described.payments)
        document->addMoneyItem(DocumentBuilder::payment(payment));
    for (const ImpactSpec &impactSpec : described.impacts) {
        auto impact = QSharedPointer<DocumentImpact>::create();
        for (const auto &[mode, sum] : impactSpec.totals)
            impact->addTotal(DocumentImpactDetail(mode, sum));
        document->addImpact(impact);
    }
    if (!described.card.isEmpty())
        document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(m_cardType, described.card));
    document->setCommonBackReason(described.commonReason);
    document->setBackReasonDictionaryKind(described.reasonDictionary);
    document->setRoundingSum(described.roundingSum);
    for (auto it = described.pluginData.cbegin(); it != described.pluginData.cend(); ++it)
        document->setPluginData(m_cardType, it.key(), it.value());
    return document;
}

QSharedPointer<GoodsItem> DocumentBuilder::position(const PositionSpec &described, int posnum)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(posnum);
    item->setCode(described.code);
    item->setBarcode(described.barcode);
    item->setName(described.name);
    if (described.quantity)
        item->setBquant(*described.quantity);
    item->setPrice(described.price);
    item->setSumb(described.sum.value_or(item->getQuantity() * described.price));
    item->setVatRate(described.vatRate);
    item->setActualVatIndex(described.vatIndex);
    item->setVatCodesArray(described.vatCodes);
    item->setVatSumsArray(described.vatSums);
    item->setTmc(QSharedPointer<Tmc>::create(QSet<int>(described.getMethods.cbegin(), described.getMethods.cend())));
    item->setTmcUnit(QSharedPointer<TmcUnit>::create(described.fractional));
    item->setInputType(described.inputType);
    item->setExciseMark(described.exciseMark);
    item->setGoodsKitBarcode(described.goodsKitBarcode);
    item->setInputRawData(described.inputRawData);
    item->setBcodeMode(described.bcodeMode);
    item->setAdditionalData(described.data);
    return item;
}

QSharedPointer<MoneyItem> DocumentBuilder::payment(const PaymentSpec &described)
{
    auto item = QSharedPointer<MoneyItem>::create();
    const ValutCollection::Valut valut = Singleton<ValutCollection>::instance()->getValut(described.code);
    item->setValCode(described.code);
    item->setValName(valut.name);
    if (valut.type != 0)
        item->setValutType(valut.type);
    item->setAmount(described.amount);
    item->setChange(described.change);
    for (auto it = described.details.cbegin(); it != described.details.cend(); ++it)
        item->setProperty(it.key().toLatin1().constData(), it.value());
    return item;
}

} // namespace till
