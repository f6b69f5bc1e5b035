#include "emulator/cartendpoints.h"

#include "emulator/emulatorsettings.h"
#include "emulator/requiredfields.h"
#include "emulator/serviceanswers.h"
#include "emulator/servicestate.h"

#include <QJsonArray>
#include <QRegularExpression>

namespace tessaro::emulator {

namespace {

Reply cartNotFound()
{
    return Reply::message(404, QStringLiteral("Cart wasn't found"));
}

Reply positionNotFound(int sequenceNumber)
{
    return Reply::message(404, QStringLiteral("Position %1 wasn't found in the cart").arg(sequenceNumber));
}

} // namespace

CartEndpoints::CartEndpoints(const EmulatorSettings &settings, ServiceState &state)
    : m_settings(settings)
    , m_state(state)
{
}

Reply CartEndpoints::create(const QJsonObject &body)
{
    if (const auto refusal = RequiredFields::refusal(body, {QStringLiteral("storeNo"), QStringLiteral("tillNo")}))
        return *refusal;
    const int storeNo = body.value(QStringLiteral("storeNo")).toInt();
    const int tillNo = body.value(QStringLiteral("tillNo")).toInt();
    if (!m_state.shifts.isOpen(storeNo, tillNo))
        return ServiceAnswers::shiftClosed();
    const Cart cart = m_state.carts.create(storeNo, tillNo, m_state.shifts.takeInvoiceId(storeNo, tillNo));
    return Reply::json(200, cart.toJson());
}

Reply CartEndpoints::content(const QString &uuid) const
{
    const auto cart = m_state.carts.find(uuid);
    return cart ? Reply::json(200, cart->toJson()) : cartNotFound();
}

Reply CartEndpoints::update(const QString &uuid, const QJsonObject &body)
{
    auto cart = m_state.carts.find(uuid);
    if (const auto refusal = refuseChange(cart))
        return *refusal;
    if (body.contains(QStringLiteral("quantityOverwrite")))
        return overwriteQuantity(*cart, body);
    if (body.contains(QStringLiteral("priceOverwrite")))
        return overwritePrice(*cart, body);
    if (body.contains(QStringLiteral("item")))
        return addItem(*cart, body);
    if (body.contains(QStringLiteral("coupon")))
        return changeCoupon(*cart, body);
    return ServiceAnswers::missedFields({QStringLiteral("item")});
}

Reply CartEndpoints::setStatus(const QString &uuid, const QJsonObject &body)
{
    auto cart = m_state.carts.find(uuid);
    if (const auto refusal = refuseChange(cart))
        return *refusal;
    const QString status = body.value(QStringLiteral("status")).toString();
    if (status == QLatin1String("PAID")) {
        if (const auto refusal = RequiredFields::refusal(
                body, {QStringLiteral("payment"), QStringLiteral("fiscalReceiptNumber")}, QStringLiteral("payment"),
                {QStringLiteral("paymentCode"), QStringLiteral("paymentAmount")}))
            return *refusal;
    } else if (status != QLatin1String("CANCELLED")) {
        return status.isEmpty() ? ServiceAnswers::missedFields({QStringLiteral("status")})
                                : ServiceAnswers::invalidDataType();
    }
    cart->close(status, body);
    return saved(*cart, {});
}

Reply CartEndpoints::addCustomer(const QString &uuid, const QJsonObject &body)
{
    auto cart = m_state.carts.find(uuid);
    if (const auto refusal = refuseChange(cart))
        return *refusal;
    if (const auto refusal = RequiredFields::refusal(body, {QStringLiteral("cardBarcode")}))
        return *refusal;
    const QString barcode = body.value(QStringLiteral("cardBarcode")).toString();
    if (!QRegularExpression(m_settings.cardBarcodePattern).match(barcode).hasMatch())
        return Reply::message(400, QStringLiteral("cardBarcode doesn't match pattern"));
    if (!m_settings.customers.contains(barcode))
        return Reply::message(404, QStringLiteral("Customer wasn't found in CustomerAPI"));

    QJsonObject customer = m_settings.customers.value(barcode);
    if (!customer.contains(QStringLiteral("cardNo")))
        customer.insert(QStringLiteral("cardNo"), barcode);
    cart->setCustomer(customer);
    cart->setMessages({QStringLiteral("Customer %1 added").arg(barcode)});
    m_state.carts.replace(*cart);
    return Reply::json(200, customer);
}

std::optional<Reply> CartEndpoints::refuseChange(const std::optional<Cart> &cart) const
{
    if (!cart)
        return cartNotFound();
    if (cart->isClosed()) {
        return Reply::json(409, QJsonObject{
            {QStringLiteral("status"), QStringLiteral("error")},
            {QStringLiteral("statusCode"), 3002},
            {QStringLiteral("message"), QStringLiteral("The cart is closed")},
        });
    }
    if (!m_state.shifts.isOpen(cart->storeNo(), cart->tillNo()))
        return ServiceAnswers::shiftClosed();
    return std::nullopt;
}

std::optional<Reply> CartEndpoints::refuseCoupon(const Cart &cart, const QJsonObject &coupon) const
{
    const QString number = coupon.value(QStringLiteral("number")).toString();
    if (!coupon.value(QStringLiteral("validationCoupon")).toBool() || !m_settings.invalidCoupons.contains(number))
        return std::nullopt;
    QJsonObject answer = cart.toJson();
    answer.insert(QStringLiteral("status"), QStringLiteral("3V validation error"));
    answer.insert(QStringLiteral("messages"),
                  QJsonArray{QJsonObject{{QStringLiteral("text"), QStringLiteral("Coupon %1 is not valid").arg(number)}}});
    return Reply::json(200, answer);
}

Reply CartEndpoints::addItem(Cart &cart, const QJsonObject &body)
{
    // An item goes by barcode or by article code: one of the two is needed.
    const bool identified =
        RequiredFields::missing(body, {QStringLiteral("item.barcode"), QStringLiteral("item.subsysNo")}).size() < 2;
    QStringList needed{QStringLiteral("item.checkBlock"), QStringLiteral("item.quantity"),
                       QStringLiteral("item.scanerInput")};
    if (!identified)
        needed.append(QStringLiteral("item.barcode"));
    if (const auto refusal = RequiredFields::refusal(body, needed))
        return *refusal;
    const QJsonObject coupon = body.value(QStringLiteral("coupon")).toObject();
    if (const auto refusal = refuseCoupon(cart, coupon))
        return *refusal;

    const QJsonObject item = body.value(QStringLiteral("item")).toObject();
    const auto article = m_settings.findArticle(item.value(QStringLiteral("barcode")).toString(),
                                                item.value(QStringLiteral("subsysNo")).toString());
    CartLine line;
    line.artNo = article.artNo;
    line.artName = article.artName;
    line.barcode = item.value(QStringLiteral("barcode")).toString();
    line.subsysNo = item.value(QStringLiteral("subsysNo")).toString();
    line.scanerInput = item.value(QStringLiteral("scanerInput")).toString();
    line.quantity = item.value(QStringLiteral("quantity")).toDouble();
    line.listPrice = article.price;
    line.unitPrice = article.price;
    line.eanReasonCode = item.value(QStringLiteral("eanReasonCode")).toInt(-1);
    line.traceability = item.value(QStringLiteral("traceability")).toObject();
    const QString couponNumber = coupon.value(QStringLiteral("number")).toString();
    if (!couponNumber.isEmpty())
        line.coupons.append(couponNumber);
    const int sequenceNumber = cart.addLine(line);
    return saved(cart, {QStringLiteral("Position %1 added: %2").arg(sequenceNumber).arg(article.artName)});
}

Reply CartEndpoints::changeCoupon(Cart &cart, const QJsonObject &body)
{
    if (const auto refusal = RequiredFields::refusal(body, {QStringLiteral("coupon.number")}))
        return *refusal;
    const QJsonObject coupon = body.value(QStringLiteral("coupon")).toObject();
    const QString number = coupon.value(QStringLiteral("number")).toString();
    if (coupon.value(QStringLiteral("isDeleted")).toBool()) {
        if (!cart.removeCoupon(number))
            return Reply::message(404, QStringLiteral("Coupon %1 wasn't found in the cart").arg(number));
        return saved(cart, {QStringLiteral("Coupon %1 removed").arg(number)});
    }
    if (const auto refusal = refuseCoupon(cart, coupon))
        return *refusal;
    const bool added = cart.addCoupon(number);
    return saved(cart, {added ? QStringLiteral("Coupon %1 added").arg(number)
                              : QStringLiteral("Coupon %1 is already in the cart").arg(number)});
}

Reply CartEndpoints::overwriteQuantity(Cart &cart, const QJsonObject &body)
{
    if (const auto refusal = RequiredFields::refusal(
        body, {QStringLiteral("quantityOverwrite.sequenceNumber"), QStringLiteral("quantityOverwrite.quantity")}))
        return *refusal;
    const QJsonObject change = body.value(QStringLiteral("quantityOverwrite")).toObject();
    const int sequenceNumber = change.value(QStringLiteral("sequenceNumber")).toInt();
    const double quantity = change.value(QStringLiteral("quantity")).toDouble();
    const bool removal = Cart::isRemoval(quantity);
    if (removal && RequiredFields::missing(change, {QStringLiteral("deleteReason")}).size() == 1)
        return ServiceAnswers::missedFields({QStringLiteral("quantityOverwrite.deleteReason")});
    if (!cart.setQuantity(sequenceNumber, quantity))
        return positionNotFound(sequenceNumber);
    return saved(cart, {removal ? QStringLiteral("Position %1 removed").arg(sequenceNumber)
                                : QStringLiteral("Position %1 quantity set to %2").arg(sequenceNumber).arg(quantity)});
}

Reply CartEndpoints::overwritePrice(Cart &cart, const QJsonObject &body)
{
    if (const auto refusal = RequiredFields::refusal(
        body, {QStringLiteral("priceOverwrite.sequenceNumber"), QStringLiteral("priceOverwrite.priceGross"),
               QStringLiteral("priceOverwrite.reasonCode"), QStringLiteral("priceOverwrite.operatorID")}))
        return *refusal;
    const QJsonObject change = body.value(QStringLiteral("priceOverwrite")).toObject();
    const int sequenceNumber = change.value(QStringLiteral("sequenceNumber")).toInt();
    const double price = change.value(QStringLiteral("priceGross")).toDouble();
    if (!cart.setPrice(sequenceNumber, price, change.value(QStringLiteral("reasonCode")).toInt()))
        return positionNotFound(sequenceNumber);
    return saved(cart, {QStringLiteral("Position %1 price set to %2").arg(sequenceNumber).arg(price)});
}

Reply CartEndpoints::saved(Cart &cart, const QStringList &messages)
{
    cart.markCollecting();
    cart.setMessages(messages);
    m_state.carts.replace(cart);
    return Reply::json(200, cart.toJson());
}

} // namespace tessaro::emulator
