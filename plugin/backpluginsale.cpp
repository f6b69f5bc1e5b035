// BackPlugin: the hooks of a sale document, which a return shares: customer
// card before goods and coupons, quantity and price of a returned item,
// payment restrictions, storno of the whole document.

#include "backplugin.h"

#include "backplugindetail.h"
#include "hostsdk/hostadapter.h"

#include <abstractdocument.h>
#include <actionqueuecontroller.h>
#include <control/args/core.h>
#include <control/args/payment.h>
#include <goodsitem.h>
#include <log4qt/logger.h>
#include <moneyitem.h>
#include <quantity.h>
#include <session.h>
#include <singleton.h>
#include <tmcunit.h>
#include <tr.h>

#include <algorithm>
#include <cmath>

namespace tessaro {

using detail::ReturnTypes;
using detail::showRefusal;

namespace {

// Quantities and prices below these are taken as not given.
constexpr double MinimalQuantity = 0.0005;
constexpr double MinimalPrice = 0.005;

// Whether \a value, as typed, is a quantity or price at all: at least \a least
// in size, and neither NaN nor infinite.
bool given(double value, double least)
{
    return std::isfinite(value) && qAbs(value) >= least;
}

ModifiersContainer &sessionModifiers()
{
    return Singleton<Session>::instance()->getModifiers();
}

// A quantity of one piece is what the till assumes when none was typed.
bool quantityGiven(const GoodsItem &position)
{
    if (!sessionModifiers().isSet(modifiers::Quantity))
        return false;
    const double quantity = hostsdk::modifierValue(sessionModifiers(), modifiers::Quantity).value<Quantity>().value();
    // A position without a unit is counted in pieces.
    const QSharedPointer<TmcUnit> unit = position.getTmcUnit();
    return quantity != 1.0 || (unit && unit->isFractional());
}

} // namespace

EContext::Result BackPlugin::addCoupon(const control::Action &)
{
    if (hasCard())
        return EContext::Continue;
    showRefusal(tr::Tr(QStringLiteral("tessaroNoCardCouponError"),
                       QStringLiteral("Запрещено добавлять купоны, если в чеке нет карты")));
    return EContext::Stop;
}

EContext::Result BackPlugin::beforePositionAdd(const control::Action &action)
{
    if (!hasCard()) {
        showRefusal(tr::Tr(QStringLiteral("tessaroNoCardError"),
                           QStringLiteral("Запрещено добавлять товары, если в чеке нет карты")));
        return EContext::Stop;
    }
    if (getDocument()->getType() != EDocumentType::Back) {
        logger->debug(QStringLiteral("Дополнительная обработка не требуется"));
        return EContext::Continue;
    }
    const EContext::Result reason = selectBackReason(action);
    if (reason != EContext::Continue)
        return reason;

    const auto position = control::args::Core(action).getPosition();
    if (!position)
        return detail::refuseIncomplete(logger, action, QStringLiteral("позиции"));
    if (!quantityGiven(*position)) {
        const control::Action input(control::InputQuantity, {});
        control::args::Core(input).setPosition(position);
        if (hostsdk::runAction(input) != EContext::Continue)
            return EContext::Stop;
        const double quantity = hostsdk::modifierValue(sessionModifiers(), modifiers::Quantity).value<Quantity>().value();
        if (!given(quantity, MinimalQuantity))
            return EContext::Stop;
        position->setBquant(quantity);
    }

    if (sessionModifiers().isSet(modifiers::Price))
        return EContext::Continue;
    const QString skipChoiceReason = QStringLiteral("skipChoiceReason");
    action.insert(skipChoiceReason, true);
    const control::Action input(control::InputPrice, {});
    input.insert(skipChoiceReason, true);
    hostsdk::runAction(input);
    const double price = hostsdk::modifierValue(sessionModifiers(), modifiers::Price).toDouble();
    if (!given(price, MinimalPrice))
        return EContext::Stop;
    position->setPrice(price);
    return EContext::Continue;
}

EContext::Result BackPlugin::checkPaymentRestrictions(const control::Action &action)
{
    const int code = control::args::Payment(action).valutCode().toInt(nullptr, 10);
    if (forbiddenMixedValuts.isEmpty())
        return EContext::Continue;

    const auto document = getDocument();
    const QSet<int> forbidden = forbiddenMixedValuts.value(code);
    const auto payments = document ? hostsdk::payments(*document) : QList<QSharedPointer<MoneyItem>>();
    const bool conflict = std::any_of(payments.cbegin(), payments.cend(), [&forbidden](const QSharedPointer<MoneyItem> &payment) {
        return payment && forbidden.contains(payment->getValCode());
    });
    if (!conflict)
        return EContext::Continue;
    showRefusal(tr::Tr(QStringLiteral("tessaroConflictPayment"), QStringLiteral("В документе есть несовместимые оплаты")));
    return EContext::Stop;
}

EContext::Result BackPlugin::beforeStornoAll(const control::Action &)
{
    const auto document = getDocument();
    exitAfterStornoAll = document && hostsdk::hasType(*document, ReturnTypes);
    return EContext::Continue;
}

EContext::Result BackPlugin::afterStornoAll(const control::Action &)
{
    if (exitAfterStornoAll)
        exitToMenu();
    return EContext::Continue;
}

} // namespace tessaro
