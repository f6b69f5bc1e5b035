#include "emulator/emulator.h"

#include "emulator/httpfrontend.h"

#include <QThread>

namespace tessaro::emulator {

Emulator::Emulator(const EmulatorSettings &settings)
    : m_settings(settings)
    , m_state(m_settings)
    , m_tokens(m_settings, m_clock)
    , m_router(m_settings, m_clock, m_state, m_tokens)
    , m_admin(m_journal, m_faults, m_clock, m_state, m_tokens, m_settings.showSecretsInJournal)
{
    m_faults.set(m_settings.faults);
}

Emulator::~Emulator()
{
    stop();
}

quint16 Emulator::start(quint16 port)
{
    stop();
    m_frontend = new HttpFrontend(m_router, m_admin, m_journal, m_faults, m_clock);
    m_frontend->setPlayer(m_player.get());
    m_port = m_frontend->serve(m_settings.address, port);
    if (m_port == 0)
        stop();
    return m_port;
}

quint16 Emulator::startInThread(quint16 port)
{
    stop();
    m_thread = new QThread;
    m_thread->setObjectName(QStringLiteral("tessaro-emulator"));
    m_thread->start();
    m_frontend = new HttpFrontend(m_router, m_admin, m_journal, m_faults, m_clock);
    m_frontend->setPlayer(m_player.get());
    m_frontend->moveToThread(m_thread);
    quint16 served = 0;
    QMetaObject::invokeMethod(
        m_frontend, [this, port, &served] { served = m_frontend->serve(m_settings.address, port); },
        Qt::BlockingQueuedConnection);
    m_port = served;
    if (m_port == 0)
        stop();
    return m_port;
}

void Emulator::stop()
{
    if (m_thread) {
        // The server is handed back to this thread, which then deletes it with
        // its sockets; the serving thread has nothing left to run.
        QThread *const caller = QThread::currentThread();
        if (m_frontend) {
            QMetaObject::invokeMethod(
                m_frontend, [this, caller] { m_frontend->moveToThread(caller); }, Qt::BlockingQueuedConnection);
        }
        m_thread->quit();
        m_thread->wait();
        delete m_thread;
        m_thread = nullptr;
    }
    delete m_frontend;
    m_frontend = nullptr;
    m_port = 0;
}

bool Emulator::isRunning() const
{
    return m_frontend != nullptr;
}

quint16 Emulator::port() const
{
    return m_port;
}

QUrl Emulator::urlWithPath(const QString &path) const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(m_settings.address.toString());
    url.setPort(m_port);
    url.setPath(path);
    return url;
}

QUrl Emulator::baseUrl() const
{
    return urlWithPath(m_settings.basePath);
}

QUrl Emulator::tokenUrl() const
{
    return urlWithPath(m_settings.tokenPath);
}

void Emulator::replay(const contracts::Cassette &cassette)
{
    m_player = std::make_unique<CassettePlayer>(cassette);
}

void Emulator::releaseHeldConnections()
{
    if (!m_frontend)
        return;
    QMetaObject::invokeMethod(m_frontend, [this] { m_frontend->releaseHeldConnections(); },
                              m_thread ? Qt::BlockingQueuedConnection : Qt::DirectConnection);
}

const EmulatorSettings &Emulator::settings() const
{
    return m_settings;
}

Clock &Emulator::clock()
{
    return m_clock;
}

Journal &Emulator::journal()
{
    return m_journal;
}

FaultPlan &Emulator::faults()
{
    return m_faults;
}

ServiceState &Emulator::state()
{
    return m_state;
}

TokenIssuer &Emulator::tokens()
{
    return m_tokens;
}

} // namespace tessaro::emulator
