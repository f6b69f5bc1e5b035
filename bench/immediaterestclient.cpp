#include "immediaterestclient.h"

ImmediateRestClient::ImmediateRestClient(const QByteArray &answer)
{
    m_answer.setHttpCode(200);
    m_answer.setBody(answer);
}

bool ImmediateRestClient::postRaw(const QUrl &url, const QByteArray &body, const Headers &)
{
    m_answer.setUrl(url);
    m_lastBody = body;
    return true;
}
