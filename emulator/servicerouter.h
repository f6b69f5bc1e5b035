#pragma once

#include "emulator/advicenoteendpoint.h"
#include "emulator/cartendpoints.h"
#include "emulator/contentendpoints.h"
#include "emulator/exchange.h"
#include "emulator/gatewayverifier.h"
#include "emulator/reply.h"
#include "emulator/tillendpoints.h"

#include <QJsonObject>
#include <QList>
#include <QStringList>

#include <functional>

namespace tessaro::emulator {

class Clock;
class EmulatorSettings;
class ServiceState;
class TokenIssuer;

/// Turns a request into the service's answer: the token path, then for paths
/// under the base path the authentication of the configured mode, the route to
/// one of the eleven service paths, and the body checks common to all of them.
/// Whatever the answer, the state changes it implies are applied.
class ServiceRouter
{
public:
    ServiceRouter(const EmulatorSettings &settings, const Clock &clock, ServiceState &state, TokenIssuer &tokens);

    Reply process(const Exchange &exchange);

    /// The path as the client names it, without the base path ("/api/cart/1"
    /// gives "/cart/1"); a path outside the base path stays as it is.
    QString servicePath(const QString &path) const;

private:
    using Handler = std::function<Reply(const Exchange &exchange, const QJsonObject &body, const QString &id)>;
    struct Route {
        QStringList segments;  ///< "{id}" stands for any one segment
        bool readOnly;         ///< GET; POST too, as the client repeats after a token error
        Handler handler;
    };

    bool isUnderBase(const QString &path) const;
    /// The answer refusing an unauthenticated request, if it is one.
    std::optional<Reply> authRefusal(const Exchange &exchange) const;
    Reply dispatch(const Exchange &exchange);

    const EmulatorSettings &m_settings;
    const Clock &m_clock;
    TokenIssuer &m_tokens;
    GatewayVerifier m_gateway;
    TillEndpoints m_till;
    CartEndpoints m_carts;
    AdviceNoteEndpoint m_adviceNotes;
    ContentEndpoints m_content;
    QList<Route> m_routes;
};

} // namespace tessaro::emulator
