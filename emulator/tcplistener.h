#pragma once

#include <QByteArray>
#include <QTcpServer>

QT_BEGIN_NAMESPACE
class QTcpSocket;
QT_END_NAMESPACE

namespace tessaro::emulator {

/// The emulator's listening socket. It looks at each request head before the
/// HTTP server's parser reads it, for two things that parser does not do: it
/// notes the request's HTTP version (1.0 clients without keep-alive expect the
/// connection to close after the answer), and it answers
/// "Expect: 100-continue", so that clients do not wait before sending a body.
///
/// It sees a head when a read begins with it, which is how clients write one
/// request at a time; a pipelined second request is not previewed.
class TcpListener : public QTcpServer
{
    Q_OBJECT

public:
    using QTcpServer::QTcpServer;

    /// The version ("1.0", "1.1") of the last request head seen on the socket;
    /// empty when none was seen.
    static QByteArray httpVersion(const QTcpSocket *socket);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    static void previewHead(QTcpSocket *socket);
};

} // namespace tessaro::emulator
