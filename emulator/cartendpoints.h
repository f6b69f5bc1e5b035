#pragma once

#include "emulator/cart.h"
#include "emulator/reply.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace tessaro::emulator {

class EmulatorSettings;
class ServiceState;

/// /cart/create, /cart/<uuid>, /cart/<uuid>/update, /cart/<uuid>/cart_status
/// and /cart/<uuid>/add_customer.
class CartEndpoints
{
public:
    CartEndpoints(const EmulatorSettings &settings, ServiceState &state);

    /// Needs "storeNo", "tillNo" and an open shift. Answers the new cart
    /// (status "init") with its "uuid", "lTaNmbr" and "invoiceID".
    Reply create(const QJsonObject &body);
    /// The cart as it stands.
    Reply content(const QString &uuid) const;
    /// One change per request: "item" (with an optional "coupon" bound to it),
    /// "coupon" (add, or remove with "isDeleted"), "quantityOverwrite" or
    /// "priceOverwrite". Answers the changed cart, status "collecting".
    Reply update(const QString &uuid, const QJsonObject &body);
    /// "status": "PAID" (with "payment" and "fiscalReceiptNumber") or
    /// "CANCELLED". A closed cart takes no more changes.
    Reply setStatus(const QString &uuid, const QJsonObject &body);
    /// "cardBarcode" must match the configured pattern and name a configured
    /// customer; answers the customer record and binds it to the cart.
    Reply addCustomer(const QString &uuid, const QJsonObject &body);

private:
    /// Why the cart cannot be changed now: missing, closed, or its shift closed.
    std::optional<Reply> refuseChange(const std::optional<Cart> &cart) const;
    /// A coupon that asks for validation and is configured as invalid.
    std::optional<Reply> refuseCoupon(const Cart &cart, const QJsonObject &coupon) const;
    Reply addItem(Cart &cart, const QJsonObject &body);
    Reply changeCoupon(Cart &cart, const QJsonObject &body);
    Reply overwriteQuantity(Cart &cart, const QJsonObject &body);
    Reply overwritePrice(Cart &cart, const QJsonObject &body);
    /// Stores the changed cart with the messages of the change and answers it.
    Reply saved(Cart &cart, const QStringList &messages);

    const EmulatorSettings &m_settings;
    ServiceState &m_state;
};

} // namespace tessaro::emulator
