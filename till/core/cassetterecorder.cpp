#include "cassetterecorder.h"

#include <contracts/cassettefile.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QUrlQuery>

namespace till {

using tessaro::contracts::Cassette;
using tessaro::contracts::CassetteExchange;


void CassetteRecorder::setAddresses(const QString &serviceUrl, const QString &tokenUrl)
{
    // An address may carry a password of its own: a cassette keeps neither,
    // whatever its length (a replay needs only the paths).
    m_serviceUrl = QUrl(serviceUrl).adjusted(QUrl::RemovePassword).toString();
    m_tokenUrl = QUrl(tokenUrl).adjusted(QUrl::RemovePassword).toString();
    learnForm(QUrl(tokenUrl).query());
}

void CassetteRecorder::record(const QString &method, const QUrl &url, const RestClient::Headers &headers, const QByteArray &body,
                              const http::Response &response, qint64 durationMs, const QString &action)
{
    CassetteExchange exchange;
    exchange.method = method;
    exchange.path = url.path();
    exchange.query = url.query(QUrl::FullyEncoded);
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        learnHeader(it.key(), it.value());
        exchange.requestHeaders.append({it.key(), it.value()});
    }
    // A hash has no order; sorted, two recordings of one session read the same.
    std::sort(exchange.requestHeaders.begin(), exchange.requestHeaders.end());
    exchange.requestBody = body;
    exchange.status = response.httpCode();
    exchange.networkError = response.isNetworkError();
    exchange.responseBody = response.body();
    for (const auto &[name, value] : response.headers()) {
        const QString text = QString::fromLatin1(name);
        exchange.responseHeaders.append({text, learnAnswerHeader(text, QString::fromUtf8(value))});
    }
    exchange.durationMs = durationMs;
    exchange.action = action;
    learnForm(exchange.query);
    learnBody(body);
    learnBody(exchange.responseBody);
    m_exchanges.append(exchange);
}

Cassette CassetteRecorder::cassette() const
{
    Cassette cassette;
    cassette.pluginVersion = m_pluginVersion;
    cassette.serviceUrl = m_placeholders.apply(m_serviceUrl);
    cassette.tokenUrl = m_placeholders.apply(m_tokenUrl);
    for (CassetteExchange exchange : m_exchanges) {
        exchange.query = m_placeholders.apply(exchange.query);
        for (auto &header : exchange.requestHeaders)
            header.second = m_placeholders.apply(header.second);
        for (auto &header : exchange.responseHeaders)
            header.second = m_placeholders.apply(header.second);
        exchange.requestBody = m_placeholders.apply(exchange.requestBody);
        exchange.responseBody = m_placeholders.apply(exchange.responseBody);
        cassette.exchanges.append(exchange);
    }
    return cassette;
}

bool CassetteRecorder::write(const QString &path, QString *error) const
{
    return tessaro::contracts::CassetteFile::write(cassette(), path, error);
}

QStringList CassetteRecorder::secretsOf(const QString &name, const QString &value) const
{
    if (!m_mask.isSecretHeader(name))
        return {};
    if (name.endsWith(QLatin1String("Cookie"), Qt::CaseInsensitive)) {
        // "a=1; b=2" sent, "a=1; Path=/; HttpOnly" received: the attributes
        // after the first pair of an answer's cookie are no secret.
        QStringList pairs = value.split(QLatin1Char(';'), Qt::SkipEmptyParts);
        if (name.startsWith(QLatin1String("Set-"), Qt::CaseInsensitive))
            pairs = pairs.mid(0, 1);
        QStringList secrets;
        for (const QString &pair : std::as_const(pairs)) {
            const qsizetype equals = pair.indexOf(QLatin1Char('='));
            secrets << pair.mid(equals + 1).trimmed();
        }
        return secrets;
    }
    // A gateway signature: the key named in it identifies, the signature is the secret.
    static const QRegularExpression signature(QStringLiteral("Signature=([^,\\s]+)"));
    const QRegularExpressionMatch signatureMatch = signature.match(value);
    if (signatureMatch.hasMatch())
        return {signatureMatch.captured(1)};
    // "Basic …", "Bearer …": the credentials after the scheme.
    const qsizetype blank = value.indexOf(QLatin1Char(' '));
    return {blank > 0 ? value.mid(blank + 1).trimmed() : value};
}

void CassetteRecorder::learnHeader(const QString &name, const QString &value)
{
    for (const QString &secret : secretsOf(name, value))
        m_placeholders.add(secret);
}

QString CassetteRecorder::learnAnswerHeader(const QString &name, const QString &value)
{
    QString kept = value;
    for (const QString &secret : secretsOf(name, value)) {
        if (!secret.isEmpty() && m_placeholders.add(secret).isEmpty()
                && !tessaro::contracts::PlaceholderMap::holdsPlaceholder(secret))
            kept.replace(kept.indexOf(secret), secret.size(), QStringLiteral("***"));
    }
    return kept;
}

void CassetteRecorder::learnFields(const QJsonValue &value)
{
    if (value.isArray()) {
        for (const QJsonValue &element : value.toArray())
            learnFields(element);
        return;
    }
    const QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (it.value().isObject() || it.value().isArray()) {
            learnFields(it.value());
            continue;
        }
        if (!it.value().isString())
            continue;
        // The mask decides: a field it hides in a one-field text is secret.
        const QString field = QString::fromUtf8(QJsonDocument(QJsonObject{{it.key(), it.value()}}).toJson(QJsonDocument::Compact));
        if (m_mask.text(field) != field)
            m_placeholders.add(it.value().toString());
    }
}

void CassetteRecorder::learnForm(const QString &text)
{
    for (const QString &item : text.split(QLatin1Char('&'), Qt::SkipEmptyParts)) {
        const qsizetype equals = item.indexOf(QLatin1Char('='));
        if (equals <= 0 || m_mask.text(item) == item)
            continue;
        const QString value = item.mid(equals + 1);
        m_placeholders.add(value);
        m_placeholders.add(QUrl::fromPercentEncoding(value.toUtf8().replace('+', ' ')));
    }
}

void CassetteRecorder::learnBody(const QByteArray &body)
{
    if (body.isEmpty())
        return;
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        learnFields(document.object());
    else if (document.isArray())
        learnFields(document.array());
    else
        learnForm(QString::fromUtf8(body));
}

} // namespace till
