#include "emulator/gatewayverifier.h"

#include <QCryptographicHash>
#include <QJsonObject>
#include <QMessageAuthenticationCode>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>
#include <cstdlib>

namespace tessaro::emulator {

namespace {

const QByteArray algorithm = QByteArrayLiteral("SDK-HMAC-SHA256");

Reply gatewayError(const QString &text, const QJsonObject &details = QJsonObject())
{
    QJsonObject object = details;
    object.insert(QStringLiteral("error_msg"), text);
    object.insert(QStringLiteral("error_code"), QStringLiteral("GATEWAY.401"));
    return Reply::json(401, object);
}

QByteArray sha256Hex(const QByteArray &data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex();
}

// "Access=k, SignedHeaders=a;b, Signature=s" into its three named parts.
QMap<QByteArray, QByteArray> authorizationParts(const QByteArray &credentials)
{
    QMap<QByteArray, QByteArray> parts;
    for (const QByteArray &part : credentials.split(',')) {
        const qsizetype equals = part.indexOf('=');
        if (equals > 0)
            parts.insert(part.left(equals).trimmed(), part.mid(equals + 1).trimmed());
    }
    return parts;
}

} // namespace

GatewayVerifier::GatewayVerifier(const QString &appKey, const QString &appSecret, int toleranceSeconds)
    : m_appKey(appKey.toUtf8())
    , m_appSecret(appSecret.toUtf8())
    , m_toleranceSeconds(toleranceSeconds)
{
}

std::optional<Reply> GatewayVerifier::refusal(const Exchange &exchange, const QDateTime &now) const
{
    const QByteArray authorization = exchange.header(QByteArrayLiteral("authorization"));
    if (authorization.isEmpty())
        return gatewayError(QStringLiteral("authorization header missing"));
    if (!authorization.startsWith(algorithm + ' '))
        return gatewayError(QStringLiteral("authorization header is not SDK-HMAC-SHA256"));

    const auto parts = authorizationParts(authorization.mid(algorithm.size() + 1));
    const QByteArray access = parts.value(QByteArrayLiteral("Access"));
    const QByteArray signedNames = parts.value(QByteArrayLiteral("SignedHeaders"));
    const QByteArray sent = parts.value(QByteArrayLiteral("Signature"));
    if (access.isEmpty() || signedNames.isEmpty() || sent.isEmpty())
        return gatewayError(QStringLiteral("authorization header malformed"));
    if (access != m_appKey)
        return gatewayError(QStringLiteral("unknown access key"));

    QMap<QByteArray, QByteArray> headers;
    for (const QByteArray &name : signedNames.split(';')) {
        if (!exchange.hasHeader(name))
            return gatewayError(QStringLiteral("signed header %1 missing").arg(QString::fromLatin1(name)));
        headers.insert(name.toLower(), exchange.header(name));
    }
    const QByteArray sdkDate = headers.value(QByteArrayLiteral("x-sdk-date"));
    if (sdkDate.isEmpty())
        return gatewayError(QStringLiteral("x-sdk-date not signed"));
    const QDateTime signedAt = parseSdkDate(sdkDate);
    if (!signedAt.isValid())
        return gatewayError(QStringLiteral("x-sdk-date malformed"));
    if (std::abs(signedAt.secsTo(now)) > m_toleranceSeconds)
        return gatewayError(QStringLiteral("signature expired"));

    const QByteArray canonical = canonicalRequest(exchange.method, exchange.path, exchange.query, headers,
                                                  exchange.body);
    const QByteArray toSign = stringToSign(sdkDate, canonical);
    if (sent.toLower() != signature(m_appSecret, toSign)) {
        return gatewayError(QStringLiteral("verify signature failed"), {
            {QStringLiteral("canonical_request"), QString::fromLatin1(canonical)},
            {QStringLiteral("string_to_sign"), QString::fromLatin1(toSign)},
        });
    }
    return std::nullopt;
}

QByteArray GatewayVerifier::canonicalRequest(const QByteArray &method, const QString &path, const QString &query,
                                             const QMap<QByteArray, QByteArray> &headers, const QByteArray &body)
{
    const QString canonicalPath = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');

    auto items = QUrlQuery(query).queryItems(QUrl::FullyDecoded);
    std::sort(items.begin(), items.end());
    QByteArrayList encodedItems;
    for (const auto &[name, value] : items)
        encodedItems.append(QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value));

    QByteArray canonicalHeaders;
    for (auto it = headers.cbegin(); it != headers.cend(); ++it)
        canonicalHeaders += it.key() + ':' + it.value() + '\n';

    const QByteArray payloadHash = sha256Hex(method == "GET" ? QByteArray() : body);
    return QByteArrayList{
        method,
        canonicalPath.toLatin1(),
        encodedItems.join('&'),
        canonicalHeaders,
        headers.keys().join(';'),
        payloadHash,
    }.join('\n');
}

QByteArray GatewayVerifier::stringToSign(const QByteArray &sdkDate, const QByteArray &canonicalRequest)
{
    return algorithm + '\n' + sdkDate + '\n' + sha256Hex(canonicalRequest);
}

QByteArray GatewayVerifier::signature(const QByteArray &secret, const QByteArray &stringToSign)
{
    return QMessageAuthenticationCode::hash(stringToSign, secret, QCryptographicHash::Sha256).toHex();
}

QDateTime GatewayVerifier::parseSdkDate(const QByteArray &value)
{
    QDateTime parsed = QDateTime::fromString(QString::fromLatin1(value), QStringLiteral("yyyyMMdd'T'HHmmss'Z'"));
    if (!parsed.isValid())
        return {};
    parsed.setTimeSpec(Qt::UTC);
    return parsed;
}

} // namespace tessaro::emulator
