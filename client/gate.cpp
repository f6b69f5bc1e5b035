#include "gate.h"

#include "gaterequest.h"

#include <config.h>
#include <currenttime.h>
#include <mockfactory.h>
#include <singleton.h>

namespace orvel {

QHash<QString, QString> getGateHeaders(const QUrl &url, const QByteArray &body, const QHash<QString, QString> &headers,
                                       bool get)
{
    const Config *config = Singleton<Config>::instance();
    const QString stage = config->getString(QStringLiteral("OrvelGate:xStage"), QStringLiteral("PreProd"));
    const QString appKey = config->getString(QStringLiteral("OrvelGate:appKey"));
    const QString appSecret = config->getString(QStringLiteral("OrvelGate:appSecret"));
    if (stage.isEmpty() || appKey.isEmpty() || appSecret.isEmpty())
        return headers;

    const GateRequest request(url, body, headers, get, MockFactory<CurrentTime>::create()->now(), stage);
    QHash<QString, QString> result = headers;
    result.insert(request.signedHeaders());
    result.insert(QStringLiteral("Authorization"), request.authorization(appKey, appSecret));
    return result;
}

} // namespace orvel
