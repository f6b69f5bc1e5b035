#pragma once

#include "emulator/fault.h"
#include "emulator/journalentry.h"

#include <QAbstractHttpServer>
#include <QHostAddress>
#include <QList>
#include <QPointer>

QT_BEGIN_NAMESPACE
class QTcpSocket;
QT_END_NAMESPACE

namespace tessaro::emulator {

class AdminEndpoints;
class CassettePlayer;
class Clock;
class Exchange;
class FaultPlan;
class Journal;
class Reply;
class ServiceRouter;

/// The HTTP side of the emulator: takes each request off the wire, keeps it in
/// the journal, lets a scripted fault strike it or has the router answer it,
/// and writes the answer itself, so that it can also answer late, never, or
/// by closing or resetting the connection.
///
/// Lives on the thread that serves; nothing in it blocks that thread.
class HttpFrontend : public QAbstractHttpServer
{
    Q_OBJECT

public:
    HttpFrontend(ServiceRouter &router, AdminEndpoints &admin, Journal &journal, FaultPlan &faults,
                 const Clock &clock, QObject *parent = nullptr);
    ~HttpFrontend() override;

    /// Starts listening; returns the port, 0 when it cannot listen.
    quint16 serve(const QHostAddress &address, quint16 port);
    /// Closes the connections held by "hang" faults.
    void releaseHeldConnections();
    /// Answers the service paths from \a player instead of the router (and
    /// without faults); null returns to the router.
    void setPlayer(CassettePlayer *player) { m_player = player; }

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    void strike(const Fault &fault, const Exchange &exchange, qint64 id, QTcpSocket *socket);
    void answer(QTcpSocket *socket, qint64 id, const Reply &reply, bool keepAlive);
    void replay(const Exchange &exchange, qint64 id, QTcpSocket *socket);
    void answerLater(int delayMs, const Exchange &exchange, qint64 id, QTcpSocket *socket);
    void hold(QTcpSocket *socket, qint64 id, int releaseAfterMs);
    void close(QTcpSocket *socket, qint64 id);
    void reset(QTcpSocket *socket, qint64 id);

    ServiceRouter &m_router;
    AdminEndpoints &m_admin;
    Journal &m_journal;
    FaultPlan &m_faults;
    const Clock &m_clock;
    QList<QPointer<QTcpSocket>> m_held;
    CassettePlayer *m_player = nullptr;
};

} // namespace tessaro::emulator
