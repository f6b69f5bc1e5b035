#include "checkclient.h"

#include <restclient.h>

namespace tessaro {

CheckClient::CheckClient() = default;

QString CheckClient::authorizationScheme() const
{
    const QString value = authorizationHeader.trimmed();
    const qsizetype blank = value.indexOf(QLatin1Char(' '));
    // A value without a blank is the credentials alone: no scheme to show.
    return blank > 0 ? value.left(blank) : QString();
}

void CheckClient::boundTimeout(int seconds)
{
    restClient->setTimeout(seconds * 1000);
}

http::Response CheckClient::lastExchange() const
{
    return restClient->lastResponse();
}

} // namespace tessaro
