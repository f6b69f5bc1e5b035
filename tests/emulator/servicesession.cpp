#include "servicesession.h"

#include "emulator/emulator.h"

#include <QJsonDocument>

ServiceSession::ServiceSession(const tessaro::emulator::Emulator &emulator)
    : m_base(emulator.baseUrl())
    , m_root(emulator.baseUrl().adjusted(QUrl::RemovePath))
{
}

QString ServiceSession::fetchToken()
{
    const CurlResult result = m_client.post(
        rootUrl(QStringLiteral("/token")), "grant_type=client_credentials&client_id=till&realm_id=tessaro",
        {"Authorization: Basic dGlsbDpzZWNyZXQ=", "Content-Type: application/x-www-form-urlencoded"});
    m_token = result.object().value(QStringLiteral("access_token")).toString();
    return m_token;
}

void ServiceSession::setToken(const QString &token)
{
    m_token = token;
}

QUrl ServiceSession::url(const QString &path) const
{
    QUrl url = m_base;
    url.setPath(m_base.path() + path);
    return url;
}

QUrl ServiceSession::rootUrl(const QString &path) const
{
    QUrl url = m_root;
    url.setPath(path);
    return url;
}

CurlResult ServiceSession::post(const QString &path, const QJsonObject &body, const QByteArrayList &extraHeaders)
{
    return m_client.post(url(path), QJsonDocument(body).toJson(QJsonDocument::Compact), headers() + extraHeaders);
}

CurlResult ServiceSession::get(const QString &path)
{
    return m_client.get(url(path), headers());
}

CurlClient &ServiceSession::client()
{
    return m_client;
}

QByteArrayList ServiceSession::headers() const
{
    QByteArrayList list{"Content-Type: application/json"};
    if (!m_token.isEmpty())
        list.append("Authorization: Bearer " + m_token.toLatin1());
    return list;
}
