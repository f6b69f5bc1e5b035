#pragma once

#include "response.h"

namespace tessaro {

/// The answer to creating a cart.
class CartCreateResponse : public Response
{
public:
    using Response::Response;
    explicit CartCreateResponse(const Response &response);

    /// The cart's identifier, used in every later cart path.
    QString uuid() const;
    /// The service's transaction number of the cart, as text; "0" when missing.
    QString lTaNmbr() const;
    /// The cart's invoice identifier ("12/34/5").
    QString invoiceID() const;
    /// invoiceID() without its slashes ("12345").
    QString invoiceIDModified() const;
};

} // namespace tessaro
