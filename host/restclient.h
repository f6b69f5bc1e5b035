#pragma once

#include "http/response.h"

#include <QHash>
#include <QJsonDocument>
#include <QStringList>
#include <QUrl>

#include <memory>

namespace Log4Qt {
class Logger;
}

/// The host's HTTP client. Each exchange blocks the calling thread until the
/// answer arrives or the time-out expires; connections are kept alive between
/// exchanges. A POST is never sent twice: when a kept-alive connection dies
/// before the answer, the exchange is a network failure, since the peer may
/// have applied it. Made through MockFactory<RestClient>, so tests may
/// substitute it.
class RestClient
{
public:
    using Headers = QHash<QString, QString>;

    RestClient();
    virtual ~RestClient();
    RestClient(const RestClient &) = delete;
    RestClient &operator=(const RestClient &) = delete;

    /// Logger of the exchanges; null logs nothing.
    void setLogger(const Log4Qt::Logger *logger);
    /// The name of the peer as the cashier's messages put it ("сервису Tessaro").
    void setTargetAlias(const QString &alias);
    QString targetAlias() const;
    /// Bounds each whole exchange (connect, send, receive), in milliseconds.
    /// An exchange never waits without bound: a time-out that is not positive
    /// (which libcurl would take as none) or longer than longestTimeout() is
    /// replaced by longestTimeout(), with a warning.
    void setTimeout(int milliseconds);
    int timeout() const;
    /// The longest time-out setTimeout() accepts; two minutes unless set. A
    /// till blocked for longer is as good as frozen.
    void setLongestTimeout(int milliseconds);
    int longestTimeout() const;
    /// Names of headers whose values never reach a log (compared case-insensitively).
    void setSecretHeaders(const QStringList &names);
    QStringList secretHeaders() const;

    /// POSTs \a body as compact JSON. Returns whether the exchange ended without error.
    virtual bool post(const QUrl &url, const QJsonDocument &body, const Headers &headers);
    /// GETs \a url; \a body is not sent (callers pass an empty document).
    virtual bool get(const QUrl &url, const QJsonDocument &body, const Headers &headers);
    /// POSTs \a body as it stands.
    virtual bool postRaw(const QUrl &url, const QByteArray &body, const Headers &headers);

    /// The outcome of the last exchange.
    virtual http::Response lastResponse() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
