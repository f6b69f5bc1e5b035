#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

#include <optional>

namespace tessaro::contracts {

/// One request and its answer as a cassette keeps them. Secrets are already
/// placeholders here (PlaceholderMap); bodies are the bytes on the wire.
class CassetteExchange
{
public:
    using Headers = QList<QPair<QString, QString>>;

    /// The value of the first header with that name, compared without case.
    static std::optional<QString> header(const Headers &headers, const QString &name);

    QJsonObject toJson() const;
    /// Null when \a json is no exchange; \a error says which field is wrong.
    static std::optional<CassetteExchange> fromJson(const QJsonObject &json, QString *error);

    /// "GET" or "POST".
    QString method;
    /// The decoded path, with the service's base path.
    QString path;
    /// The encoded query, without "?"; empty when there is none.
    QString query;
    Headers requestHeaders;
    QByteArray requestBody;
    /// The HTTP status; 0 when no answer arrived (networkError).
    int status = 0;
    bool networkError = false;
    Headers responseHeaders;
    QByteArray responseBody;
    qint64 durationMs = 0;
    /// The cashier action that caused the request ("close", "add 4600…").
    QString action;
};

} // namespace tessaro::contracts
