#pragma once

#include "emulator/adminendpoints.h"
#include "emulator/cassetteplayer.h"
#include "emulator/clock.h"
#include "emulator/emulatorsettings.h"
#include "emulator/faultplan.h"
#include "emulator/journal.h"
#include "emulator/servicerouter.h"
#include "emulator/servicestate.h"
#include "emulator/tokenissuer.h"

#include <QUrl>

#include <memory>

QT_BEGIN_NAMESPACE
class QThread;
QT_END_NAMESPACE

namespace tessaro::emulator {

class HttpFrontend;

/// The Tessaro service emulator: a stateful HTTP server that answers the
/// service paths and the token path the way the service does, keeps a journal
/// of what it received, and misbehaves on request (FaultPlan).
///
/// It serves either on the calling thread's event loop (start) or on a thread
/// of its own (startInThread), which a test needs when its client blocks the
/// calling thread until the answer. Clock, journal, faults, state and tokens
/// are safe to use from any thread while it serves.
///
/// \code
/// Emulator emulator;
/// emulator.startInThread();
/// client.setUrl(emulator.baseUrl());
/// emulator.faults().add(Fault(Fault::Kind::CloseAfterApply, "/advicenote"));
/// \endcode
class Emulator
{
public:
    explicit Emulator(const EmulatorSettings &settings = EmulatorSettings());
    ~Emulator();
    Q_DISABLE_COPY_MOVE(Emulator)

    /// Serves on the calling thread, which must run an event loop. Port 0
    /// picks a free port. Returns the port, 0 when it cannot listen.
    quint16 start(quint16 port = 0);
    /// Serves on a thread of its own. Returns the port, 0 when it cannot listen.
    quint16 startInThread(quint16 port = 0);
    /// Stops serving and drops every open connection. The state stays.
    void stop();

    bool isRunning() const;
    quint16 port() const;
    /// http://<address>:<port><basePath>, the client's "Tessaro:url".
    QUrl baseUrl() const;
    /// http://<address>:<port><tokenPath>, the client's "Tessaro:tokenUrl".
    QUrl tokenUrl() const;
    /// Closes the connections held by "hang" faults.
    void releaseHeldConnections();
    /// From the next start on, answers the service paths and the token path
    /// from \a cassette instead of its state (CassettePlayer).
    void replay(const contracts::Cassette &cassette);
    /// The player of replay(); null when the emulator is the service.
    const CassettePlayer *player() const { return m_player.get(); }

    const EmulatorSettings &settings() const;
    Clock &clock();
    Journal &journal();
    FaultPlan &faults();
    ServiceState &state();
    TokenIssuer &tokens();

private:
    QUrl urlWithPath(const QString &path) const;

    const EmulatorSettings m_settings;
    Clock m_clock;
    Journal m_journal;
    FaultPlan m_faults;
    ServiceState m_state;
    TokenIssuer m_tokens;
    ServiceRouter m_router;
    AdminEndpoints m_admin;
    std::unique_ptr<CassettePlayer> m_player;
    HttpFrontend *m_frontend = nullptr;
    QThread *m_thread = nullptr;
    quint16 m_port = 0;
};

} // namespace tessaro::emulator
