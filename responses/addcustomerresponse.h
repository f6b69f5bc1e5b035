#pragma once

#include "response.h"

#include <QVariant>

namespace tessaro {

/// The answer to attaching a customer (a loyalty card) to a cart: who the
/// customer is and whether the customer may buy.
///
/// Numbers the service sends as integers are returned as text where the till
/// shows or stores them as text.
class AddCustomerResponse : public Response
{
public:
    using Response::Response;
    explicit AddCustomerResponse(const Response &response);

    QString firstName() const;
    QString lastName() const;
    /// "custNo" as text; "0" when missing.
    QString clientNumber() const;
    /// "storeNo" as text; "0" when missing.
    QString storeNumber() const;
    QString email() const;
    QString mobilePhone() const;
    int customerSegment() const;
    /// "custName".
    QString customerName() const;
    /// "cardholderNo".
    int cardHolderNumber() const;
    /// The customer's taxpayer number.
    QString inn() const;
    QString customerAddress() const;
    /// "edo" as the service sent it; null when missing.
    QVariant edo() const;
    /// True when the service says nothing: a missing flag allows credit.
    bool creditPaymentAllowed() const;
    /// "blockingCode" as text; empty (not "0") when missing, which tells an
    /// unblocked customer from the code 0.
    QString blockingCode() const;
    int allowSale() const;
    /// "blockingReason", at most its first 50 characters.
    QString blockingReason() const;
    /// "cardNo".
    QString cardNumber() const;
    /// "branchDescription".
    QString branch() const;

private:
    QString text(const char *key) const;
    int number(const char *key) const;
};

} // namespace tessaro
