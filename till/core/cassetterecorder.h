#pragma once

#include <contracts/cassette.h>
#include <contracts/placeholdermap.h>

#include <restclient.h>
#include <secrets/secretmask.h>

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

namespace till {

/// Keeps every exchange of the plug-in with the service as a cassette
/// (docs/contracts.md): the request as sent, the answer as received, the time
/// taken and the cashier action that caused it. Secrets never reach the
/// cassette: what the project's secret mask calls secret (the credentials
/// of secret headers, secret JSON, form and query fields, the gateway's
/// signature) becomes a stable placeholder, in every exchange kept.
class CassetteRecorder
{
public:
    /// The version of the plug-in whose exchanges are kept (PluginHost::versionOf).
    void setPluginVersion(const QString &version) { m_pluginVersion = version; }
    /// The service's and the token's addresses, as the till is configured.
    void setAddresses(const QString &serviceUrl, const QString &tokenUrl);

    void record(const QString &method, const QUrl &url, const RestClient::Headers &headers, const QByteArray &body,
                const http::Response &response, qint64 durationMs, const QString &action);

    int size() const { return int(m_exchanges.size()); }
    /// The exchanges so far, every secret known by now a placeholder.
    tessaro::contracts::Cassette cassette() const;
    bool write(const QString &path, QString *error) const;

private:
    /// The secret parts of a header's value: credentials after the scheme,
    /// a gateway's signature, cookie values; none when the header is not secret.
    QStringList secretsOf(const QString &name, const QString &value) const;
    void learnHeader(const QString &name, const QString &value);
    /// \a value with its secrets learnt; a secret too short for a placeholder
    /// is hidden right away.
    QString learnAnswerHeader(const QString &name, const QString &value);
    void learnFields(const QJsonValue &value);
    void learnForm(const QString &text);
    void learnBody(const QByteArray &body);

    SecretMask m_mask;
    tessaro::contracts::PlaceholderMap m_placeholders;
    QString m_pluginVersion;
    QString m_serviceUrl;
    QString m_tokenUrl;
    /// Kept as they were; the placeholders are put in when the cassette is
    /// made, so a secret learnt late is hidden in earlier exchanges too.
    QList<tessaro::contracts::CassetteExchange> m_exchanges;
};

} // namespace till
