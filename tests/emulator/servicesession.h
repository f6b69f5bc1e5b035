#pragma once

#include "curlclient.h"

#include <QJsonObject>
#include <QString>
#include <QUrl>

namespace tessaro::emulator {
class Emulator;
}

/// Talks to a running emulator the way the till's client does: JSON bodies,
/// "Content-Type: application/json", and a bearer token once one is fetched.
class ServiceSession
{
public:
    explicit ServiceSession(const tessaro::emulator::Emulator &emulator);

    /// Fetches a token with the default client's credentials and uses it from
    /// then on; returns it (empty on failure).
    QString fetchToken();
    void setToken(const QString &token);

    /// The service path under the emulator's base URL.
    QUrl url(const QString &path) const;
    /// An emulator path outside the base path (token path, admin paths).
    QUrl rootUrl(const QString &path) const;

    CurlResult post(const QString &path, const QJsonObject &body, const QByteArrayList &extraHeaders = {});
    CurlResult get(const QString &path);

    CurlClient &client();

private:
    QByteArrayList headers() const;

    QUrl m_base;
    QUrl m_root;
    QString m_token;
    CurlClient m_client;
};
