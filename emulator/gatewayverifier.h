#pragma once

#include "emulator/exchange.h"
#include "emulator/reply.h"

#include <QByteArray>
#include <QDateTime>
#include <QMap>
#include <QString>

#include <optional>

namespace tessaro::emulator {

/// Checks the API gateway's "SDK-HMAC-SHA256" signature of a request, from
/// the emulator's own copy of the application key and secret.
///
/// Authorization: SDK-HMAC-SHA256 Access=<key>, SignedHeaders=<a;b>, Signature=<hex>
///
/// Canonical request, lines joined by "\n": the verb; the path with a "/"
/// appended when it lacks one; the query items sorted and percent-encoded as
/// name=value joined by "&"; one "name:value\n" line per signed header (lower
/// case, sorted); the signed header names joined by ";"; the SHA-256 hex of the
/// body (of nothing for GET). String to sign: "SDK-HMAC-SHA256", the x-sdk-date
/// value and the SHA-256 hex of the canonical request, joined by "\n". The
/// signature is the HMAC-SHA256 hex of that string keyed with the secret.
class GatewayVerifier
{
public:
    GatewayVerifier(const QString &appKey, const QString &appSecret, int toleranceSeconds);

    /// Nothing when the request is signed by the known key and its x-sdk-date
    /// lies within the tolerance of now; otherwise the gateway's 401 answer,
    /// whose "error_msg" says why ("signature expired" for a date out of
    /// tolerance). A wrong signature's answer also carries the canonical
    /// request and string to sign that the emulator computed.
    std::optional<Reply> refusal(const Exchange &exchange, const QDateTime &now) const;

    /// The canonical request; headers maps lower-case signed names to values.
    static QByteArray canonicalRequest(const QByteArray &method, const QString &path, const QString &query,
                                       const QMap<QByteArray, QByteArray> &headers, const QByteArray &body);
    static QByteArray stringToSign(const QByteArray &sdkDate, const QByteArray &canonicalRequest);
    /// Lower-case hexadecimal HMAC-SHA256.
    static QByteArray signature(const QByteArray &secret, const QByteArray &stringToSign);
    /// x-sdk-date's form, yyyyMMddTHHmmssZ, in UTC; invalid when it does not parse.
    static QDateTime parseSdkDate(const QByteArray &value);

private:
    QByteArray m_appKey;
    QByteArray m_appSecret;
    int m_toleranceSeconds;
};

} // namespace tessaro::emulator
