#pragma once

#include "response.h"

namespace tessaro {

/// The payload the service prepared for a receipt; read through the base.
class PayloadResponse : public Response
{
public:
    using Response::Response;
    explicit PayloadResponse(const Response &response)
        : Response(response)
    {
    }
};

} // namespace tessaro
