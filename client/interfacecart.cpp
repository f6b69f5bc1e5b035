// Interface: the cart, from its creation and customer to its coupons and items,
// and the recovery of an update whose answer was lost.

#include "interface.h"

#include "hostsdk/hostadapter.h"
#include "interfacedetail.h"
#include "responses/connectionerrorexception.h"
#include "responses/traceability.h"
#include "secrets/linesanitizer.h"

#include <abstractdocument.h>
#include <basicexception.h>
#include <config.h>
#include <dialog.h>
#include <documentcardrecord.h>
#include <goodsitem.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>

namespace tessaro {

using detail::loyaltyCardType;
using detail::operatorCode;
using detail::traceabilityObject;

namespace {

// The cart's lines as the service sent them, for comparing two states of a cart.
QList<QJsonObject> lineObjects(const CartUpdateResponse &cart)
{
    QList<QJsonObject> lines;
    const QList<Item> items = cart.items();
    for (const Item &item : items)
        lines << item.json();
    return lines;
}

// The scanner's group separator (GS, code 29) as the service wants it written.
QString withVisibleSeparators(QString text)
{
    return text.replace(QChar(29), QLatin1String("[1d]"));
}

} // namespace

QString Interface::getCardBarcode(const QString &card)
{
    if (card.size() != 18)
        return card;
    const QString tail = card.right(13);
    const QString barcode = tail.left(3) + tail.right(8);
    logger->info(QStringLiteral("Вместо номера карты используются номер ТКД: %1").arg(LineSanitizer::escaped(barcode)));
    return barcode;
}

CartCreateResponse Interface::cartCreate()
{
    logger->info(QStringLiteral("Инициализация корзины"));
    lastCart.reset();
    return CartCreateResponse(send(getUrl(CartCreate, QString()), tillFields(), getHeaders(QString())));
}

AddCustomerResponse Interface::addCustomer(const QString &cartUuid, const QString &card)
{
    logger->info(QStringLiteral("Добавление клиента '%1'").arg(LineSanitizer::escaped(card)));
    const QJsonObject body{{QStringLiteral("cardBarcode"), getCardBarcode(card)}};
    return AddCustomerResponse(send(getUrl(AddCustomer, cartUuid), body, getHeaders(QString())));
}

CartUpdateResponse Interface::cartContent(const QString &cartUuid)
{
    return CartUpdateResponse(request(getUrl(Cart, cartUuid), getHeaders(QString())));
}

QSharedPointer<DocumentCardRecord> Interface::getCard()
{
    const QSharedPointer<AbstractDocument> document = Singleton<Session>::instance()->getCurrentDocument();
    return document ? hostsdk::cardRecord(*document, loyaltyCardType) : nullptr;
}

CartUpdateResponse Interface::updateCart(const QString &cartUuid, const QJsonObject &body)
{
    bool retrying = false;
    for (;;) {
        try {
            const CartUpdateResponse reply(send(getUrl(CartUpdate, cartUuid), body, getHeaders(QString())));
            // A resent update that the service calls a conflict (3001) may have
            // reached it after all: the cart read back decides.
            if (!retrying || reply.status() != Response::CartUpdateConflict)
                return acceptCart(reply);
        } catch (const ConnectionErrorException &error) {
            logger->error(LineSanitizer::escaped(error.tr().text()));
        }
        const CartUpdateResponse current = readCartBack(cartUuid);
        if (updateApplied(current))
            return acceptCart(current);
        retrying = true;
    }
}

CartUpdateResponse Interface::readCartBack(const QString &cartUuid)
{
    for (;;) {
        try {
            return cartContent(cartUuid);
        } catch (const ConnectionErrorException &error) {
            logger->error(LineSanitizer::escaped(error.tr().text()));
            hostsdk::showMessage(error.tr(), Dialog::Error);
        }
    }
}

bool Interface::updateApplied(const CartUpdateResponse &current) const
{
    if (!lastCart)
        return !current.items().isEmpty();
    return lineObjects(current) != lineObjects(*lastCart);
}

CartUpdateResponse Interface::acceptCart(const CartUpdateResponse &cart)
{
    lastCart = cart;
    // The document may carry no loyalty card (no customer on the receipt):
    // then there is no points limit to set. The update is accepted all the
    // same, since the service has applied it; refusing it here would have its
    // caller send it again.
    if (const QSharedPointer<DocumentCardRecord> card = getCard())
        card->setMaxPointsForSpend(cart.pointsToRredeem());
    else if (cart.pointsToRredeem() > 0)
        logger->warn(QStringLiteral("Баллы к списанию (%1) не записаны: в документе нет карты клиента")
                             .arg(cart.pointsToRredeem()));
    return cart;
}

CartUpdateResponse Interface::addCouponToCart(const QString &cartUuid, const QString &coupon, bool validate)
{
    logger->info(QStringLiteral("Добавление купона '%1' в корзину '%2'").arg(LineSanitizer::escaped(coupon), LineSanitizer::escaped(cartUuid)));
    const bool matches = checkValidationCouponMask(coupon);
    if (matches && !validate)
        logger->warn(QStringLiteral("Добавление купона в корзину без валидации"));
    const QJsonObject body{{QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), coupon},
                                                                   {QStringLiteral("validationCoupon"), matches && validate}}}};
    return updateCart(cartUuid, body);
}

CartUpdateResponse Interface::deleteCoupon(const QString &cartUuid, const QString &coupon)
{
    logger->info(QStringLiteral("Удаление купона '%1' из корзины '%2'").arg(LineSanitizer::escaped(coupon), LineSanitizer::escaped(cartUuid)));
    const QJsonObject body{{QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), coupon},
                                                                   {QStringLiteral("validationCoupon"), false},
                                                                   {QStringLiteral("isDeleted"), true}}}};
    return updateCart(cartUuid, body);
}

bool Interface::checkValidationCouponMask(const QString &coupon) const
{
    // An empty pattern would match every number, yet it means "validate none".
    return !validationCouponMask.pattern().isEmpty() && validationCouponMask.match(coupon).hasMatch();
}

CartUpdateResponse Interface::addItemToCart(const QString &cartUuid, const QSharedPointer<GoodsItem> &goodsItem,
                                            PositionData &positionData, bool checkBlock)
{
    logger->info(QStringLiteral("Добавление позиции в корзину '%1'").arg(LineSanitizer::escaped(cartUuid)));
    QJsonObject body{{QStringLiteral("item"), itemObject(*goodsItem, positionData, checkBlock)}};
    const QJsonObject coupon = getCoupon(goodsItem);
    if (!coupon.isEmpty())
        body.insert(QStringLiteral("coupon"), coupon);
    return updateCart(cartUuid, body);
}

QJsonObject Interface::itemObject(const GoodsItem &goodsItem, PositionData &positionData, bool checkBlock) const
{
    QJsonObject item{{QStringLiteral("checkBlock"), checkBlock}};
    if (!positionData.blockActorCode.isEmpty())
        item.insert(QStringLiteral("blockedItemAutorizationOperatorID"), positionData.blockActorCode);
    item.insert(QStringLiteral("barcode"), goodsItem.getBarcode());

    const bool byInputType5 = goodsItem.checkInputType({GoodsItem::ByCode});
    const QString exciseEan = hostsdk::additionalData(goodsItem, additionalDataSection, QStringLiteral("ean")).toString();
    bool settleReason = true;
    if (!exciseEan.isEmpty()) {
        logger->info(QStringLiteral("Для добавления позиции используется EAN от Excise: '%1'").arg(LineSanitizer::escaped(exciseEan)));
        item.insert(QStringLiteral("barcode"), exciseEan);
    } else {
        const QSharedPointer<Tmc> article = goodsItem.getTmc();
        settleReason = (article && article->checkGetMethod(Tmc::ByCode)) || byInputType5;
        if (settleReason) {
            logger->info(QStringLiteral("Для добавления позиции используется код товара"));
            item.remove(QStringLiteral("barcode"));
            item.insert(QStringLiteral("subsysNo"), goodsItem.getCode());
        }
    }
    if (settleReason) {
        const int reason = settleEanReason(goodsItem, positionData);
        if (reason >= 0) {
            item.insert(QStringLiteral("eanReasonCode"), reason);
            positionData.eanReason = reason;
        }
    }

    item.insert(QStringLiteral("quantity"), goodsItem.getQuantity());
    QString scannerInput = withVisibleSeparators(goodsItem.getInputRawData());
    if (scannerInput.isEmpty())
        scannerInput = withVisibleSeparators(goodsItem.getExciseMark());
    if (scannerInput.isEmpty())
        scannerInput = goodsItem.getBarcode();
    item.insert(QStringLiteral("scanerInput"), scannerInput);

    const auto record =
        hostsdk::additionalData(goodsItem, additionalDataSection, QStringLiteral("traceability")).value<orvel::Traceability>();
    const QJsonObject traceability = traceabilityObject(record);
    if (!traceability.isEmpty())
        item.insert(QStringLiteral("traceability"), traceability);
    return item;
}

int Interface::settleEanReason(const GoodsItem &goodsItem, const PositionData &positionData) const
{
    if (goodsItem.checkInputType({GoodsItem::ByCode}))
        return getOnlineCheckEanReasonCode();
    // A reason settled for this position before is not asked for again.
    if (positionData.eanReason >= 0)
        return positionData.eanReason;
    if (goodsItem.getBcodeMode() == 1)
        return getEanReasonCode();
    return -1;
}

int Interface::getOnlineCheckEanReasonCode() const
{
    return hostsdk::configInt(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), -1);
}

int Interface::getEanReasonCode() const
{
    // Without configured reasons the service's reason 9 applies.
    if (eanReasons.isEmpty())
        return 9;
    if (eanReasons.size() == 1)
        return eanReasons.firstKey();
    QStringList texts;
    for (const QStringList &text : eanReasons)
        texts << text.join(QStringLiteral(", "));
    const int index = hostsdk::showChoice(
        tr::Tr(QStringLiteral("tessaroEanReasonChoice"), QStringLiteral("Выбор причины добавления товара по коду")), texts);
    // Cancelling ends the addition of the position; the cashier needs no message for it.
    if (index < 0 || index >= eanReasons.size())
        throw BasicException(tr::Tr());
    return eanReasons.keys().at(index);
}

QJsonObject Interface::getCoupon(const QSharedPointer<GoodsItem> &goodsItem) const
{
    const QString number = hostsdk::additionalData(*goodsItem, additionalDataSection, QStringLiteral("coupon")).toString();
    if (number.isEmpty())
        return {};
    return {{QStringLiteral("number"), number},
            {QStringLiteral("validationCoupon"), validatesCoupons()}};
}

bool Interface::validatesCoupons() const
{
    return hostsdk::configBool(QStringLiteral("Tessaro:validationCoupon"), false);
}

CartUpdateResponse Interface::quantityOverwrite(const QString &cartUuid, int sequenceNumber, double quantity,
                                                DeleteReason deleteReason)
{
    if (quantity >= 0.0005)
        logger->info(QStringLiteral("Установка количества %2 в позицию '%1'")
                         .arg(QString::number(sequenceNumber), QString::number(quantity, 'f', 3)));
    else
        logger->info(QStringLiteral("Удаление позиции '%1' из корзины").arg(sequenceNumber));
    QJsonObject change{{QStringLiteral("sequenceNumber"), sequenceNumber}, {QStringLiteral("quantity"), quantity}};
    if (deleteReason != NoDeleteReason)
        change.insert(QStringLiteral("deleteReason"), int(deleteReason));
    return updateCart(cartUuid, {{QStringLiteral("quantityOverwrite"), change}});
}

CartUpdateResponse Interface::priceOverwrite(const QString &cartUuid, int sequenceNumber, double price, int reasonCode,
                                             const QSharedPointer<User> &user, double quantity)
{
    const QSharedPointer<SimpleProgress> progress = hostsdk::showProgress(
        tr::Tr(QStringLiteral("tessaroProgress"), QStringLiteral("Обращение к сервису Tessaro")));
    QJsonObject change{{QStringLiteral("sequenceNumber"), sequenceNumber},
                       {QStringLiteral("priceGross"), price},
                       {QStringLiteral("reasonCode"), reasonCode},
                       {QStringLiteral("operatorID"), operatorCode(user).toInt()}};
    if (quantity > 0.0005)
        change.insert(QStringLiteral("qty"), quantity);
    return CartUpdateResponse(send(getUrl(CartUpdate, cartUuid), {{QStringLiteral("priceOverwrite"), change}},
                                   getHeaders(QString())));
}

} // namespace tessaro
