#pragma once

#include "emulator/exchange.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace tessaro::emulator {

/// One request in the journal, with what became of it.
class JournalEntry
{
public:
    /// What the emulator did with the request.
    enum class Outcome {
        Pending,   ///< not answered yet (a delay is running)
        Answered,  ///< an HTTP answer went out
        Hung,      ///< held without an answer
        Closed,    ///< connection closed without an answer
        Reset,     ///< connection reset
        Abandoned, ///< the client left before the delayed answer was ready
    };

    /// Whether the JSON form shows secrets as they came.
    enum class Secrets {
        Masked, ///< secret headers as their scheme and length ("Bearer <40 chars>"), secret fields as "***"
        Shown,  ///< as they came
    };

    static QString outcomeName(Outcome outcome);
    /// The request's fields plus "id", "status", "outcome" and "fault".
    QJsonObject toJson(Secrets secrets = Secrets::Masked) const;

    qint64 id = 0;
    Exchange exchange;
    int status = 0;          ///< HTTP status answered; 0 when none was
    QByteArray answer;       ///< the body answered, broken or whole; not in the JSON form, where a token would show
    Outcome outcome = Outcome::Pending;
    QString fault;           ///< the fault kind that struck, if any
    QString note;            ///< what a replay made of the request
};

} // namespace tessaro::emulator
