#include "checkclient.h"

#include "hostsdk/hostadapter.h"
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
    return hostsdk::timeout(*restClient);
}

int CheckClient::longestTransportTimeoutMs() const
{
    return hostsdk::longestTimeout(*restClient);
}

void CheckClient::boundTimeout(int seconds)
{
    hostsdk::setTimeout(*restClient, detail::milliseconds(seconds));
}

http::Response CheckClient::lastExchange() const
{
    return hostsdk::lastResponse(*restClient);
}

} // namespace tessaro
