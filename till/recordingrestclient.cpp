#include "recordingrestclient.h"

#include "actionlog.h"

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

RecordingRestClient::RecordingRestClient(ActionLog *log)
    : m_log(log)
{
}

bool RecordingRestClient::post(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    const bool ok = RestClient::post(url, body, headers);
    record(QStringLiteral("POST"), url, bodyOf(body));
    return ok;
}

bool RecordingRestClient::get(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    const bool ok = RestClient::get(url, body, headers);
    record(QStringLiteral("GET"), url, QJsonValue::Undefined);
    return ok;
}

bool RecordingRestClient::postRaw(const QUrl &url, const QByteArray &body, const Headers &headers)
{
    const bool ok = RestClient::postRaw(url, body, headers);
    record(QStringLiteral("POST"), url, bodyOf(body));
    return ok;
}

void RecordingRestClient::record(const QString &method, const QUrl &url, const QJsonValue &body)
{
    const http::Response response = lastResponse();
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
