#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

QT_BEGIN_NAMESPACE
class QHttpServerRequest;
QT_END_NAMESPACE

namespace tessaro::emulator {

/// One HTTP request as it arrived, copied out of the server's parser so that it
/// outlives it: a delayed answer is computed after the parser has moved on, and
/// the journal keeps every request.
class Exchange
{
public:
    static Exchange fromRequest(const QHttpServerRequest &request, const QByteArray &httpVersion,
                                const QDateTime &receivedAt);

    /// The value of the first header with that name, compared without case;
    /// empty when absent.
    QByteArray header(const QByteArray &name) const;
    /// Whether a header with that name was sent at all.
    bool hasHeader(const QByteArray &name) const;
    /// Whether the connection stays open after the answer: "Connection"
    /// decides, else the protocol version (1.1 keeps it, 1.0 closes it).
    bool keepAlive() const;
    /// The body as a JSON object; empty when it is not one.
    QJsonObject jsonObject() const;
    /// The journal's form: method, path, query, headers, body, time.
    QJsonObject toJson() const;

    QByteArray method;
    QString path;
    QString query;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;
    QByteArray httpVersion = QByteArrayLiteral("1.1");
    QDateTime receivedAt;
};

} // namespace tessaro::emulator
