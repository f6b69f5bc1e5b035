#include "addcustomerresponse.h"

namespace tessaro {

AddCustomerResponse::AddCustomerResponse(const Response &response)
    : Response(response)
{
}

QString AddCustomerResponse::text(const char *key) const
{
    return object.value(QLatin1String(key)).toString();
}

int AddCustomerResponse::number(const char *key) const
{
    return object.value(QLatin1String(key)).toInt();
}

QString AddCustomerResponse::firstName() const
{
    return text("firstName");
}

QString AddCustomerResponse::lastName() const
{
    return text("lastName");
}

QString AddCustomerResponse::clientNumber() const
{
    return QString::number(number("custNo"));
}

QString AddCustomerResponse::storeNumber() const
{
    return QString::number(number("storeNo"));
}

QString AddCustomerResponse::email() const
{
    return text("email");
}

QString AddCustomerResponse::mobilePhone() const
{
    return text("mobilePhone");
}

int AddCustomerResponse::customerSegment() const
{
    return number("customerSegment");
}

QString AddCustomerResponse::customerName() const
{
    return text("custName");
}

int AddCustomerResponse::cardHolderNumber() const
{
    return number("cardholderNo");
}

QString AddCustomerResponse::inn() const
{
    return text("inn");
}

QString AddCustomerResponse::customerAddress() const
{
    return text("customerAddress");
}

QVariant AddCustomerResponse::edo() const
{
    return object.value(QLatin1String("edo")).toVariant();
}

bool AddCustomerResponse::creditPaymentAllowed() const
{
    const QLatin1String key("creditPaymentAllowed");
    return !object.contains(key) || object.value(key).toBool(false);
}

QString AddCustomerResponse::blockingCode() const
{
    const QLatin1String key("blockingCode");
    return object.contains(key) ? QString::number(object.value(key).toInt()) : QString();
}

int AddCustomerResponse::allowSale() const
{
    return number("allowSale");
}

QString AddCustomerResponse::blockingReason() const
{
    return text("blockingReason").left(50);
}

QString AddCustomerResponse::cardNumber() const
{
    return text("cardNo");
}

QString AddCustomerResponse::branch() const
{
    return text("branchDescription");
}

} // namespace tessaro
