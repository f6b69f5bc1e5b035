#pragma once

#include "item.h"
#include "response.h"

#include <QList>
#include <QStringList>

namespace tessaro {

/// The service's view of a cart: the answer to a cart update and to a cart
/// read-back.
class CartUpdateResponse : public Response
{
public:
    using Response::Response;
    explicit CartUpdateResponse(const Response &response);

    /// "init" and "collecting" are success; "3V not available" is
    /// ValidationUnavailable, "3V validation error" ValidationError, the
    /// service code 3001 CartUpdateConflict; anything else is the base's.
    Status status() const override;

    QString uuid() const;
    /// The cart's lines in the service's order; take them once when looping.
    QList<Item> items() const;
    /// The service's numeric status code; -1 when missing.
    int statusCode() const;
    /// Loyalty points the customer may spend on this cart (the service spells it so).
    int pointsToRredeem() const;
    /// The number of items as the service counts them.
    int totalItems() const;
    /// The sum of the lines' quantities.
    double totalQuantity() const;
    /// The "text" of each of "messages", in order.
    QStringList messages() const;
};

} // namespace tessaro
