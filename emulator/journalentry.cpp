#include "emulator/journalentry.h"

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

QJsonObject JournalEntry::toJson() const
{
    QJsonObject object = exchange.toJson();
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
