// Interface: the cart's status, with the PAID body that carries the receipt's
// payments, and the payload and messages the service prepares for a receipt.

#include "interface.h"

#include "hostsdk/hostadapter.h"
#include "interfacedetail.h"
#include "paymentlines.h"
#include "secrets/linesanitizer.h"

#include <abstractdocument.h>
#include <config.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <moneyitem.h>
#include <session.h>
#include <simpleformatter.h>
#include <singleton.h>

namespace tessaro {

using detail::roundingDiscountMode;
using detail::roundingTotal;

namespace {

// \a text without any of \a characters.
QString withoutCharacters(QString text, const QString &characters)
{
    for (const QChar character : characters)
        text.remove(character);
    return text;
}

} // namespace

CartStatusResponse Interface::setCartStatusPaid(const QString &cartUuid)
{
    logger->info(QStringLiteral("Изменение статуса корзины '%1' на PAID").arg(LineSanitizer::escaped(cartUuid)));
    return CartStatusResponse(send(getUrl(CartStatus, cartUuid), generatePayloadCartStatusPaid(), getHeaders(QString())));
}

CartStatusResponse Interface::setCartStatusCancelled(const QString &cartUuid)
{
    logger->info(QStringLiteral("Изменение статуса корзины '%1' на CANCELLED").arg(LineSanitizer::escaped(cartUuid)));
    return CartStatusResponse(send(getUrl(CartStatus, cartUuid), {{QStringLiteral("status"), QStringLiteral("CANCELLED")}},
                                   getHeaders(QString())));
}

QJsonObject Interface::generatePayloadCartStatusPaid()
{
    const QSharedPointer<AbstractDocument> document = Singleton<Session>::instance()->getCurrentDocument();
    const QList<QSharedPointer<MoneyItem>> moneyItems = document ? hostsdk::payments(*document) : QList<QSharedPointer<MoneyItem>>();
    PaymentLines lines;
    for (const QSharedPointer<MoneyItem> &moneyItem : moneyItems) {
        // A list entry the host left empty pays nothing.
        if (moneyItem)
            lines.add(*moneyItem, paymentObject(moneyItem));
    }
    const double rounding = lines.hasCash() ? roundingTotal(*document, {roundingDiscountMode}) : 0.0;
    return {{QStringLiteral("status"), QStringLiteral("PAID")},
            {QStringLiteral("payment"), lines.toJsonArray(rounding)},
            {QStringLiteral("fiscalReceiptNumber"), getFiscalNumber()}};
}

QJsonObject Interface::paymentObject(const QSharedPointer<MoneyItem> &moneyItem) const
{
    const int currency = moneyItem->getValCode();
    const QString operationId = processOperationId(moneyItem);
    QJsonObject payment{{QStringLiteral("paymentCode"), paymentCodes.value(currency, currency)},
                        {QStringLiteral("paymentAmount"), moneyItem->isChange() ? -moneyItem->getAmount() : moneyItem->getAmount()}};
    const QString cardNumber = moneyItem->getCardNum();
    if (!cardNumber.isEmpty())
        payment.insert(QStringLiteral("cardNumber"), cardNumber);
    if (!moneyItem->getCardType().isEmpty())
        payment.insert(QStringLiteral("cardType"), moneyItem->getCardType());
    const QString terminal = moneyItem->getTerminalId();
    payment.insert(QStringLiteral("terminalId"), terminal.isEmpty() ? QStringLiteral("0000000000") : terminal);
    const QString approval = operationIdAsEFTApprovalCode.contains(currency) ? operationId : moneyItem->getAuthorizationCode();
    if (!approval.isEmpty())
        payment.insert(QStringLiteral("EFTApprovalCode"), approval);
    payment.insert(operationIdAsCardNumber.contains(currency) ? QStringLiteral("cardNumber") : QStringLiteral("receiptNumber"),
                   operationId);
    if (!moneyItem->getValName().isEmpty())
        payment.insert(QStringLiteral("mediaDesc"), moneyItem->getValName());
    // A masked number ("******1234") tells nothing of the card's issuer.
    const QString pan = cardNumber.left(6);
    payment.insert(QStringLiteral("PANCardIdentifier"), withoutCharacters(pan, QStringLiteral("*")).isEmpty() ? QString() : pan);
    const QMap<QString, QString> customFields = getCustomFields(moneyItem);
    for (auto field = customFields.cbegin(); field != customFields.cend(); ++field)
        payment.insert(field.key(), field.value());
    const QStringList discarded = discardPaymentFields.value(currency);
    for (const QString &field : discarded)
        payment.remove(field);
    return payment;
}

QString Interface::processOperationId(const QSharedPointer<MoneyItem> &moneyItem) const
{
    const QString section = QStringLiteral("Tessaro.ReceiptNumber.%1").arg(moneyItem->getValCode());
    const QString id = withoutCharacters(moneyItem->getOperationId(), hostsdk::configString(section + QStringLiteral(":symbolsToRemove")));
    const QRegularExpressionMatch match = receiptNumberMask(moneyItem->getValCode()).match(id);
    return match.hasMatch() ? match.captured(QStringLiteral("result")) : id;
}

QRegularExpression Interface::receiptNumberMask(int currency) const
{
    return QRegularExpression(QRegularExpression::anchoredPattern(
        hostsdk::configString(QStringLiteral("Tessaro.ReceiptNumber.%1:mask").arg(currency), QStringLiteral("^(?<result>.*)"))));
}

QMap<QString, QString> Interface::getCustomFields(const QSharedPointer<MoneyItem> &moneyItem) const
{
    const QString currency = QString::number(moneyItem->getValCode());
    const QString group = QStringLiteral("Tessaro.CustomFields.") + currency;
    const QSharedPointer<SimpleFormatter> formatter = MockFactory<SimpleFormatter>::create();
    QMap<QString, QString> fields;
    const QStringList names = hostsdk::configKeys(group);
    for (const QString &name : names) {
        const QString text = formatter->format(hostsdk::configString(group + QLatin1Char(':') + name), name, moneyItem.data());
        const QString removed = hostsdk::configString(QStringLiteral("Tessaro.%1.%2:symbolsToRemove").arg(name, currency));
        fields.insert(name, withoutCharacters(text, removed));
    }
    return fields;
}

PayloadResponse Interface::payload(const QString &id)
{
    logger->info(QStringLiteral("Получение payload для MIP"));
    return PayloadResponse(request(getUrl(Payload, id), getHeaders(QString())));
}

MessagesResponse Interface::messages(const QString &id)
{
    logger->info(QStringLiteral("Получение информационных сообщений"));
    return MessagesResponse(request(getUrl(Messages, id), getHeaders(QString())));
}

} // namespace tessaro
