#pragma once

#include "emulator/reply.h"

#include <QJsonObject>
#include <QString>

namespace tessaro::emulator {

class Clock;
class ServiceState;

/// /till/open, /till/close and /till/deposit.
class TillEndpoints
{
public:
    TillEndpoints(ServiceState &state, const Clock &clock);

    /// Needs "storeNo", "tillNo", "operatorID". Opens the shift; an open one
    /// answers {"status": "The shift is already opened"}.
    Reply open(const QJsonObject &body);
    /// Needs "storeNo", "tillNo", "payments" (array). Closes the shift; a closed
    /// one answers {"status": "The shift is already closed"}.
    Reply close(const QJsonObject &body);
    /// Needs "storeNo", "tillNo", "operatorID", "typeCode" (1 out, 2 in),
    /// "amount", and an open shift. Repeats with the same request id are
    /// answered as the first.
    Reply deposit(const QJsonObject &body, const QString &requestId);

private:
    ServiceState &m_state;
    const Clock &m_clock;
};

} // namespace tessaro::emulator
