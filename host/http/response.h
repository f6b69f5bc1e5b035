#pragma once

#include "../tr.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QUrl>

namespace http {

/// The outcome of one HTTP exchange of the host's RestClient.
class Response
{
public:
    /// Header name and value as received, in the order of arrival.
    using Headers = QList<QPair<QByteArray, QByteArray>>;

    Response() = default;

    /// The body parsed as a JSON object (empty when it is not one).
    QJsonObject responseObject() const { return m_object; }
    /// The body parsed as a JSON array (empty when it is not one).
    QJsonArray responseArray() const { return m_array; }

    /// The HTTP status of the answer; 0 when no answer arrived.
    int httpCode() const { return m_httpCode; }
    /// 0 for an exchange without error, 401 for an unauthorised one,
    /// another positive value (the HTTP status, or the transport's error
    /// number when no answer arrived) for every other failure.
    int errorCode() const { return m_errorCode; }
    tr::Tr errorText() const { return m_errorText; }
    QByteArray body() const { return m_body; }
    QUrl url() const { return m_url; }
    /// The headers of the final answer (not of an interim "100 Continue"),
    /// repeated names kept apart; empty when no answer arrived. An addition
    /// of this stand-in for the till's recorder: the plug-in does not read it.
    Headers headers() const { return m_headers; }

    /// No HTTP answer at all: refused, reset, closed, timed out, unresolved.
    bool isNetworkError() const { return m_networkError; }

    void setUrl(const QUrl &url) { m_url = url; }
    /// Stores the raw body and parses it as JSON.
    void setBody(const QByteArray &body);
    void setHttpCode(int code) { m_httpCode = code; }
    void setError(int code, const tr::Tr &text) { m_errorCode = code; m_errorText = text; }
    void setNetworkError(bool failed) { m_networkError = failed; }
    void setHeaders(const Headers &headers) { m_headers = headers; }

private:
    QJsonObject m_object;
    QJsonArray m_array;
    int m_httpCode = 0;
    int m_errorCode = 0;
    tr::Tr m_errorText;
    QByteArray m_body;
    QUrl m_url;
    Headers m_headers;
    bool m_networkError = false;
};

} // namespace http
