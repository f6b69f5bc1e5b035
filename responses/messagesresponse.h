#pragma once

#include "response.h"

#include <QStringList>

namespace tessaro {

/// The service's informational messages for the cashier: a JSON array.
class MessagesResponse : public Response
{
public:
    using Response::Response;
    explicit MessagesResponse(const Response &response);

    bool isArrayResponse() const override;

    /// The "message" of each element, in order.
    QStringList messages() const;
};

} // namespace tessaro
