#pragma once

#include "interface.h"

#include <http/response.h>

namespace tessaro {

/// The service client as an installation check drives it: the plug-in's own
/// Interface, with the same settings, token path, signing and transport, plus
/// read access to what a check has to report and nothing a host would call.
///
/// Secrets (the token endpoint's "Authorization" value, the token) are
/// offered only as facts about them, never as text.
class CheckClient : public Interface
{
public:
    CheckClient();

    QString clientIdentifier() const { return clientId; }
    QString realmIdentifier() const { return realmId; }
    /// Whether "Tessaro:authorizationHeader" holds anything.
    bool hasAuthorizationHeader() const { return !authorizationHeader.isEmpty(); }
    /// The scheme word of the token endpoint's "Authorization" value ("Basic"),
    /// without the credentials that follow it.
    QString authorizationScheme() const;
    QString couponMask() const { return validationCouponMask.pattern(); }
    QList<int> cardNumberPaymentCodes() const { return operationIdAsCardNumber; }
    QList<int> approvalCodePaymentCodes() const { return operationIdAsEFTApprovalCode; }

    /// The time-out the transport keeps for each exchange, in milliseconds.
    int transportTimeoutMs() const;
    /// The transport's cap on any time-out, in milliseconds.
    int longestTransportTimeoutMs() const;

    /// Bounds each exchange to \a seconds instead of the configured time-out,
    /// for a configuration whose own time-out would let a check wait forever.
    void boundTimeout(int seconds);

    /// The transport's outcome of the last exchange, token requests included.
    http::Response lastExchange() const;
};

} // namespace tessaro
