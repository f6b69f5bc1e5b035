#include "emulator/advicenoteendpoint.h"

#include "emulator/requiredfields.h"
#include "emulator/serviceanswers.h"
#include "emulator/servicestate.h"

namespace tessaro::emulator {

AdviceNoteEndpoint::AdviceNoteEndpoint(ServiceState &state)
    : m_state(state)
{
}

Reply AdviceNoteEndpoint::receive(const QJsonObject &body, const QDateTime &receivedAt)
{
    if (const auto refusal = RequiredFields::refusal(
            body,
            {QStringLiteral("header.transactionType"), QStringLiteral("header.tillNo"), QStringLiteral("header.store"),
             QStringLiteral("header.originalInvoice"), QStringLiteral("items")},
            QStringLiteral("items"),
            {QStringLiteral("sequenceNumber"), QStringLiteral("subsysNo"), QStringLiteral("quantity"),
             QStringLiteral("returnReason")}))
        return *refusal;

    const QJsonObject header = body.value(QStringLiteral("header")).toObject();
    const int storeNo = header.value(QStringLiteral("store")).toInt();
    const int tillNo = header.value(QStringLiteral("tillNo")).toInt();
    if (!m_state.shifts.isOpen(storeNo, tillNo))
        return ServiceAnswers::shiftClosed();

    const auto note = m_state.adviceNotes.add(m_state.shifts.takeInvoiceId(storeNo, tillNo), body, receivedAt);
    return Reply::json(200, QJsonObject{
        {QStringLiteral("uuid"), note.uuid},
        {QStringLiteral("Key4"), note.key4},
        {QStringLiteral("invoiceID"), QString(note.key4).remove(QLatin1Char('/'))},
    });
}

} // namespace tessaro::emulator
