#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

namespace tessaro::emulator {

/// One HTTP answer: status, body and content type, and its bytes on the wire.
/// The body-spoiling variants serve the fault kinds that answer with a broken
/// body after the request was applied.
class Reply
{
public:
    Reply() = default;
    Reply(int status, const QByteArray &body,
          const QByteArray &contentType = QByteArrayLiteral("application/json"));

    static Reply json(int status, const QJsonObject &object);
    static Reply json(int status, const QJsonArray &array);
    /// {"message": text}, the service's usual error form.
    static Reply message(int status, const QString &text);

    /// Headers sent as they stand after the server's own (Date, Content-Type,
    /// Content-Length, Connection); a replayed answer's recorded ones.
    void setHeaders(const QList<QPair<QByteArray, QByteArray>> &headers);

    int status() const;
    QByteArray body() const;
    QByteArray contentType() const;

    /// The first half of the body: a JSON text cut short.
    Reply truncated() const;
    /// The body with a stray comma after its opening bracket: no longer JSON.
    Reply malformed() const;
    /// The same status with an empty body.
    Reply emptied() const;

    /// Status line, headers and body as HTTP/1.1 sends them; the "Date"
    /// header says \a date, the emulator's clock at the moment of answering.
    QByteArray toHttp(bool keepAlive, const QDateTime &date) const;

    /// \a time as an HTTP "Date" header writes it: "Sun, 06 Nov 1994 08:49:37 GMT".
    static QByteArray httpDate(const QDateTime &time);

private:
    int m_status = 200;
    QByteArray m_body;
    QByteArray m_contentType = QByteArrayLiteral("application/json");
    QList<QPair<QByteArray, QByteArray>> m_headers;
};

} // namespace tessaro::emulator
