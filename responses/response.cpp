#include "response.h"

#include "connectionerrorexception.h"
#include "hostsdk/hostadapter.h"
#include "shiftclosedexception.h"

#include <basicexception.h>
#include <http/response.h>

namespace tessaro {

namespace {

bool isOneOf(const QString &text, std::initializer_list<const char *> candidates)
{
    for (const char *candidate : candidates) {
        if (text == QLatin1String(candidate))
            return true;
    }
    return false;
}

// "Item wasn't found" becomes "itemwasntfound".
QString messageKey(const QString &message)
{
    QString key = message.simplified();
    key.remove(QLatin1Char('\''));
    key.remove(QLatin1Char(' '));
    return key.toLower();
}

} // namespace

Response::Response(const QJsonObject &json)
    : object(json)
{
}

Response::Response(const http::Response &response)
    : object(response.responseObject())
    , array(response.responseArray())
    , transportCode(hostsdk::httpCode(response))
    , errorCode(hostsdk::errorCode(response))
    , errorText(response.errorText())
    , body(response.body())
    , url(response.url())
{
}

Response::~Response() = default;

bool Response::isArrayResponse() const
{
    return false;
}

QString Response::statusString() const
{
    return object.value(QLatin1String("status")).toString();
}

QString Response::message() const
{
    return object.value(QLatin1String("message")).toString();
}

bool Response::unique() const
{
    return object.value(QLatin1String("unique")).toBool(true);
}

Response::Status Response::status() const
{
    const QString error = object.value(QLatin1String("error")).toString();
    const QString state = statusString();
    const QString text = message();

    if (error == QLatin1String("invalid_token") || errorCode == 401)
        return TokenError;
    if (state == QLatin1String("Not unauthorized"))
        return TokenError;
    if (text == QLatin1String("Check token error. Inactive token"))
        return TokenError;
    if (error == QLatin1String("Filter threw Exception"))
        return TokenError;
    if (isOneOf(state, {"The shift is already open", "The shift is already opened"}))
        return ShiftAlreadyOpened;
    if (isOneOf(state, {"The shift is closed", "The shift is already closed"}))
        return ShiftClosed;
    if (text == QLatin1String("Customer wasn't found in CustomerAPI"))
        return CustomerNotFound;
    if (text == QLatin1String("Internal Server Error"))
        return Error;
    if (errorCode > 0)
        return Error;
    if (text == QLatin1String("Invalid data type"))
        return Error;
    if (!object.isEmpty())
        return Success;
    return isArrayResponse() ? Success : IncorrectResponse;
}

tr::Tr Response::errorMessage() const
{
    const QString text = message();
    if (status() == CustomerNotFound)
        return tr::Tr(QStringLiteral("tessaroClientNotFoundError"), QStringLiteral("Клиент не найден"));
    if (text == QLatin1String("Missed mandatory fields: quantityOverwrite.deleteReason\n"))
        return tr::Tr(QStringLiteral("tessaroMissedDeleteReason"), QStringLiteral("Не указана причина изменения количества"));
    if (object.value(QLatin1String("error_msg")).toString().contains(QLatin1String("signature expired")))
        return tr::Tr(QStringLiteral("tessaroGateSignatureError"), QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время"));
    if (text == QLatin1String("cardBarcode doesn't match pattern"))
        return tr::Tr(QStringLiteral("tessaroIncorrectCardNumber"), QStringLiteral("Некорректный номер карты"));
    if (!text.isEmpty())
        return tr::Tr(QStringLiteral("tessaroError%1").arg(messageKey(text)), text);
    return tr::Tr(QStringLiteral("tessaroUnknownError"), QStringLiteral("Неизвестная ошибка при работе с Tessaro"));
}

void Response::checkStatus() const
{
    switch (status()) {
    case Success:
    case ShiftAlreadyOpened:
        return;
    case ShiftClosed:
        throw ShiftClosedException();
    case IncorrectResponse:
        throw BasicException(tr::Tr(QStringLiteral("tessaroIncorrectResponse"), QStringLiteral("Некорректный ответ от сервера")));
    default:
        throw BasicException(errorMessage());
    }
}

bool Response::operator==(const Response &other) const
{
    return object == other.object && array == other.array && transportCode == other.transportCode
        && errorCode == other.errorCode && errorText == other.errorText && body == other.body && url == other.url;
}

TokenResponse::TokenResponse(const Response &response)
    : Response(response)
{
}

QString TokenResponse::token() const
{
    return object.value(QLatin1String("access_token")).toString();
}

} // namespace tessaro
