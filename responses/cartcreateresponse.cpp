#include "cartcreateresponse.h"

namespace tessaro {

CartCreateResponse::CartCreateResponse(const Response &response)
    : Response(response)
{
}

QString CartCreateResponse::uuid() const
{
    return object.value(QLatin1String("uuid")).toString();
}

QString CartCreateResponse::lTaNmbr() const
{
    return QString::number(object.value(QLatin1String("lTaNmbr")).toInt());
}

QString CartCreateResponse::invoiceID() const
{
    return object.value(QLatin1String("invoiceID")).toString();
}

QString CartCreateResponse::invoiceIDModified() const
{
    return invoiceID().remove(QLatin1Char('/'));
}

} // namespace tessaro
