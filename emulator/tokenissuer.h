#pragma once

#include "emulator/emulatorsettings.h"
#include "emulator/exchange.h"
#include "emulator/reply.h"

#include <QDateTime>
#include <QHash>
#include <QMutex>

namespace tessaro::emulator {

class Clock;

/// The OAuth2 client-credentials token path and the bearer check of the
/// service paths. Tokens expire by the emulator's clock.
class TokenIssuer
{
public:
    TokenIssuer(const EmulatorSettings &settings, const Clock &clock);

    /// Answers a token request: a form body with "grant_type" =
    /// "client_credentials", "client_id" and "realm_id", and the client's
    /// "Authorization" header. Success: {"access_token", "expires_in",
    /// "token_type": "bearer"}; wrong credentials: 401 {"error": "invalid_client"}.
    Reply issue(const Exchange &exchange);

    /// Whether an "Authorization" header value is "Bearer " with a token that
    /// was issued and has not expired.
    bool accepts(const QByteArray &authorization) const;

    /// Forgets every token issued, so the next service call meets a token error.
    void revokeAll();
    /// How many tokens were issued so far.
    int issuedCount() const;

private:
    const EmulatorSettings &m_settings;
    const Clock &m_clock;
    mutable QMutex m_mutex;
    QHash<QString, QDateTime> m_expiry;
    int m_issued = 0;
};

} // namespace tessaro::emulator
