#pragma once

#include <support/scriptedhttpserver.h>
#include <testing/testhost.h>

#include <QJsonObject>
#include <QMap>
#include <QString>

#include <memory>

/// A till and a scripted Tessaro service for the client's tests.
///
/// Starts a ScriptedHttpServer on 127.0.0.1 and a fresh TestHost whose
/// configuration points the client at it: the service under "/api", the token
/// endpoint at "/oauth/token", with a client id, realm and client secret header.
/// Settings given to the constructor ("Section:key" to value) are added or
/// replace those; "{server}" in a value stands for the server's base URL.
class ServiceTestBed
{
public:
    static const QString clientId;
    static const QString realmId;
    /// The configured "Tessaro:authorizationHeader", a secret.
    static const QString clientSecretHeader;

    explicit ServiceTestBed(const QMap<QString, QString> &settings = {});
    ~ServiceTestBed();
    ServiceTestBed(const ServiceTestBed &) = delete;
    ServiceTestBed &operator=(const ServiceTestBed &) = delete;

    ScriptedHttpServer &server() { return m_server; }
    TestHost &host() { return *m_host; }
    /// The configuration text given to the host.
    QString configText() const { return m_configText; }

    /// A successful answer of the token endpoint carrying \a token.
    static ScriptedHttpServer::Answer tokenAnswer(const QByteArray &token);
    /// The body of \a request read as a JSON object.
    static QJsonObject jsonBody(const ScriptedHttpServer::Request &request);
    /// The fields of a form-encoded body, decoded as a form decoder does
    /// ("+" is a blank), in order.
    static QList<QPair<QString, QString>> formFields(const QByteArray &body);

private:
    ScriptedHttpServer m_server;
    std::unique_ptr<TestHost> m_host;
    QString m_configText;
};
