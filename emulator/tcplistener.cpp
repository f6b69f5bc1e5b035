#include "emulator/tcplistener.h"

#include <QRegularExpression>
#include <QTcpSocket>

namespace tessaro::emulator {

namespace {
constexpr char versionProperty[] = "tessaroHttpVersion";
}

QByteArray TcpListener::httpVersion(const QTcpSocket *socket)
{
    return socket->property(versionProperty).toByteArray();
}

void TcpListener::incomingConnection(qintptr descriptor)
{
    auto *socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    // Connected before the HTTP server connects its own reader, so this runs first.
    connect(socket, &QTcpSocket::readyRead, socket, [socket] { previewHead(socket); });
    addPendingConnection(socket);
}

void TcpListener::previewHead(QTcpSocket *socket)
{
    static const QRegularExpression requestLine(QStringLiteral("^[A-Z]+ [^ ]+ HTTP/(1\\.[01])\r\n"));
    static const QRegularExpression expectContinue(QStringLiteral("\r\nexpect:[ \t]*100-continue"),
                                                   QRegularExpression::CaseInsensitiveOption);

    const QByteArray chunk = socket->peek(socket->bytesAvailable());
    const QString text = QString::fromLatin1(chunk);
    const auto line = requestLine.match(text);
    if (!line.hasMatch())
        return;
    socket->setProperty(versionProperty, line.captured(1).toLatin1());

    const qsizetype headEnd = chunk.indexOf("\r\n\r\n");
    const bool bodyNotSent = headEnd >= 0 && chunk.size() == headEnd + 4;
    if (bodyNotSent && expectContinue.match(text.left(headEnd)).hasMatch())
        socket->write("HTTP/1.1 100 Continue\r\n\r\n");
}

} // namespace tessaro::emulator
