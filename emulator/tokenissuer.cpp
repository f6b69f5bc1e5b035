#include "emulator/tokenissuer.h"

#include "emulator/clock.h"

#include <QMutexLocker>
#include <QUrlQuery>
#include <QUuid>

#include <algorithm>

namespace tessaro::emulator {

namespace {

Reply oauthError(int status, const QString &error, const QString &description = QString())
{
    QJsonObject object{{QStringLiteral("error"), error}};
    if (!description.isEmpty())
        object.insert(QStringLiteral("error_description"), description);
    return Reply::json(status, object);
}

// A form body: '+' stands for a blank, as in every HTML form.
QUrlQuery formFields(const QByteArray &body)
{
    QByteArray encoded = body;
    encoded.replace('+', "%20");
    return QUrlQuery(QString::fromLatin1(encoded));
}

} // namespace

TokenIssuer::TokenIssuer(const EmulatorSettings &settings, const Clock &clock)
    : m_settings(settings)
    , m_clock(clock)
{
}

Reply TokenIssuer::issue(const Exchange &exchange)
{
    if (exchange.method != "POST")
        return oauthError(405, QStringLiteral("invalid_request"), QStringLiteral("the token path takes POST"));
    if (!exchange.header(QByteArrayLiteral("content-type")).startsWith("application/x-www-form-urlencoded"))
        return oauthError(400, QStringLiteral("invalid_request"),
                          QStringLiteral("the body must be application/x-www-form-urlencoded"));

    const QUrlQuery form = formFields(exchange.body);
    const auto field = [&form](const QString &name) { return form.queryItemValue(name, QUrl::FullyDecoded); };
    if (field(QStringLiteral("grant_type")) != QLatin1String("client_credentials"))
        return oauthError(400, QStringLiteral("unsupported_grant_type"));

    const QString authorization = QString::fromUtf8(exchange.header(QByteArrayLiteral("authorization")));
    const bool known = std::any_of(m_settings.clients.cbegin(), m_settings.clients.cend(),
                                   [&](const EmulatorSettings::Client &client) {
        return client.clientId == field(QStringLiteral("client_id"))
            && client.realmId == field(QStringLiteral("realm_id"))
            && client.authorization == authorization;
    });
    if (!known)
        return oauthError(401, QStringLiteral("invalid_client"));

    const QString token = QUuid::createUuid().toString(QUuid::Id128);
    {
        const QMutexLocker locker(&m_mutex);
        m_expiry.insert(token, m_clock.now().addSecs(m_settings.tokenLifetimeSeconds));
        ++m_issued;
    }
    return Reply::json(200, QJsonObject{
        {QStringLiteral("access_token"), token},
        {QStringLiteral("expires_in"), m_settings.tokenLifetimeSeconds},
        {QStringLiteral("token_type"), QStringLiteral("bearer")},
    });
}

bool TokenIssuer::accepts(const QByteArray &authorization) const
{
    static const QByteArray scheme = QByteArrayLiteral("Bearer ");
    if (!authorization.startsWith(scheme))
        return false;
    const QString token = QString::fromLatin1(authorization.mid(scheme.size()).trimmed());
    const QMutexLocker locker(&m_mutex);
    const auto it = m_expiry.constFind(token);
    return it != m_expiry.cend() && m_clock.now() < *it;
}

void TokenIssuer::revokeAll()
{
    const QMutexLocker locker(&m_mutex);
    m_expiry.clear();
}

int TokenIssuer::issuedCount() const
{
    const QMutexLocker locker(&m_mutex);
    return m_issued;
}

} // namespace tessaro::emulator
