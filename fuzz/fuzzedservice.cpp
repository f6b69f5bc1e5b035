#include "fuzzedservice.h"

#include "fuzzedinput.h"

#include <array>

namespace {

// Answers the service and the token endpoint give, as the client must read them.
const std::array<const char *, 10> knownBodies{
    R"({"status":"The shift is closed"})",
    R"({"status":"The shift is already opened"})",
    R"({"error":"invalid_token"})",
    R"({"message":"Check token error. Inactive token"})",
    R"({"message":"Internal Server Error"})",
    R"({"message":"Customer wasn't found in CustomerAPI"})",
    R"({"error_msg":"signature expired"})",
    R"({"access_token":"t-1","token_type":"bearer"})",
    R"({"uuid":"r-1","Key4":"12/34/56"})",
    R"([])",
};

// A success of the kind the path asks for.
QByteArray goodBody(const QUrl &url)
{
    const QString path = url.path();
    if (path.endsWith(QLatin1String("/token")))
        return R"({"access_token":"t-2","token_type":"bearer","expires_in":300})";
    if (path.endsWith(QLatin1String("/advicenote")))
        return R"({"uuid":"r-2","Key4":"000012/000345"})";
    if (path.endsWith(QLatin1String("/till/open")))
        return R"({"status":"OK","tillNo":"12"})";
    return R"({"status":"collecting","uuid":"c-1","items":[]})";
}

} // namespace

FuzzedService::FuzzedService(FuzzedInput *input)
    : m_input(input)
{
}

bool FuzzedService::post(const QUrl &url, const QJsonDocument &, const Headers &)
{
    return answer(url);
}

bool FuzzedService::get(const QUrl &url, const QJsonDocument &, const Headers &)
{
    return answer(url);
}

bool FuzzedService::postRaw(const QUrl &url, const QByteArray &, const Headers &)
{
    return answer(url);
}

http::Response FuzzedService::lastResponse() const
{
    return m_last;
}

bool FuzzedService::answer(const QUrl &url)
{
    m_last = http::Response();
    m_last.setUrl(url);
    int status = 200;
    switch (m_input->pick(4)) {
    case 0:
        m_last.setBody(goodBody(url));
        break;
    case 1:
        m_last.setBody(knownBodies.at(size_t(m_input->pick(int(knownBodies.size())))));
        status = m_input->flag() ? 200 : 401;
        break;
    case 2:
        m_last.setBody(m_input->text(200).toUtf8());
        status = m_input->pick(2) == 0 ? 200 + m_input->pick(400) : m_input->integer();
        break;
    default:
        // A lost connection; what arrived before it may still be read.
        m_last.setNetworkError(true);
        if (m_input->flag())
            m_last.setBody(knownBodies.at(size_t(m_input->pick(2))));
        m_last.setError(7, tr::Tr(QStringLiteral("restClientError"), QStringLiteral("Ошибка при обращении к сервису Tessaro")));
        return false;
    }
    m_last.setHttpCode(status);
    if (status < 200 || status > 299)
        m_last.setError(status == 0 ? 1 : status, tr::Tr(QStringLiteral("restClientError"), QStringLiteral("HTTP %1").arg(status)));
    return m_last.errorCode() == 0;
}
