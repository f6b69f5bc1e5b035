#include "recordingrestclient.h"

#include "actionlog.h"
#include "cassetterecorder.h"


#include <QJsonArray>
#include <QJsonObject>

namespace till {

namespace {

QJsonValue bodyOf(const QJsonDocument &document)
{
    if (document.isObject())
        return document.object();
    if (document.isArray())
        return document.array();
    return QJsonValue::Undefined;
}

QJsonValue bodyOf(const QByteArray &raw)
{
    if (raw.isEmpty())
        return QJsonValue::Undefined;
    const QJsonDocument document = QJsonDocument::fromJson(raw);
    return document.isNull() ? QJsonValue(QString::fromUtf8(raw)) : bodyOf(document);
}

} // namespace

RecordingRestClient::RecordingRestClient(ActionLog *log, CassetteRecorder *recorder)
    : m_log(log)
    , m_recorder(recorder)
{
}

bool RecordingRestClient::post(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    m_timer.start();
    const bool ok = RestClient::post(url, body, headers);
    // The host sends a JSON document in its compact form.
    record(QStringLiteral("POST"), url, bodyOf(body), headers, body.toJson(QJsonDocument::Compact));
    return ok;
}

bool RecordingRestClient::get(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    m_timer.start();
    const bool ok = RestClient::get(url, body, headers);
    record(QStringLiteral("GET"), url, QJsonValue::Undefined, headers, QByteArray());
    return ok;
}

bool RecordingRestClient::postRaw(const QUrl &url, const QByteArray &body, const Headers &headers)
{
    m_timer.start();
    const bool ok = RestClient::postRaw(url, body, headers);
    record(QStringLiteral("POST"), url, bodyOf(body), headers, body);
    return ok;
}

void RecordingRestClient::record(const QString &method, const QUrl &url, const QJsonValue &body, const Headers &headers,
                                 const QByteArray &sent)
{
    const http::Response response = lastResponse();
    if (m_recorder)
        m_recorder->record(method, url, headers, sent, response, m_timer.elapsed(), m_log->current().title);
    RequestRecord request;
    request.method = method;
    request.url = url.toString();
    request.path = url.path();
    request.httpCode = response.httpCode();
    request.errorCode = response.errorCode();
    request.networkError = response.isNetworkError();
    request.errorText = response.errorText().text();
    request.requestBody = body;
    request.responseBody = bodyOf(response.body());
    m_log->addRequest(request);
}

} // namespace till
