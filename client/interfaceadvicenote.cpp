// Interface: the advice note that tells the service of a return, built from
// the return document and sent unless the same note was answered before.

#include "interface.h"

#include "interfacedetail.h"
#include "responses/rounding.h"
#include "responses/traceability.h"

#include <abstractdocument.h>
#include <backbysaledocument.h>
#include <config.h>
#include <dialog.h>
#include <documentcardrecord.h>
#include <goodsitem.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <moneyitem.h>
#include <session.h>
#include <singleton.h>

#include <QCryptographicHash>
#include <QJsonDocument>

namespace tessaro {

using detail::changeRoundingDiscountMode;
using detail::config;
using detail::foldCash;
using detail::FoldedPayments;
using detail::loyaltyCardType;
using detail::roundingDiscountMode;
using detail::roundingTotal;
using detail::traceabilityObject;

namespace {

// An advice note without a return document (the host's document is gone):
// nothing is sent, and the empty answer's check refuses whatever asked.
AdviceNoteResponse withoutDocument(const Log4Qt::Logger *logger)
{
    logger->error(QStringLiteral("Нет документа возврата: уведомление о возврате не отправлено"));
    return AdviceNoteResponse();
}

} // namespace

AdviceNoteResponse Interface::adviceNote(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice,
                                         const AdviceNoteResponse &previous)
{
    if (!document)
        return withoutDocument(logger);
    logger->info(QStringLiteral("Создание корзины с помощью готовых данных по чеку возврата"));
    // Open until the service has answered.
    const QSharedPointer<SimpleProgress> progress = MockFactory<Dialog>::create()->showProgress(
        tr::Tr(QStringLiteral("tessaroProgress"), QStringLiteral("Обращение к сервису Tessaro")));
    return sendAdviceNote(adviceNoteBody(document, invoice, true), previous);
}

AdviceNoteResponse Interface::adviceNote(const QSharedPointer<BackBySaleDocument> &document,
                                         const InvoiceInfo &invoice, const AdviceNoteResponse &previous)
{
    if (!document)
        return withoutDocument(logger);
    logger->info(QStringLiteral("Создание корзины с помощью готовых данных для чека возврата по чеку продажи"));
    return sendAdviceNote(adviceNoteBody(document, invoice, false), previous);
}

QJsonObject Interface::getOriginalInvoiceObject(const InvoiceInfo &invoice) const
{
    // Numbers that are not numbers, or do not fit an int, go as 0.
    return QJsonObject{
        {QStringLiteral("date"), invoice.invoiceDate.toString(QStringLiteral("yyyyMMdd"))},
        {QStringLiteral("storeNo"), invoice.storeNumber.toInt()},
        {QStringLiteral("tillNo"), invoice.cashCode.toInt()},
        {QStringLiteral("invoiceNo"), invoice.invoiceNumber},
    };
}

QJsonArray Interface::getBackPayments(const QSharedPointer<AbstractDocument> &document) const
{
    FoldedPayments folded = foldCash(document->getMoneyItems(), [this](const QSharedPointer<MoneyItem> &moneyItem) {
        const int currency = moneyItem->getValCode();
        return QJsonObject{{QStringLiteral("code"), QString::number(paymentCodes.value(currency, currency))},
                           {QStringLiteral("amount"), moneyItem->getAmount()}};
    });

    const Config *settings = config();
    QSet<int> roundingModes;
    if (settings->getBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), true))
        roundingModes.insert(changeRoundingDiscountMode);
    if (settings->getBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), true))
        roundingModes.insert(roundingDiscountMode);
    if (folded.cash.isEmpty())
        return folded.payments;

    // Below half a kopeck there is no rounding; the service takes its size only.
    const double rounding = qAbs(roundingTotal(*document, roundingModes));
    if (rounding > 0.005)
        folded.cash.insert(QStringLiteral("paymentRoundingAmount"), roundToHundredths(rounding));
    folded.cash.insert(QStringLiteral("paymentAmount"), roundToHundredths(folded.cashTotal));
    folded.payments.append(folded.cash);
    return folded.payments;
}

AdviceNoteResponse Interface::sendAdviceNote(const QJsonObject &body, const AdviceNoteResponse &previous)
{
    // Digests stored with earlier answers were taken over this very form of the
    // body; another form would send every stored return again.
    const QString digest = QString::fromLatin1(
        QCryptographicHash::hash(QJsonDocument(body).toJson(QJsonDocument::Indented), QCryptographicHash::Md5).toHex());
    if (digest == previous.requestHashSum) {
        logger->info(QStringLiteral("Отправка запроса не требуется"));
        return previous;
    }
    AdviceNoteResponse answer(send(getUrl(AdviceNote, QString()), body, getHeaders(QString())));
    answer.requestHashSum = digest;
    return answer;
}

QJsonObject Interface::adviceNoteBody(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice,
                                      bool withVat)
{
    const Registry &registry = Singleton<Session>::instance()->getRegistry();
    // The customer card is a condition of every return; should the host still
    // close one without it, the service gets an empty number rather than the
    // till failing.
    const QSharedPointer<DocumentCardRecord> card = document->getCardRecord(loyaltyCardType);
    const QString cardNumber = card ? card->getNumber().toString() : QString();
    QJsonObject header{
        {QStringLiteral("transactionType"), 2},
        {QStringLiteral("tillNo"), registry.getCashCode().toInt()},
        {QStringLiteral("store"), registry.getShopCode().toInt()},
        {QStringLiteral("customer"), QJsonObject{{QStringLiteral("customerNumber"), getCardBarcode(cardNumber)}}},
        {QStringLiteral("originalInvoice"), getOriginalInvoiceObject(invoice)},
    };

    const int commonReason = document->getCommonBackReason().toInt();
    QJsonArray items;
    const QList<QSharedPointer<GoodsItem>> positions = document->getGoodsItems();
    for (const QSharedPointer<GoodsItem> &position : positions)
        items.append(adviceNoteItem(*position, commonReason, withVat));

    header.insert(QStringLiteral("payments"), getBackPayments(document));
    return QJsonObject{{QStringLiteral("header"), header}, {QStringLiteral("items"), items}};
}

QJsonObject Interface::adviceNoteItem(const GoodsItem &position, int commonReason, bool withVat) const
{
    QJsonObject item{
        {QStringLiteral("sequenceNumber"), QString::number(position.getPosnum())},
        {QStringLiteral("subsysNo"), position.getCode()},
    };
    const int vatIndex = position.getActualVatIndex();
    double vatAmount = 0.0;
    if (vatIndex != -1) {
        const int vatCode = position.getVatCodesArray().value(vatIndex);
        item.insert(QStringLiteral("vatCode"), vatCodes.value(vatCode, vatCode));
        if (withVat)
            item.insert(QStringLiteral("vat"), position.getVatRate());
        vatAmount = position.getVatSumsArray().value(vatIndex);
    }
    item.insert(QStringLiteral("vatAmount"), vatAmount);
    item.insert(QStringLiteral("totalDiscountedGross"), roundToHundredths(position.getSumb()));
    item.insert(QStringLiteral("itemPriceNet"), roundToHundredths((position.getSumb() - vatAmount) / position.getQuantity()));
    item.insert(QStringLiteral("quantity"), position.getQuantity());

    // The position's own reason, when it has one, wins over the document's.
    const QVariant ownReason = position.getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"));
    bool isNumber = false;
    const int own = ownReason.toInt(&isNumber);
    item.insert(QStringLiteral("returnReason"), !ownReason.isNull() && isNumber ? own : commonReason);

    const QJsonObject traceability = adviceNoteTraceability(position);
    if (!traceability.isEmpty())
        item.insert(QStringLiteral("traceability"), traceability);
    return item;
}

QJsonObject Interface::adviceNoteTraceability(const GoodsItem &position) const
{
    auto record = position.getAdditionalData(additionalDataSection, QStringLiteral("traceability")).value<orvel::Traceability>();
    // A goods kit is marked by its barcode when the record has no product code.
    if (record.fz1162Field.isEmpty())
        record.fz1162Field = position.getGoodsKitBarcode();
    return traceabilityObject(record, true);
}

} // namespace tessaro
