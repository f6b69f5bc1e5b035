#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace orvel {

/// One request as the API gateway signs it ("SDK-HMAC-SHA256").
///
/// The request is reduced to a canonical text: the verb, the path, the sorted
/// and percent-encoded query, the signed headers and the hash of the body. The
/// gateway recomputes that text on its side, so every byte of it matters. Only
/// the gateway's own headers ("host", "x-sdk-date", "x-stage", "env") and the
/// caller's "x-api-key" are signed; the caller's other headers travel unsigned.
class GateRequest
{
public:
    /// \a time is converted to UTC; \a stage is the value of "x-stage" and "env";
    /// \a callerHeaders only lend their "x-api-key".
    GateRequest(const QUrl &url, const QByteArray &body, const QHash<QString, QString> &callerHeaders, bool get,
                const QDateTime &time, const QString &stage);

    /// The request time as "x-sdk-date" carries it, e.g. 20240131T235959Z.
    QString timestamp() const { return m_timestamp; }
    /// The headers that are signed, with their values; all of them are sent.
    QHash<QString, QString> signedHeaders() const { return m_signedHeaders; }
    /// The names of the signed headers, sorted and joined with ";".
    QString signedHeaderNames() const;

    /// The six lines the signature covers.
    QString canonicalRequest() const;
    /// The algorithm, the time and the hash of the canonical request, one a line.
    QString stringToSign() const;
    /// HMAC-SHA256 of the string to sign keyed with \a appSecret, in lower-case hexadecimal.
    QString signature(const QString &appSecret) const;
    /// The value of the "Authorization" header.
    QString authorization(const QString &appKey, const QString &appSecret) const;

private:
    QStringList sortedNames() const;
    QString canonicalPath() const;
    QString canonicalQuery() const;
    QString canonicalHeaders() const;

    QUrl m_url;
    QString m_verb;
    QByteArray m_payload;
    QString m_timestamp;
    QHash<QString, QString> m_signedHeaders;
};

} // namespace orvel
