#pragma once

#include "emulator/reply.h"

#include <QDateTime>
#include <QJsonObject>

namespace tessaro::emulator {

class ServiceState;

/// /advicenote: registers a return and assigns its return invoice number.
class AdviceNoteEndpoint
{
public:
    explicit AdviceNoteEndpoint(ServiceState &state);

    /// Needs "header.transactionType", "header.tillNo", "header.store",
    /// "header.originalInvoice", an "items" array whose elements carry
    /// "sequenceNumber", "subsysNo", "quantity" and "returnReason", and an open
    /// shift of the header's till. Answers {"uuid", "Key4", "invoiceID"} with
    /// Key4 the till's next invoice number, 0/0/<till>/<number>.
    Reply receive(const QJsonObject &body, const QDateTime &receivedAt);

private:
    ServiceState &m_state;
};

} // namespace tessaro::emulator
