#pragma once

#include <QList>
#include <QString>
#include <QUrl>

namespace tessaro {

/// The service client's settings as the client has read them, for whoever has
/// to report them (the installation check): a copy, so nothing done with it
/// reaches the client.
///
/// The token endpoint's "Authorization" value is a secret: only whether it is
/// there and its scheme word are kept, never the credentials.
struct ClientSettings
{
    /// "Tessaro:url", as requests are addressed.
    QUrl url;
    /// "Tessaro:tokenUrl".
    QUrl tokenUrl;
    /// Whether requests carry a token: "Tessaro:useTokenAuth", off whenever
    /// the gateway signs them instead.
    bool useTokenAuth = true;
    /// "OrvelGate:tessaro": whether every request is signed for the gateway.
    bool gateway = false;
    /// "Tessaro:clientId".
    QString clientId;
    /// "Tessaro:realmId".
    QString realmId;
    /// Whether "Tessaro:authorizationHeader" holds anything.
    bool hasAuthorizationHeader = false;
    /// The scheme word of "Tessaro:authorizationHeader" ("Basic"), empty when
    /// the value is the credentials alone.
    QString authorizationScheme;
    /// "Tessaro:timeout" in seconds, as configured.
    qint64 timeoutSeconds = 0;
    /// The time-out the transport keeps for each exchange, in milliseconds.
    int transportTimeoutMs = 0;
    /// The transport's cap on any time-out, in milliseconds.
    int longestTransportTimeoutMs = 0;
    /// The pattern of "Tessaro:validationCouponMask".
    QString couponMask;
    /// "Tessaro:operationIdAsCardNumber": payment codes whose operation id is the card number.
    QList<int> cardNumberPaymentCodes;
    /// "Tessaro:operationIdAsEFTApprovalCode": payment codes whose operation id is the approval code.
    QList<int> approvalCodePaymentCodes;
};

} // namespace tessaro
