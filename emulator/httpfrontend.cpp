#include "emulator/httpfrontend.h"

#include "emulator/adminendpoints.h"
#include "emulator/cassetteplayer.h"
#include "emulator/clock.h"
#include "emulator/exchange.h"
#include "emulator/faultplan.h"
#include "emulator/journal.h"
#include "emulator/reply.h"
#include "emulator/serviceanswers.h"
#include "emulator/servicerouter.h"
#include "emulator/tcplistener.h"

#include <QHttpServerRequest>
#include <QTcpSocket>
#include <QTimer>

#include <sys/socket.h>

namespace tessaro::emulator {

namespace {

void send(QTcpSocket *socket, const Reply &reply, bool keepAlive, const QDateTime &date)
{
    socket->write(reply.toHttp(keepAlive, date));
    if (!keepAlive)
        socket->disconnectFromHost();
}

} // namespace

HttpFrontend::HttpFrontend(ServiceRouter &router, AdminEndpoints &admin, Journal &journal, FaultPlan &faults,
                           const Clock &clock, QObject *parent)
    : QAbstractHttpServer(parent)
    , m_router(router)
    , m_admin(admin)
    , m_journal(journal)
    , m_faults(faults)
    , m_clock(clock)
{
}

HttpFrontend::~HttpFrontend()
{
    releaseHeldConnections();
}

quint16 HttpFrontend::serve(const QHostAddress &address, quint16 port)
{
    auto *listener = new TcpListener(this);
    if (!listener->listen(address, port)) {
        delete listener;
        return 0;
    }
    bind(listener);
    return listener->serverPort();
}

void HttpFrontend::releaseHeldConnections()
{
    for (const QPointer<QTcpSocket> &socket : std::as_const(m_held)) {
        if (socket)
            socket->abort();
    }
    m_held.clear();
}

bool HttpFrontend::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    const Exchange exchange = Exchange::fromRequest(request, TcpListener::httpVersion(socket), m_clock.now());
    if (AdminEndpoints::owns(exchange.path)) {
        send(socket, m_admin.handle(exchange), exchange.keepAlive(), m_clock.now());
        return true;
    }
    if (m_player) {
        replay(exchange, m_journal.record(exchange), socket);
        return true;
    }
    const auto fault = m_faults.take(exchange.method, m_router.servicePath(exchange.path));
    const qint64 id = m_journal.record(exchange, fault ? Fault::kindName(fault->kind) : QString());
    if (fault)
        strike(*fault, exchange, id, socket);
    else
        answer(socket, id, m_router.process(exchange), exchange.keepAlive());
    return true;
}

void HttpFrontend::missingHandler(const QHttpServerRequest &request, QTcpSocket *socket)
{
    Q_UNUSED(request);
    send(socket, Reply::message(404, QStringLiteral("Not found")), true, m_clock.now());
}

void HttpFrontend::strike(const Fault &fault, const Exchange &exchange, qint64 id, QTcpSocket *socket)
{
    const bool keepAlive = exchange.keepAlive();
    switch (fault.kind) {
    case Fault::Kind::Hang:
        hold(socket, id, fault.releaseAfterMs);
        return;
    case Fault::Kind::CloseBeforeApply:
        close(socket, id);
        return;
    case Fault::Kind::CloseAfterApply:
        m_router.process(exchange);
        close(socket, id);
        return;
    case Fault::Kind::Reset:
        reset(socket, id);
        return;
    case Fault::Kind::Delay:
        answerLater(fault.delayMs, exchange, id, socket);
        return;
    case Fault::Kind::HttpStatus:
        answer(socket, id, Reply(fault.status, fault.body), keepAlive);
        return;
    case Fault::Kind::TruncatedJson:
        answer(socket, id, m_router.process(exchange).truncated(), keepAlive);
        return;
    case Fault::Kind::MalformedJson:
        answer(socket, id, m_router.process(exchange).malformed(), keepAlive);
        return;
    case Fault::Kind::EmptyBody:
        answer(socket, id, m_router.process(exchange).emptied(), keepAlive);
        return;
    case Fault::Kind::InvalidToken:
        answer(socket, id, ServiceAnswers::invalidToken(), keepAlive);
        return;
    case Fault::Kind::ShiftClosed:
        answer(socket, id, ServiceAnswers::shiftClosed(), keepAlive);
        return;
    case Fault::Kind::Status3001:
        answer(socket, id, ServiceAnswers::cartConflict(), keepAlive);
        return;
    }
}

void HttpFrontend::answer(QTcpSocket *socket, qint64 id, const Reply &reply, bool keepAlive)
{
    // The journal is complete before the answer leaves, so a client that has
    // its answer finds the request recorded with its status.
    m_journal.complete(id, JournalEntry::Outcome::Answered, reply.status(), reply.body());
    send(socket, reply, keepAlive, m_clock.now());
}

void HttpFrontend::replay(const Exchange &exchange, qint64 id, QTcpSocket *socket)
{
    const CassettePlayer::Answer played = m_player->answer(exchange);
    m_journal.note(id, played.note);
    if (played.reply)
        answer(socket, id, *played.reply, exchange.keepAlive());
    else
        close(socket, id);
}

void HttpFrontend::answerLater(int delayMs, const Exchange &exchange, qint64 id, QTcpSocket *socket)
{
    QTimer::singleShot(delayMs, this, [this, exchange, id, target = QPointer<QTcpSocket>(socket)] {
        const Reply reply = m_router.process(exchange);
        if (!target || target->state() != QAbstractSocket::ConnectedState) {
            m_journal.complete(id, JournalEntry::Outcome::Abandoned, reply.status());
            return;
        }
        answer(target, id, reply, exchange.keepAlive());
    });
}

void HttpFrontend::hold(QTcpSocket *socket, qint64 id, int releaseAfterMs)
{
    m_journal.complete(id, JournalEntry::Outcome::Hung);
    const QPointer<QTcpSocket> target(socket);
    m_held.removeIf([](const QPointer<QTcpSocket> &held) { return held.isNull(); });
    m_held.append(target);
    if (releaseAfterMs > 0) {
        QTimer::singleShot(releaseAfterMs, this, [target] {
            if (target)
                target->disconnectFromHost();
        });
    }
}

void HttpFrontend::close(QTcpSocket *socket, qint64 id)
{
    m_journal.complete(id, JournalEntry::Outcome::Closed);
    socket->disconnectFromHost();
}

void HttpFrontend::reset(QTcpSocket *socket, qint64 id)
{
    m_journal.complete(id, JournalEntry::Outcome::Reset);
    // Lingering for zero seconds makes closing the socket send RST instead of FIN.
    const linger immediate{1, 0};
    ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &immediate, sizeof immediate);
    socket->abort();
}

} // namespace tessaro::emulator
