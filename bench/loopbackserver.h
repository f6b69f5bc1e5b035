#pragma once

#include <QByteArray>

#include <atomic>
#include <thread>

/// A minimal HTTP/1.1 server on the loopback interface, in a thread of its
/// own: it answers every request with the same JSON body and keeps the
/// connection open. It does as little as an HTTP server can, so that an
/// exchange against it measures the client.
class LoopbackServer
{
public:
    explicit LoopbackServer(const QByteArray &answer);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    quint16 port() const { return m_port; }

private:
    void serve();
    void converse(int connection);

    QByteArray m_reply;
    int m_listener = -1;
    quint16 m_port = 0;
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};
