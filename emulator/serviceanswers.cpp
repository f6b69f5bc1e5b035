#include "emulator/serviceanswers.h"

namespace tessaro::emulator {

namespace {

Reply statusAnswer(const QString &text)
{
    return Reply::json(409, QJsonObject{{QStringLiteral("status"), text}});
}

} // namespace

Reply ServiceAnswers::missedFields(const QStringList &names)
{
    return Reply::message(400, QStringLiteral("Missed mandatory fields: %1\n").arg(names.join(QStringLiteral(", "))));
}

Reply ServiceAnswers::shiftClosed()
{
    return statusAnswer(QStringLiteral("The shift is closed"));
}

Reply ServiceAnswers::shiftAlreadyOpened()
{
    return statusAnswer(QStringLiteral("The shift is already opened"));
}

Reply ServiceAnswers::shiftAlreadyClosed()
{
    return statusAnswer(QStringLiteral("The shift is already closed"));
}

Reply ServiceAnswers::invalidToken()
{
    return Reply::json(401, QJsonObject{{QStringLiteral("error"), QStringLiteral("invalid_token")}});
}

Reply ServiceAnswers::cartConflict()
{
    return Reply::json(409, QJsonObject{
        {QStringLiteral("status"), QStringLiteral("error")},
        {QStringLiteral("statusCode"), 3001},
        {QStringLiteral("message"), QStringLiteral("The cart is being changed by another request")},
    });
}

Reply ServiceAnswers::invalidDataType()
{
    return Reply::message(400, QStringLiteral("Invalid data type"));
}

} // namespace tessaro::emulator
