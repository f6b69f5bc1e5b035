#pragma once

#include "emulator/exchange.h"
#include "emulator/reply.h"

namespace tessaro::emulator {

class Clock;
class FaultPlan;
class Journal;
class ServiceState;
class TokenIssuer;

/// The emulator's own paths under "/_emulator/", for scripts and tests that
/// drive the program from outside. They need no authentication, are not kept in
/// the journal and no fault strikes them.
///
/// GET/DELETE requests; GET/POST/DELETE faults; GET/POST clock; GET state;
/// POST shifts; DELETE tokens.
class AdminEndpoints
{
public:
    /// \a showSecrets: the journal shows credentials and tokens as they came.
    AdminEndpoints(Journal &journal, FaultPlan &faults, Clock &clock, ServiceState &state, TokenIssuer &tokens,
                   bool showSecrets);

    static bool owns(const QString &path);
    Reply handle(const Exchange &exchange);

private:
    Reply requests(const QByteArray &method);
    Reply faults(const Exchange &exchange);
    Reply clock(const Exchange &exchange);
    Reply shifts(const Exchange &exchange);
    Reply tokens(const QByteArray &method);

    Journal &m_journal;
    FaultPlan &m_faults;
    Clock &m_clock;
    ServiceState &m_state;
    TokenIssuer &m_tokens;
    bool m_showSecrets;
};

} // namespace tessaro::emulator
