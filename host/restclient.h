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
/// exchanges. When a kept-alive connection dies before any byte of the answer,
/// a request that is safe to repeat (a GET, or a POST made while
/// setRepeatable(true) holds) goes once more on a fresh connection; any other
/// POST is never sent twice: the exchange is a network failure, since the peer
/// may have applied it. An answer larger than maxAnswerSize() is dropped.
/// Made through MockFactory<RestClient>, so tests may substitute it.
class RestClient
{
public:
    using Headers = QHash<QString, QString>;

    /// The answer bound when "Host:maxAnswerSize" does not set one: 8 MiB. The
    /// service's answers are a few kilobytes, and a till that takes in
    /// hundreds of megabytes runs out of time and memory.
    static constexpr qint64 DefaultMaxAnswerSize = qint64(8) * 1024 * 1024;

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
    /// The largest answer body accepted, in bytes: "Host:maxAnswerSize" of the
    /// configuration when the client is made, 8 MiB unless set (or when not
    /// positive). A larger answer ends the exchange as a network failure as
    /// soon as it is announced or its bytes pass the bound; nothing of it is kept.
    void setMaxAnswerSize(qint64 bytes);
    qint64 maxAnswerSize() const;
    /// Whether the POSTs that follow are safe to send twice (an OAuth2 token
    /// request): until set back to false, such a POST goes once more on a
    /// fresh connection when a kept-alive one died before any answer byte.
    void setRepeatable(bool repeatable);
    bool isRepeatable() const;
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
