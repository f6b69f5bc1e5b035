#include "checkclient.h"

#include "interfacedetail.h"

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

int CheckClient::transportTimeoutMs() const
{
    return restClient->timeout();
}

int CheckClient::longestTransportTimeoutMs() const
{
    return restClient->longestTimeout();
}

void CheckClient::boundTimeout(int seconds)
{
    restClient->setTimeout(detail::milliseconds(seconds));
}

http::Response CheckClient::lastExchange() const
{
    return restClient->lastResponse();
}

} // namespace tessaro
