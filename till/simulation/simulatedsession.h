#pragma once

#include "scenario.h"

#include <emulator/fault.h>

#include <QByteArray>
#include <QList>
#include <QString>

namespace till {

/// A misbehaviour of the service that strikes one request of a session: the
/// \c ordinal-th request (from 0) the till sends to \c path.
struct SessionFault
{
    using Kind = tessaro::emulator::Fault::Kind;

    /// The service path as the client names it ("/advicenote", "/token").
    QString path;
    int ordinal = 0;
    /// What the emulator does to the request; a reset when \c unreachable.
    Kind kind = Kind::Reset;
    int delayMs = 0;
    int status = 0;
    QByteArray body;
    /// Nothing answers: the connection is refused before the emulator sees the
    /// request. Written down as the reset the plug-in meets the same way.
    bool unreachable = false;

    /// The kind's name in reports and session files: the emulator's, or "unreachable".
    QString kindName() const
    {
        return unreachable ? QStringLiteral("unreachable") : tessaro::emulator::Fault::kindName(kind);
    }
};

/// One cashier session of the simulation: the till's settings, documents and
/// actions (a scenario), how the service is set up, and, once it has run, the
/// cashier's answers and the faults it met, so that it replays exactly.
struct SimulatedSession
{
    enum class Auth { None, Token, Gateway };

    quint64 seed = 0;
    Scenario scenario;
    Auth auth = Auth::Token;
    /// Whether the service's shift of the till is open at the start.
    bool serviceShiftOpen = true;
    /// The till's request time-out ("Tessaro:timeout").
    int timeoutSeconds = 1;
    /// The chance of a fault on each request while the session is drawn.
    double faultRate = 0.0;
    /// Replayed: the cashier answers with scenario.answers and the service
    /// fails as faults says, instead of both being drawn from the seed.
    bool scripted = false;
    QList<SessionFault> faults;
    /// Played in a child process killed (SIGKILL) while the service holds the
    /// killRequest-th request (from 0), then finished from the data folder.
    bool killChild = false;
    int killRequest = 0;

    static QString authName(Auth auth)
    {
        switch (auth) {
        case Auth::None:
            return QStringLiteral("none");
        case Auth::Token:
            return QStringLiteral("token");
        case Auth::Gateway:
            break;
        }
        return QStringLiteral("gateway");
    }
};

} // namespace till
