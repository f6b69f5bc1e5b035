#pragma once

#include "scriptedhttpserver.h"

#include <QAbstractHttpServer>

#include <functional>

/// The transport of ScriptedHttpServer, living in the server's thread: turns
/// each request that Qt HTTP Server parsed into a ScriptedHttpServer::Request,
/// asks the script for the answer and carries the answer out on the socket.
/// Answers are written by hand rather than through QHttpServerResponder, so any
/// status, any headers and a bare close or reset can be scripted.
class ScriptedHttpEngine : public QAbstractHttpServer
{
    Q_OBJECT

public:
    using Script = std::function<ScriptedHttpServer::Answer(const ScriptedHttpServer::Request &)>;

    explicit ScriptedHttpEngine(const Script &script, QObject *parent = nullptr);

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    static ScriptedHttpServer::Request recorded(const QHttpServerRequest &request,
                                                const QTcpSocket &socket);
    static QByteArray serialised(const ScriptedHttpServer::Answer &answer);
    static void reset(QTcpSocket *socket);

    Script m_script;
};
