#include "returndocuments.h"

#include <documentcardrecord.h>
#include <documentimpact.h>

#include <QFile>
#include <QJsonDocument>

const QString ReturnDocuments::customerCard = QStringLiteral("778899123456789012");
const QString ReturnDocuments::plainReturnDigest = QStringLiteral("feb320be9e0927484bd437f86ce4a78a");
const QString ReturnDocuments::returnBySaleDigest = QStringLiteral("8e3f2cdedaad0abcde4c42423d9dcb31");

QVariantMap ReturnDocuments::invoiceInfo()
{
    return {
        {QStringLiteral("cashCode"), QStringLiteral("0012")},
        {QStringLiteral("invoiceNumber"), QStringLiteral("000345")},
        {QStringLiteral("storeNumber"), QStringLiteral("0007")},
        {QStringLiteral("invoiceDate"), QDate(2024, 2, 1)},
    };
}

QSharedPointer<BackDocument> ReturnDocuments::plainReturn()
{
    const auto document = startPlainReturn();
    // What binding the return kept after the cashier entered the sale.
    document->setDocumentProperty(QStringLiteral("invoiceInfo"), invoiceInfo());
    addPositions(*document);
    giveOwnReason(*document);
    payPlainReturn(*document);
    return document;
}

QSharedPointer<BackBySaleDocument> ReturnDocuments::returnBySale()
{
    auto document = QSharedPointer<BackBySaleDocument>::create();
    start(*document, QStringLiteral("backbysale-1"));
    // Binding takes the sale from these: till and invoice from the
    // identifier, the store and the date from the document.
    document->setSaleIdentifier(QStringLiteral("000701022024000012000345"));
    document->setDateTime(QDateTime(QDate(2024, 2, 1), QTime(10, 30)));
    addPositions(*document);
    giveOwnReason(*document);
    document->addMoneyItem(payment(3, MoneyItem::BankCard, 349.99));
    return document;
}

QSharedPointer<BackDocument> ReturnDocuments::startPlainReturn()
{
    auto document = QSharedPointer<BackDocument>::create();
    start(*document, QStringLiteral("back-1"));
    return document;
}

void ReturnDocuments::addPositions(AbstractDocument &document)
{
    const auto first = position(1, QStringLiteral("100200"), 2.0, 250.0);
    first->setVatRate(20.0);
    first->setActualVatIndex(1);
    first->setVatCodesArray({1, 3});
    first->setVatSumsArray({0.0, 41.67});
    // The record as positions keep it: its properties by name.
    first->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("traceability"),
                             QVariantMap{{QStringLiteral("cdn"), QStringLiteral("CDN-0001")},
                                         {QStringLiteral("cdnOrig"), QStringLiteral("0123ABC")},
                                         {QStringLiteral("serialNumber"), QStringLiteral("SN-77")},
                                         {QStringLiteral("gtin"), QStringLiteral("04601234567890")}});
    document.addGoodsItem(first);

    const auto second = position(2, QStringLiteral("300400"), 1.0, 99.99);
    second->setGoodsKitBarcode(QStringLiteral("0104601234567890215KIT"));
    document.addGoodsItem(second);
}

void ReturnDocuments::payPlainReturn(AbstractDocument &document)
{
    document.addMoneyItem(payment(3, MoneyItem::BankCard, 200.0));
    document.addMoneyItem(payment(1, MoneyItem::Cash, 100.0));
    document.addMoneyItem(payment(1, MoneyItem::Cash, 50.0));
    document.addMoneyItem(payment(1, MoneyItem::Cash, 0.3, true));
    // Rounding by change and fiscal rounding count; the loyalty discount (mode 2) does not.
    document.addImpact(QSharedPointer<DocumentImpact>::create(
        QList<DocumentImpactDetail>{{6, 0.1}, {2, 10.0}, {11, 0.05}}));
    document.setRoundingSum(0.14);
}

void ReturnDocuments::giveOwnReason(AbstractDocument &document)
{
    document.getGoodsItemByPosnum(1)->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), 3);
}

QByteArray ReturnDocuments::expectedFile(const QString &fileName)
{
    QFile file(QStringLiteral(ADVICENOTE_DATA_DIR "/") + fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject ReturnDocuments::expectedBody(const QString &fileName)
{
    return QJsonDocument::fromJson(expectedFile(fileName)).object();
}

QMap<QString, QString> ReturnDocuments::clientSettings()
{
    return {
        {QStringLiteral("Tessaro.VatCodes:5"), QStringLiteral("3")},
        {QStringLiteral("Tessaro.PaymentCodes:2"), QStringLiteral("3")},
    };
}

QSharedPointer<GoodsItem> ReturnDocuments::position(int posnum, const QString &code, double quantity, double sum)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setPosnum(posnum);
    item->setCode(code);
    item->setBquant(quantity);
    item->setPrice(sum / quantity);
    item->setSumb(sum);
    return item;
}

QSharedPointer<MoneyItem> ReturnDocuments::payment(int code, int valutType, double amount, bool change)
{
    auto item = QSharedPointer<MoneyItem>::create();
    item->setValCode(code);
    item->setValutType(valutType);
    item->setAmount(amount);
    item->setChange(change);
    return item;
}

void ReturnDocuments::start(AbstractDocument &document, const QString &id)
{
    document.setId(id);
    document.setShopCode(QStringLiteral("7"));
    document.setCommonBackReason(5);
    document.addCardRecord(QSharedPointer<DocumentCardRecord>::create(27, customerCard));
}
