#include "emulator/journalentry.h"

#include "secrets/secretmask.h"

namespace tessaro::emulator {

QString JournalEntry::outcomeName(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Pending: return QStringLiteral("pending");
    case Outcome::Answered: return QStringLiteral("answered");
    case Outcome::Hung: return QStringLiteral("hung");
    case Outcome::Closed: return QStringLiteral("closed");
    case Outcome::Reset: return QStringLiteral("reset");
    case Outcome::Abandoned: return QStringLiteral("abandoned");
    }
    return {};
}

namespace {

// The request's JSON form as anyone who asks the journal may see it.
QJsonObject masked(QJsonObject object)
{
    const SecretMask mask;
    QJsonObject headers = object.value(QStringLiteral("headers")).toObject();
    for (auto it = headers.begin(); it != headers.end(); ++it) {
        const QString value = it.value().toString();
        it.value() = mask.isSecretHeader(it.key()) ? SecretMask::summary(value) : mask.text(value);
    }
    object.insert(QStringLiteral("headers"), headers);
    for (const QString &field : {QStringLiteral("query"), QStringLiteral("body")})
        object.insert(field, mask.text(object.value(field).toString()));
    return object;
}

} // namespace

QJsonObject JournalEntry::toJson(Secrets secrets) const
{
    QJsonObject object = secrets == Secrets::Shown ? exchange.toJson() : masked(exchange.toJson());
    object.insert(QStringLiteral("id"), id);
    object.insert(QStringLiteral("status"), status);
    object.insert(QStringLiteral("outcome"), outcomeName(outcome));
    if (!fault.isEmpty())
        object.insert(QStringLiteral("fault"), fault);
    if (!note.isEmpty())
        object.insert(QStringLiteral("note"), note);
    return object;
}

} // namespace tessaro::emulator
