#include "emulator/reply.h"

#include <QJsonDocument>
#include <QLocale>

namespace tessaro::emulator {

namespace {

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 100: return QByteArrayLiteral("Continue");
    case 200: return QByteArrayLiteral("OK");
    case 201: return QByteArrayLiteral("Created");
    case 204: return QByteArrayLiteral("No Content");
    case 400: return QByteArrayLiteral("Bad Request");
    case 401: return QByteArrayLiteral("Unauthorized");
    case 403: return QByteArrayLiteral("Forbidden");
    case 404: return QByteArrayLiteral("Not Found");
    case 405: return QByteArrayLiteral("Method Not Allowed");
    case 409: return QByteArrayLiteral("Conflict");
    case 415: return QByteArrayLiteral("Unsupported Media Type");
    case 500: return QByteArrayLiteral("Internal Server Error");
    case 502: return QByteArrayLiteral("Bad Gateway");
    case 503: return QByteArrayLiteral("Service Unavailable");
    case 504: return QByteArrayLiteral("Gateway Timeout");
    default: return QByteArrayLiteral("Status");
    }
}

} // namespace

Reply::Reply(int status, const QByteArray &body, const QByteArray &contentType)
    : m_status(status)
    , m_body(body)
    , m_contentType(contentType)
{
}

Reply Reply::json(int status, const QJsonObject &object)
{
    return Reply(status, QJsonDocument(object).toJson(QJsonDocument::Compact));
}

Reply Reply::json(int status, const QJsonArray &array)
{
    return Reply(status, QJsonDocument(array).toJson(QJsonDocument::Compact));
}

Reply Reply::message(int status, const QString &text)
{
    return json(status, QJsonObject{{QStringLiteral("message"), text}});
}

int Reply::status() const
{
    return m_status;
}

QByteArray Reply::body() const
{
    return m_body;
}

QByteArray Reply::contentType() const
{
    return m_contentType;
}

void Reply::setHeaders(const QList<QPair<QByteArray, QByteArray>> &headers)
{
    m_headers = headers;
}

Reply Reply::truncated() const
{
    Reply reply = *this;
    reply.m_body = m_body.left(m_body.size() / 2);
    return reply;
}

Reply Reply::malformed() const
{
    Reply reply = *this;
    reply.m_body = m_body.isEmpty() ? QByteArrayLiteral("{}") : m_body;
    reply.m_body.insert(1, ',');
    return reply;
}

Reply Reply::emptied() const
{
    Reply reply = *this;
    reply.m_body.clear();
    return reply;
}

QByteArray Reply::httpDate(const QDateTime &time)
{
    // Day and month names are English whatever the process's locale.
    return QLocale::c().toString(time.toUTC(), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss 'GMT'")).toLatin1();
}

QByteArray Reply::toHttp(bool keepAlive, const QDateTime &date) const
{
    QByteArray bytes;
    bytes.reserve(200 + m_body.size());
    bytes += "HTTP/1.1 " + QByteArray::number(m_status) + ' ' + reasonPhrase(m_status) + "\r\n";
    bytes += "Date: " + httpDate(date) + "\r\n";
    bytes += "Content-Type: " + m_contentType + "\r\n";
    bytes += "Content-Length: " + QByteArray::number(m_body.size()) + "\r\n";
    bytes += keepAlive ? QByteArrayLiteral("Connection: Keep-Alive\r\n")
                       : QByteArrayLiteral("Connection: close\r\n");
    for (const auto &[name, value] : m_headers)
        bytes += name + ": " + value + "\r\n";
    bytes += "\r\n";
    bytes += m_body;
    return bytes;
}

} // namespace tessaro::emulator
