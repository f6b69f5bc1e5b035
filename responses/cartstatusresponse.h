#pragma once

#include "response.h"

namespace tessaro {

/// The answer to setting a cart's status (PAID, CANCELLED); read through the base.
class CartStatusResponse : public Response
{
public:
    using Response::Response;
    explicit CartStatusResponse(const Response &response)
        : Response(response)
    {
    }
};

} // namespace tessaro
