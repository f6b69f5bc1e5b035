#include "messagesresponse.h"

namespace tessaro {

MessagesResponse::MessagesResponse(const Response &response)
    : Response(response)
{
}

bool MessagesResponse::isArrayResponse() const
{
    return true;
}

QStringList MessagesResponse::messages() const
{
    QStringList texts;
    for (const QJsonValue &entry : array)
        texts << entry.toObject().value(QLatin1String("message")).toString();
    return texts;
}

} // namespace tessaro
