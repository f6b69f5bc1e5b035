#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QJsonArray>
#include <QJsonObject>
#include <QUrl>

#include <curl/curl.h>

/// The answer to one request made by CurlClient.
class CurlResult
{
public:
    QJsonObject object() const;
    QJsonArray array() const;
    /// Whether an HTTP answer arrived at all.
    bool answered() const;
    /// The values of the answer's headers named \a name (case-insensitive), in order.
    QByteArrayList headers(const QByteArray &name) const;

    CURLcode error = CURLE_OK;
    long status = 0;
    QByteArray body;
    /// The answer's header lines as received, status line first.
    QByteArray head;
};

/// A blocking HTTP client for the emulator's tests, written on libcurl like
/// the till's own transport: each call blocks the calling thread until the
/// answer, the connection's end or the time-out. Reuses its connection.
class CurlClient
{
public:
    CurlClient();
    ~CurlClient();
    CurlClient(const CurlClient &) = delete;
    CurlClient &operator=(const CurlClient &) = delete;

    /// Time-out of a whole request, in milliseconds (default 5000).
    void setTimeoutMs(long timeoutMs);

    /// Headers are "Name: value" lines.
    CurlResult get(const QUrl &url, const QByteArrayList &headers = {});
    CurlResult post(const QUrl &url, const QByteArray &body, const QByteArrayList &headers = {});
    CurlResult send(const QByteArray &method, const QUrl &url, const QByteArray &body,
                    const QByteArrayList &headers);

private:
    CURL *m_curl;
    long m_timeoutMs = 5000;
};
