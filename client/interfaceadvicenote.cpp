// Interface: the advice note that tells the service of a return, built from
// the return document and sent unless the same note was answered before.

#include "interface.h"

#include "advicenotebody.h"
#include "hostsdk/hostadapter.h"
#include "interfacedetail.h"
#include "paymentlines.h"

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
    const QSharedPointer<SimpleProgress> progress = hostsdk::showProgress(
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
    PaymentLines lines;
    const QList<QSharedPointer<MoneyItem>> moneyItems = hostsdk::payments(*document);
    for (const QSharedPointer<MoneyItem> &moneyItem : moneyItems) {
        // A list entry the host left empty pays nothing.
        if (!moneyItem)
            continue;
        const int currency = moneyItem->getValCode();
        lines.add(*moneyItem, QJsonObject{{QStringLiteral("code"), QString::number(paymentCodes.value(currency, currency))},
                                          {QStringLiteral("amount"), moneyItem->getAmount()}});
    }

    QSet<int> roundingModes;
    if (hostsdk::configBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), true))
        roundingModes.insert(changeRoundingDiscountMode);
    if (hostsdk::configBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), true))
        roundingModes.insert(roundingDiscountMode);
    // The service takes the rounding's size only.
    return lines.toJsonArray(lines.hasCash() ? qAbs(roundingTotal(*document, roundingModes)) : 0.0);
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
    // An answer that came through without a return invoice number would close
    // the return with an empty one; the close's rules decide, the log says so.
    if (answer.error() == 0 && answer.key4().isEmpty())
        logger->warn(QStringLiteral("Ответ на уведомление о возврате не содержит номера инвойса возврата (Key4)"));
    return answer;
}

QJsonObject Interface::adviceNoteBody(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice,
                                      bool withVat)
{
    const Registry &registry = Singleton<Session>::instance()->getRegistry();
    // The customer card is a condition of every return; should the host still
    // close one without it, the service gets an empty number rather than the
    // till failing.
    const QSharedPointer<DocumentCardRecord> card = hostsdk::cardRecord(*document, loyaltyCardType);
    const QString cardNumber = card ? card->getNumber().toString() : QString();
    AdviceNoteBody body(registry.getCashCode().toInt(), registry.getShopCode().toInt(), getCardBarcode(cardNumber),
                        getOriginalInvoiceObject(invoice));

    const AdviceNoteBody::ItemRules rules{vatCodes, additionalDataSection, withVat,
                                          hostsdk::commonBackReason(*document).toInt()};
    const QList<QSharedPointer<GoodsItem>> positions = hostsdk::positions(*document);
    for (const QSharedPointer<GoodsItem> &position : positions)
        body.addItem(*position, rules);

    body.setPayments(getBackPayments(document));
    return body.toJson();
}

} // namespace tessaro
