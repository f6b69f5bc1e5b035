#include "curlclient.h"

#include <QJsonDocument>

namespace {

size_t collect(char *data, size_t size, size_t count, void *target)
{
    static_cast<QByteArray *>(target)->append(data, qsizetype(size * count));
    return size * count;
}

} // namespace

QJsonObject CurlResult::object() const
{
    return QJsonDocument::fromJson(body).object();
}

QJsonArray CurlResult::array() const
{
    return QJsonDocument::fromJson(body).array();
}

bool CurlResult::answered() const
{
    return error == CURLE_OK && status > 0;
}

QByteArrayList CurlResult::headers(const QByteArray &name) const
{
    QByteArrayList values;
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            values << line.mid(colon + 1).trimmed();
    }
    return values;
}

CurlClient::CurlClient()
    : m_curl(curl_easy_init())
{
}

CurlClient::~CurlClient()
{
    curl_easy_cleanup(m_curl);
}

void CurlClient::setTimeoutMs(long timeoutMs)
{
    m_timeoutMs = timeoutMs;
}

CurlResult CurlClient::get(const QUrl &url, const QByteArrayList &headers)
{
    return send(QByteArrayLiteral("GET"), url, QByteArray(), headers);
}

CurlResult CurlClient::post(const QUrl &url, const QByteArray &body, const QByteArrayList &headers)
{
    return send(QByteArrayLiteral("POST"), url, body, headers);
}

CurlResult CurlClient::send(const QByteArray &method, const QUrl &url, const QByteArray &body,
                            const QByteArrayList &headers)
{
    CurlResult result;
    curl_easy_reset(m_curl);
    const QByteArray address = url.toEncoded();
    curl_easy_setopt(m_curl, CURLOPT_URL, address.constData());
    curl_easy_setopt(m_curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(m_curl, CURLOPT_TIMEOUT_MS, m_timeoutMs);
    curl_easy_setopt(m_curl, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(m_curl, CURLOPT_WRITEDATA, &result.body);
    curl_easy_setopt(m_curl, CURLOPT_HEADERFUNCTION, collect);
    curl_easy_setopt(m_curl, CURLOPT_HEADERDATA, &result.head);
    if (method == "POST") {
        curl_easy_setopt(m_curl, CURLOPT_POST, 1L);
        curl_easy_setopt(m_curl, CURLOPT_POSTFIELDS, body.constData());
        curl_easy_setopt(m_curl, CURLOPT_POSTFIELDSIZE, long(body.size()));
    } else if (method != "GET") {
        curl_easy_setopt(m_curl, CURLOPT_CUSTOMREQUEST, method.constData());
    }
    curl_slist *list = nullptr;
    for (const QByteArray &header : headers)
        list = curl_slist_append(list, header.constData());
    curl_easy_setopt(m_curl, CURLOPT_HTTPHEADER, list);

    result.error = curl_easy_perform(m_curl);
    curl_easy_getinfo(m_curl, CURLINFO_RESPONSE_CODE, &result.status);
    curl_slist_free_all(list);
    return result;
}
