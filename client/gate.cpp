#include "gate.h"

#include "gaterequest.h"
#include "hostsdk/hostadapter.h"

#include <config.h>
#include <currenttime.h>
#include <mockfactory.h>
#include <singleton.h>

namespace orvel {

QHash<QString, QString> getGateHeaders(const QUrl &url, const QByteArray &body, const QHash<QString, QString> &headers,
                                       bool get)
{
    const QString stage = tessaro::hostsdk::configString(QStringLiteral("OrvelGate:xStage"), QStringLiteral("PreProd"));
    const QString appKey = tessaro::hostsdk::configString(QStringLiteral("OrvelGate:appKey"));
    const QString appSecret = tessaro::hostsdk::configString(QStringLiteral("OrvelGate:appSecret"));
    if (stage.isEmpty() || appKey.isEmpty() || appSecret.isEmpty())
        return headers;

    const GateRequest request(url, body, headers, get, MockFactory<CurrentTime>::create()->now(), stage);
    QHash<QString, QString> result = headers;
    result.insert(request.signedHeaders());
    result.insert(QStringLiteral("Authorization"), request.authorization(appKey, appSecret));
    return result;
}

} // namespace orvel
