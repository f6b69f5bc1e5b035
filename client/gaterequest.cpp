#include "gaterequest.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QUrlQuery>

#include <algorithm>

namespace orvel {

namespace {

const QString algorithm = QStringLiteral("SDK-HMAC-SHA256");

QString sha256Hex(const QByteArray &data)
{
    return QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex());
}

QString percentEncoded(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

} // namespace

GateRequest::GateRequest(const QUrl &url, const QByteArray &body, const QHash<QString, QString> &callerHeaders,
                         bool get, const QDateTime &time, const QString &stage)
    : m_url(url)
    , m_verb(get ? QStringLiteral("GET") : QStringLiteral("POST"))
    // A GET carries no body, so it is signed over the empty one.
    , m_payload(get ? QByteArray() : body)
    , m_timestamp(time.toUTC().toString(QStringLiteral("yyyyMMddThhmmssZ")))
{
    m_signedHeaders.insert(QStringLiteral("host"), url.host());
    m_signedHeaders.insert(QStringLiteral("x-sdk-date"), m_timestamp);
    m_signedHeaders.insert(QStringLiteral("x-stage"), stage);
    m_signedHeaders.insert(QStringLiteral("env"), stage);
    const QString apiKey = QStringLiteral("x-api-key");
    if (callerHeaders.contains(apiKey))
        m_signedHeaders.insert(apiKey, callerHeaders.value(apiKey));
}

QStringList GateRequest::sortedNames() const
{
    QStringList names = m_signedHeaders.keys();
    std::sort(names.begin(), names.end());
    return names;
}

QString GateRequest::signedHeaderNames() const
{
    return sortedNames().join(QLatin1Char(';')).toLower();
}

QString GateRequest::canonicalPath() const
{
    QString path = m_url.path();
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return path;
}

QString GateRequest::canonicalQuery() const
{
    // Sorted by name, then by value, on the decoded items; the gateway decodes
    // the query it receives before encoding it again the same way.
    auto items = QUrlQuery(m_url).queryItems(QUrl::FullyDecoded);
    std::sort(items.begin(), items.end());
    QStringList pairs;
    for (const auto &item : std::as_const(items))
        pairs << QStringLiteral("%1=%2").arg(percentEncoded(item.first), percentEncoded(item.second));
    return pairs.join(QLatin1Char('&'));
}

QString GateRequest::canonicalHeaders() const
{
    QString lines;
    const QStringList names = sortedNames();
    for (const QString &name : names)
        lines += QStringLiteral("%1:%2\n").arg(name.toLower(), m_signedHeaders.value(name));
    return lines;
}

QString GateRequest::canonicalRequest() const
{
    return QStringList{m_verb, canonicalPath(), canonicalQuery(), canonicalHeaders(), signedHeaderNames(),
                       sha256Hex(m_payload)}
        .join(QLatin1Char('\n'));
}

QString GateRequest::stringToSign() const
{
    return QStringList{algorithm, m_timestamp, sha256Hex(canonicalRequest().toLatin1())}.join(QLatin1Char('\n'));
}

QString GateRequest::signature(const QString &appSecret) const
{
    return QString::fromLatin1(
        QMessageAuthenticationCode::hash(stringToSign().toUtf8(), appSecret.toUtf8(), QCryptographicHash::Sha256).toHex());
}

QString GateRequest::authorization(const QString &appKey, const QString &appSecret) const
{
    return QStringLiteral("%1 Access=%2, SignedHeaders=%3, Signature=%4")
        .arg(algorithm, appKey, signedHeaderNames(), signature(appSecret));
}

} // namespace orvel
