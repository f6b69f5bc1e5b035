#include "restclient.h"

#include "config.h"
#include "log4qt/logger.h"
#include "secrets/linesanitizer.h"
#include "secrets/secretmask.h"
#include "singleton.h"

#include <QElapsedTimer>

#include <curl/curl.h>

#include <algorithm>
#include <array>

namespace {

enum class Verb { Get, Post };

// Beyond this many bytes a logged body is cut; the masks still apply to the
// whole body first.
constexpr qsizetype loggedBodyLimit = qsizetype(16) * 1024;

// Until setTimeout() says otherwise, an exchange may take this long.
constexpr int defaultTimeout = 30000;
// Until setLongestTimeout() says otherwise, no exchange takes longer.
constexpr int defaultLongestTimeout = 120000;

using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;
using EasyHandle = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;

// libcurl's global state must be set up once per process before the first
// handle; the local static makes that safe for clients made in several threads.
void initialiseCurl()
{
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    Q_UNUSED(initialised)
}

void appendLine(HeaderList &list, const QByteArray &line)
{
    // On failure libcurl leaves the list as it was and returns null.
    curl_slist *const head = list.release();
    curl_slist *const grown = curl_slist_append(head, line.constData());
    list.reset(grown ? grown : head);
}

// libcurl sends a request once more on a fresh connection when a kept-alive
// one dies before any answer. For a POST the service may already have applied
// the first one: sending it again could double a cart update or an advice
// note. So such a POST is attempted once; libcurl's retry is refused before it
// sends anything, and the caller sees a network failure and decides for
// itself (for example by reading the cart back). A request that is safe to
// repeat (a GET, a token request) gets the one fresh attempt, and no more.
struct Attempts
{
    int allowed = 1;
    int made = 0;
};

int limitAttempts(void *data, char *, char *, int, int)
{
    auto *attempts = static_cast<Attempts *>(data);
    return attempts->made++ < attempts->allowed ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

// The answer's body as it arrives, up to its bound.
struct Received
{
    explicit Received(qint64 bound)
        : limit(bound)
    {
    }

    QByteArray body;
    qint64 limit;
    bool tooLarge = false;
};

size_t appendBody(char *data, size_t size, size_t count, void *target)
{
    auto *received = static_cast<Received *>(target);
    const qint64 bytes = qint64(size) * qint64(count);
    if (received->body.size() + bytes > received->limit) {
        // A count other than the one given ends the transfer at once.
        received->tooLarge = true;
        return 0;
    }
    received->body.append(data, qsizetype(bytes));
    return size * count;
}

// The answer's header lines, status line first, up to their bounds: a peer
// that sends headers without end must not hold the till either.
struct ReceivedHeaders
{
    static constexpr qsizetype maxBytes = qsizetype(64) * 1024;
    static constexpr qsizetype maxCount = 200;

    QByteArrayList lines;
    qsizetype bytes = 0;
    bool tooLarge = false;
    bool tooMany = false;

    /// The headers after the status line, split into names and values.
    http::Response::Headers headers() const;
};

http::Response::Headers ReceivedHeaders::headers() const
{
    http::Response::Headers headers;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray &line = lines.at(i);
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
    }
    return headers;
}

size_t appendHeader(char *data, size_t size, size_t count, void *target)
{
    auto *received = static_cast<ReceivedHeaders *>(target);
    const QByteArray line = QByteArray(data, qsizetype(size * count)).trimmed();
    // Each status line begins an answer: only the final one's headers count,
    // not those of a "100 Continue" before it.
    if (line.startsWith("HTTP/")) {
        received->lines.clear();
        received->bytes = 0;
    }
    received->bytes += qsizetype(size * count);
    if (received->bytes > ReceivedHeaders::maxBytes)
        received->tooLarge = true;
    else if (!line.isEmpty() && received->lines.size() > ReceivedHeaders::maxCount)
        received->tooMany = true;
    // A count other than the one given ends the transfer at once.
    if (received->tooLarge || received->tooMany)
        return 0;
    if (!line.isEmpty())
        received->lines.append(line);
    return size * count;
}

bool hasHeader(const RestClient::Headers &headers, const QString &name)
{
    return std::any_of(headers.keyBegin(), headers.keyEnd(), [&name](const QString &key) {
        return key.compare(name, Qt::CaseInsensitive) == 0;
    });
}

// libcurl sends a header line as it is given: a line break in a name or a
// value (a token from a token endpoint, a request id) would add headers of
// its own, and a NUL would cut the value short.
bool breaksHeaderLine(const QString &text)
{
    return text.contains(QLatin1Char('\r')) || text.contains(QLatin1Char('\n')) || text.contains(QChar(0));
}

// Why \a headers cannot be sent, naming the header but never its value;
// empty when they can.
QString headerProblem(const RestClient::Headers &headers)
{
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        if (breaksHeaderLine(it.key()))
            return QStringLiteral("a header name holds a line break or NUL");
        if (breaksHeaderLine(it.value()))
            return QStringLiteral("the value of the header \"%1\" holds a line break or NUL").arg(it.key());
    }
    return QString();
}

QString cutForLog(const QString &text)
{
    if (text.size() <= loggedBodyLimit)
        return text;
    return text.left(loggedBodyLimit)
            + QStringLiteral("… (%1 characters in all)").arg(text.size());
}

} // namespace

struct RestClient::Private
{
    Private();

    bool exchange(Verb verb, const QUrl &url, const QByteArray &body, const Headers &headers,
                  const QString &defaultContentType);
    HeaderList headerList(const Headers &headers) const;
    http::Response response(const QUrl &url, CURLcode result, long status,
                            const QByteArray &body) const;
    tr::Tr errorText(const QUrl &url, const QString &detail) const;
    int bounded(int milliseconds) const;
    QString loggedUrl(const QUrl &url) const;
    void logRequest(const QUrl &url, const QByteArray &body, const Headers &headers) const;
    void logResponse(const QByteArrayList &headerLines, const QByteArray &body) const;

    EasyHandle curl{nullptr, &curl_easy_cleanup};
    const Log4Qt::Logger *logger = nullptr;
    QString targetAlias;
    int timeout = defaultTimeout;
    int longestTimeout = defaultLongestTimeout;
    qint64 maxAnswerSize = RestClient::DefaultMaxAnswerSize;
    bool repeatable = false;
    SecretMask mask;
    http::Response last;
    std::array<char, CURL_ERROR_SIZE> error = {};
};

RestClient::Private::Private()
{
    initialiseCurl();
    curl.reset(curl_easy_init());
    // The host makes its configuration before any client; the configuration
    // is not made here, where a client may be made in a thread of its own.
    if (!Singleton<Config>::exists())
        return;
    const qint64 configured = Singleton<Config>::instance()->getLongLong(QStringLiteral("Host:maxAnswerSize"),
                                                                         RestClient::DefaultMaxAnswerSize);
    if (configured > 0)
        maxAnswerSize = configured;
}

bool RestClient::Private::exchange(Verb verb, const QUrl &url, const QByteArray &body,
                                   const Headers &given, const QString &defaultContentType)
{
    Headers headers = given;
    if (verb == Verb::Post && !defaultContentType.isEmpty()
            && !hasHeader(headers, QStringLiteral("Content-Type")))
        headers.insert(QStringLiteral("Content-Type"), defaultContentType);

    if (!curl) {
        last = response(url, CURLE_FAILED_INIT, 0, {});
        return false;
    }
    if (const QString problem = headerProblem(headers); !problem.isEmpty()) {
        qstrncpy(error.data(), qPrintable(problem + QStringLiteral("; the request is not sent")), error.size());
        last = response(url, CURLE_BAD_FUNCTION_ARGUMENT, 0, {});
        if (logger)
            logger->error(QStringLiteral("%1 %2: %3").arg(verb == Verb::Post ? QStringLiteral("POST") : QStringLiteral("GET"),
                                                          loggedUrl(url), LineSanitizer::escaped(last.errorText().text())));
        return false;
    }

    CURL *const handle = curl.get();
    // Drops the options of the previous exchange; its kept-alive connection stays.
    curl_easy_reset(handle);
    error[0] = '\0';

    const QByteArray target = url.toEncoded();
    const HeaderList lines = headerList(headers);
    Received received(maxAnswerSize);
    ReceivedHeaders receivedHeaders;
    Attempts attempts;
    if (verb == Verb::Get || repeatable)
        attempts.allowed = 2;

    curl_easy_setopt(handle, CURLOPT_URL, target.constData());
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, long(timeout));
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, error.data());
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, lines.get());
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &appendBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &received);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &appendHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &receivedHeaders);
    // An answer that announces its length is refused before its body is read.
    curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE, curl_off_t(maxAnswerSize));
    curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, &limitAttempts);
    curl_easy_setopt(handle, CURLOPT_PREREQDATA, &attempts);
    if (verb == Verb::Post) {
        // A body given whole goes out in the request's first packet.
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(body.size()));
        curl_easy_setopt(handle, CURLOPT_POSTFIELDS, body.constData());
    } else {
        curl_easy_setopt(handle, CURLOPT_HTTPGET, 1L);
    }

    logRequest(url, body, headers);
    QElapsedTimer clock;
    clock.start();
    const CURLcode result = curl_easy_perform(handle);
    if (attempts.made > attempts.allowed)
        qstrncpy(error.data(), attempts.allowed == 1 ? "connection lost before the answer; a POST is not sent again"
                                                     : "connection lost before the answer twice; not sent a third time",
                 error.size());
    if (result == CURLE_FILESIZE_EXCEEDED || received.tooLarge) {
        const QByteArray tooLarge = QByteArrayLiteral("the answer is larger than ") + QByteArray::number(maxAnswerSize)
                + QByteArrayLiteral(" bytes; it is dropped");
        qstrncpy(error.data(), tooLarge.constData(), error.size());
        received.body.clear();
    }
    if (receivedHeaders.tooLarge || receivedHeaders.tooMany) {
        const QByteArray tooLarge = receivedHeaders.tooLarge
                ? "the answer's headers are larger than " + QByteArray::number(ReceivedHeaders::maxBytes) + " bytes; it is dropped"
                : "the answer has more than " + QByteArray::number(ReceivedHeaders::maxCount) + " headers; it is dropped";
        qstrncpy(error.data(), tooLarge.constData(), error.size());
    }
    const qint64 elapsed = clock.elapsed();
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);

    last = response(url, result, status, received.body);
    if (!last.isNetworkError())
        last.setHeaders(receivedHeaders.headers());
    if (logger) {
        const QString method = verb == Verb::Post ? QStringLiteral("POST") : QStringLiteral("GET");
        const QString outcome = last.isNetworkError()
                ? LineSanitizer::escaped(last.errorText().text())
                : QStringLiteral("HTTP %1").arg(last.httpCode());
        // One arg() call: a "%2F" in the URL must not take the place of a later argument.
        logger->info(QStringLiteral("%1 %2: %3, %4 ms")
                             .arg(method, loggedUrl(url), outcome, QString::number(elapsed)));
        logResponse(receivedHeaders.lines, received.body);
    }
    return last.errorCode() == 0;
}

HeaderList RestClient::Private::headerList(const Headers &headers) const
{
    HeaderList list{nullptr, &curl_slist_free_all};
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        // The client never waits for "100 Continue"; see below.
        if (it.key().compare(QLatin1String("Expect"), Qt::CaseInsensitive) == 0)
            continue;
        // "Name;" is libcurl's way to send a header with an empty value;
        // "Name:" would remove the header instead.
        appendLine(list, it.value().isEmpty() ? it.key().toUtf8() + ';'
                                              : it.key().toUtf8() + ": " + it.value().toUtf8());
    }
    // A request body goes at once: waiting for "100 Continue" costs a round trip,
    // or a whole second with servers that do not answer it.
    appendLine(list, QByteArrayLiteral("Expect:"));
    // No invented form type for bodies whose caller names none.
    if (!hasHeader(headers, QStringLiteral("Content-Type")))
        appendLine(list, QByteArrayLiteral("Content-Type:"));
    return list;
}

http::Response RestClient::Private::response(const QUrl &url, CURLcode result, long status,
                                             const QByteArray &body) const
{
    http::Response response;
    response.setUrl(url);
    // An answer cut off by the transport counts as no answer at all.
    if (result != CURLE_OK) {
        response.setNetworkError(true);
        const QString detail = error[0] != '\0' ? QString::fromUtf8(error.data())
                                                : QString::fromUtf8(curl_easy_strerror(result));
        response.setError(int(result), errorText(url, detail));
        return response;
    }
    response.setHttpCode(int(status));
    response.setBody(body);
    if (status < 200 || status > 299)
        response.setError(int(status), errorText(url, QStringLiteral("HTTP %1").arg(status)));
    return response;
}

tr::Tr RestClient::Private::errorText(const QUrl &url, const QString &detail) const
{
    const QString target = targetAlias.isEmpty() ? url.host() : targetAlias;
    return tr::Tr(QStringLiteral("restClientError"),
                  QStringLiteral("Ошибка при обращении к %1: %2").arg(target, detail));
}

int RestClient::Private::bounded(int milliseconds) const
{
    if (milliseconds > 0 && milliseconds <= longestTimeout)
        return milliseconds;
    // libcurl takes 0 as "no time-out": a peer that accepts and never answers
    // would hold the till for ever.
    if (logger)
        logger->warn(QStringLiteral("Time-out of %1 ms replaced by %2 ms: an exchange must not wait without bound")
                         .arg(milliseconds)
                         .arg(longestTimeout));
    return longestTimeout;
}

QString RestClient::Private::loggedUrl(const QUrl &url) const
{
    return LineSanitizer::escaped(mask.url(url));
}

void RestClient::Private::logRequest(const QUrl &url, const QByteArray &body,
                                     const Headers &headers) const
{
    if (!logger || !logger->isDebugEnabled())
        return;
    QStringList lines;
    for (auto it = headers.cbegin(); it != headers.cend(); ++it)
        lines.append(mask.header(it.key(), it.value()));
    lines.sort(Qt::CaseInsensitive);
    logger->debug(QStringLiteral("Request headers %1: %2").arg(loggedUrl(url), LineSanitizer::escaped(lines.join(QStringLiteral("; ")))));
    if (!body.isEmpty())
        logger->debug(QStringLiteral("Request body: ") + cutForLog(mask.line(QString::fromUtf8(body))));
}

void RestClient::Private::logResponse(const QByteArrayList &headerLines, const QByteArray &body) const
{
    if (!logger->isDebugEnabled())
        return;
    QStringList lines;
    for (const QByteArray &line : headerLines)
        lines.append(mask.headerLine(QString::fromUtf8(line)));
    if (!lines.isEmpty())
        logger->debug(QStringLiteral("Response headers: ") + LineSanitizer::escaped(lines.join(QStringLiteral("; "))));
    if (!body.isEmpty())
        logger->debug(QStringLiteral("Response body: ") + cutForLog(mask.line(QString::fromUtf8(body))));
}

RestClient::RestClient()
    : d(std::make_unique<Private>())
{
}

RestClient::~RestClient() = default;

void RestClient::setLogger(const Log4Qt::Logger *logger)
{
    d->logger = logger;
}

void RestClient::setTargetAlias(const QString &alias)
{
    d->targetAlias = alias;
}

QString RestClient::targetAlias() const
{
    return d->targetAlias;
}

void RestClient::setTimeout(int milliseconds)
{
    d->timeout = d->bounded(milliseconds);
}

int RestClient::timeout() const
{
    return d->timeout;
}

void RestClient::setLongestTimeout(int milliseconds)
{
    // A bound of 0 would be no bound at all for libcurl.
    d->longestTimeout = std::max(milliseconds, 1);
}

int RestClient::longestTimeout() const
{
    return d->longestTimeout;
}

void RestClient::setMaxAnswerSize(qint64 bytes)
{
    d->maxAnswerSize = bytes > 0 ? bytes : RestClient::DefaultMaxAnswerSize;
}

qint64 RestClient::maxAnswerSize() const
{
    return d->maxAnswerSize;
}

void RestClient::setRepeatable(bool repeatable)
{
    d->repeatable = repeatable;
}

bool RestClient::isRepeatable() const
{
    return d->repeatable;
}

void RestClient::setSecretHeaders(const QStringList &names)
{
    d->mask.setSecretHeaders(names);
}

QStringList RestClient::secretHeaders() const
{
    return d->mask.secretHeaders();
}

bool RestClient::post(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    return d->exchange(Verb::Post, url, body.toJson(QJsonDocument::Compact), headers,
                       QStringLiteral("application/json"));
}

bool RestClient::get(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    Q_UNUSED(body)
    return d->exchange(Verb::Get, url, {}, headers, {});
}

bool RestClient::postRaw(const QUrl &url, const QByteArray &body, const Headers &headers)
{
    return d->exchange(Verb::Post, url, body, headers, {});
}

http::Response RestClient::lastResponse() const
{
    return d->last;
}
