#include "loopbackserver.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

LoopbackServer::LoopbackServer(const QByteArray &answer)
{
    m_reply = QByteArrayLiteral("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: ")
        + QByteArray::number(answer.size()) + QByteArrayLiteral("\r\n\r\n") + answer;

    m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(m_listener, reinterpret_cast<sockaddr *>(&address), sizeof address);
    ::listen(m_listener, 8);
    socklen_t length = sizeof address;
    ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &length);
    m_port = ntohs(address.sin_port);
    m_thread = std::thread([this] { serve(); });
}

LoopbackServer::~LoopbackServer()
{
    m_stopping = true;
    ::shutdown(m_listener, SHUT_RDWR);
    ::close(m_listener);
    m_thread.join();
}

// One connection at a time: each client under test keeps one connection alive.
void LoopbackServer::serve()
{
    while (!m_stopping) {
        const int connection = ::accept(m_listener, nullptr, nullptr);
        if (connection < 0)
            return;
        const int on = 1;
        ::setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        converse(connection);
        ::close(connection);
    }
}

// Reads each request's head and its Content-Length bytes of body, answers it,
// until the client closes the connection.
void LoopbackServer::converse(int connection)
{
    QByteArray pending;
    char chunk[16384];
    for (;;) {
        const qsizetype headEnd = pending.indexOf("\r\n\r\n");
        if (headEnd >= 0) {
            qsizetype bodyLength = 0;
            const QByteArray head = pending.left(headEnd).toLower();
            const qsizetype field = head.indexOf("\r\ncontent-length:");
            if (field >= 0)
                bodyLength = head.mid(field + 17, head.indexOf("\r\n", field + 2) - field - 17).trimmed().toLongLong();
            const qsizetype total = headEnd + 4 + bodyLength;
            if (pending.size() >= total) {
                pending.remove(0, total);
                if (::send(connection, m_reply.constData(), size_t(m_reply.size()), MSG_NOSIGNAL) < 0)
                    return;
                continue;
            }
        }
        const ssize_t received = ::recv(connection, chunk, sizeof chunk, 0);
        if (received <= 0)
            return;
        pending.append(chunk, qsizetype(received));
    }
}
