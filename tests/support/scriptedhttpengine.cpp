#include "scriptedhttpengine.h"

#include <QHttpServerRequest>
#include <QHttpServerResponder>
#include <QMetaEnum>
#include <QTcpSocket>

#include <sys/socket.h>

ScriptedHttpEngine::ScriptedHttpEngine(const Script &script, QObject *parent)
    : QAbstractHttpServer(parent)
    , m_script(script)
{
}

bool ScriptedHttpEngine::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    using Kind = ScriptedHttpServer::Answer::Kind;
    const ScriptedHttpServer::Answer answer = m_script(recorded(request, *socket));
    switch (answer.kind) {
    case Kind::Reply:
        socket->write(serialised(answer));
        if (answer.headers.contains({QByteArrayLiteral("Connection"), QByteArrayLiteral("close")}))
            socket->disconnectFromHost();
        break;
    case Kind::Close:
        socket->disconnectFromHost();
        break;
    case Kind::Reset:
        reset(socket);
        break;
    case Kind::Hang:
        break;
    }
    return true;
}

void ScriptedHttpEngine::missingHandler(const QHttpServerRequest &, QTcpSocket *)
{
    // handleRequest() answers every request.
}

ScriptedHttpServer::Request ScriptedHttpEngine::recorded(const QHttpServerRequest &request,
                                                         const QTcpSocket &socket)
{
    const QMetaEnum methods = QMetaEnum::fromType<QHttpServerRequest::Method>();
    ScriptedHttpServer::Request recorded;
    recorded.method = QByteArray(methods.valueToKey(int(request.method()))).toUpper();
    recorded.path = request.url().path();
    recorded.query = request.query();
    recorded.headers = request.headers();
    recorded.body = request.body();
    recorded.peerPort = socket.peerPort();
    return recorded;
}

QByteArray ScriptedHttpEngine::serialised(const ScriptedHttpServer::Answer &answer)
{
    const char *const reason =
            QMetaEnum::fromType<QHttpServerResponder::StatusCode>().valueToKey(answer.status);
    QByteArray out = "HTTP/1.1 " + QByteArray::number(answer.status) + ' '
            + (reason ? QByteArray(reason) : QByteArrayLiteral("Scripted")) + "\r\n";
    bool hasLength = false;
    for (const ScriptedHttpServer::Header &header : answer.headers) {
        out += header.first + ": " + header.second + "\r\n";
        // A chunked answer carries its length in its chunks.
        hasLength = hasLength || header.first.compare("Content-Length", Qt::CaseInsensitive) == 0
                || header.first.compare("Transfer-Encoding", Qt::CaseInsensitive) == 0;
    }
    if (!hasLength)
        out += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n";
    return out + "\r\n" + answer.body;
}

void ScriptedHttpEngine::reset(QTcpSocket *socket)
{
    // A zero linger time makes closing the socket send RST instead of FIN.
    const linger immediately{1, 0};
    ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &immediately,
                 sizeof immediately);
    socket->abort();
}
