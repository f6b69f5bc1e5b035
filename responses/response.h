#pragma once

#include <tr.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QUrl>

namespace http {
class Response;
}

namespace tessaro {

/// One answer of the Tessaro service: its JSON body (an object or an array)
/// and the transport's outcome.
///
/// The answer is classified anew on every status() call. Service errors stay
/// values until checkStatus() turns them into exceptions.
class Response
{
public:
    enum Status {
        Unknown = 0,
        Success = 1,
        Error = 2,
        TokenError = 3,          ///< fetch a new token and repeat
        ShiftClosed = 4,
        CustomerNotFound = 5,
        IncorrectResponse = 6,   ///< empty where a body was expected
        ShiftAlreadyOpened = 7,  ///< counts as success
        ValidationUnavailable = 8,
        ValidationError = 9,
        CartUpdateConflict = 10,
    };

    Response() = default;
    explicit Response(const QJsonObject &object);
    explicit Response(const http::Response &response);

    virtual Status status() const;
    virtual ~Response();
    /// Whether the answer's body is a JSON array rather than an object.
    virtual bool isArrayResponse() const;

    bool success() const { return status() == Success; }
    bool tokenError() const { return status() == TokenError; }

    QString statusString() const;
    QString message() const;
    bool unique() const;

    /// The cashier's message for a failed answer.
    tr::Tr errorMessage() const;
    /// Returns for success and an already opened shift; throws otherwise:
    /// ShiftClosedException for a closed shift, BasicException for the rest.
    void checkStatus() const;

    QJsonObject jsonObject() const { return object; }
    QJsonArray jsonArray() const { return array; }
    int transport() const { return transportCode; }
    int error() const { return errorCode; }
    tr::Tr transportErrorText() const { return errorText; }
    QByteArray rawBody() const { return body; }
    QUrl requestUrl() const { return url; }

    bool operator==(const Response &other) const;
    bool operator!=(const Response &other) const { return !(*this == other); }

protected:
    QJsonObject object;
    QJsonArray array;
    qint32 transportCode = 0;
    qint32 errorCode = 0;
    tr::Tr errorText;
    QByteArray body;
    QUrl url;
};

/// The answer of the token endpoint.
class TokenResponse : public Response
{
public:
    using Response::Response;
    explicit TokenResponse(const Response &response);

    QString token() const;
};

} // namespace tessaro
