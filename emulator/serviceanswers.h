#pragma once

#include "emulator/reply.h"

#include <QStringList>

namespace tessaro::emulator {

/// The answers the service gives in the same words wherever they occur: shift
/// states, token refusal, missing fields. Faults reuse them, so a scripted
/// answer reads exactly like a real one.
class ServiceAnswers
{
public:
    /// HTTP 400 {"message": "Missed mandatory fields: a, b\n"}; the line feed
    /// ends the text, as the service writes it.
    static Reply missedFields(const QStringList &names);
    /// HTTP 409 {"status": "The shift is closed"}.
    static Reply shiftClosed();
    /// HTTP 409 {"status": "The shift is already opened"}.
    static Reply shiftAlreadyOpened();
    /// HTTP 409 {"status": "The shift is already closed"}.
    static Reply shiftAlreadyClosed();
    /// HTTP 401 {"error": "invalid_token"}.
    static Reply invalidToken();
    /// HTTP 409 cart answer with "status": "error" and "statusCode": 3001.
    static Reply cartConflict();
    /// HTTP 400 {"message": "Invalid data type"}: a body that is not what the
    /// path expects.
    static Reply invalidDataType();
};

} // namespace tessaro::emulator
