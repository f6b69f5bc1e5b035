#include "emulator/exchange.h"

#include <QHttpServerRequest>
#include <QJsonDocument>
#include <QMetaEnum>
#include <QUrl>

#include <algorithm>

namespace tessaro::emulator {

Exchange Exchange::fromRequest(const QHttpServerRequest &request, const QByteArray &httpVersion,
                               const QDateTime &receivedAt)
{
    Exchange exchange;
    const auto methods = QMetaEnum::fromType<QHttpServerRequest::Method>();
    exchange.method = QByteArray(methods.valueToKey(int(request.method()))).toUpper();
    exchange.path = request.url().path();
    exchange.query = request.url().query(QUrl::FullyEncoded);
    exchange.headers = request.headers();
    exchange.body = request.body();
    if (!httpVersion.isEmpty())
        exchange.httpVersion = httpVersion;
    exchange.receivedAt = receivedAt;
    return exchange;
}

QByteArray Exchange::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

bool Exchange::hasHeader(const QByteArray &name) const
{
    return std::any_of(headers.cbegin(), headers.cend(), [&name](const auto &entry) {
        return entry.first.compare(name, Qt::CaseInsensitive) == 0;
    });
}

bool Exchange::keepAlive() const
{
    const QByteArray connection = header(QByteArrayLiteral("connection")).toLower();
    if (connection.contains("close"))
        return false;
    if (connection.contains("keep-alive"))
        return true;
    return httpVersion == "1.1";
}

QJsonObject Exchange::jsonObject() const
{
    return QJsonDocument::fromJson(body).object();
}

QJsonObject Exchange::toJson() const
{
    QJsonObject headerObject;
    for (const auto &[key, value] : headers)
        headerObject.insert(QString::fromLatin1(key), QString::fromUtf8(value));
    return {
        {QStringLiteral("time"), receivedAt.toString(Qt::ISODateWithMs)},
        {QStringLiteral("method"), QString::fromLatin1(method)},
        {QStringLiteral("path"), path},
        {QStringLiteral("query"), query},
        {QStringLiteral("headers"), headerObject},
        {QStringLiteral("body"), QString::fromUtf8(body)},
    };
}

} // namespace tessaro::emulator
