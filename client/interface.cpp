// Interface: construction with its settings and mapping tables, the addresses
// and headers of requests, the request path with its token flow.

#include "interface.h"

#include "gate.h"
#include "hostsdk/hostadapter.h"
#include "interfacedetail.h"
#include "responses/connectionerrorexception.h"
#include "secrets/linesanitizer.h"

#include <config.h>
#include <log4qt/logmanager.h>
#include <mockfactory.h>
#include <restclient.h>

#include <QJsonDocument>
#include <QUrlQuery>

namespace tessaro {

using detail::milliseconds;

namespace {

// Section keys are integers; a key that is not one is skipped.
template <typename Store>
void readSection(const QString &section, Store store)
{
    const QStringList names = hostsdk::configKeys(section);
    for (const QString &name : names) {
        bool ok = false;
        const int key = name.toInt(&ok, 10);
        if (ok)
            store(key, section + QLatin1Char(':') + name);
    }
}

// The service code is the section key; the listed till codes map to it.
QMap<int, int> readInvertedSection(const QString &section)
{
    QMap<int, int> map;
    readSection(section, [&map](int serviceCode, const QString &valueKey) {
        const QList<int> tillCodes = hostsdk::configIntList(valueKey);
        for (int tillCode : tillCodes)
            map.insert(tillCode, serviceCode);
    });
    return map;
}

QMap<int, QStringList> readListSection(const QString &section)
{
    QMap<int, QStringList> map;
    readSection(section, [&map](int key, const QString &valueKey) {
        map.insert(key, hostsdk::configStringList(valueKey));
    });
    return map;
}

QString methodPath(Interface::Method method)
{
    switch (method) {
    case Interface::TillOpen:
        return QStringLiteral("/till/open");
    case Interface::TillClose:
        return QStringLiteral("/till/close");
    case Interface::Cart:
        return QStringLiteral("/cart/%1");
    case Interface::CartCreate:
        return QStringLiteral("/cart/create");
    case Interface::CartUpdate:
        return QStringLiteral("/cart/%1/update");
    case Interface::CartStatus:
        return QStringLiteral("/cart/%1/cart_status");
    case Interface::AddCustomer:
        return QStringLiteral("/cart/%1/add_customer");
    case Interface::AdviceNote:
        return QStringLiteral("/advicenote");
    case Interface::Payload:
        return QStringLiteral("/payload/%1");
    case Interface::Deposit:
        return QStringLiteral("/till/deposit");
    case Interface::Messages:
        return QStringLiteral("/messages/%1");
    }
    return QString();
}

// A JSON body whose caller names no content type goes as JSON, as a posted
// JSON document would.
Interface::Headers withJsonContentType(Interface::Headers headers)
{
    const QString name = QStringLiteral("Content-Type");
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0)
            return headers;
    }
    headers.insert(name, QStringLiteral("application/json"));
    return headers;
}

// A form value with every reserved character encoded: QUrlQuery leaves "+" as
// it stands, which a form decoder would read as a blank.
QString formValue(const QString &value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

// Marks the exchanges of its lifetime as safe to send twice, whatever leaves the scope.
class RepeatableExchanges
{
public:
    explicit RepeatableExchanges(RestClient &client)
        : m_client(client)
    {
        hostsdk::setRepeatable(m_client, true);
    }
    ~RepeatableExchanges() { hostsdk::setRepeatable(m_client, false); }
    RepeatableExchanges(const RepeatableExchanges &) = delete;
    RepeatableExchanges &operator=(const RepeatableExchanges &) = delete;

private:
    RestClient &m_client;
};

QList<int> readIntegers(const QString &key)
{
    QList<int> result;
    const QStringList values = hostsdk::configStringList(key);
    for (const QString &value : values)
        result << value.toInt();
    return result;
}

} // namespace

Interface::Interface()
    : url(hostsdk::configString(QStringLiteral("Tessaro:url"), QStringLiteral("http://localhost")), QUrl::TolerantMode)
    , tokenUrl(hostsdk::configString(QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("http://localhost")), QUrl::TolerantMode)
{
    useTokenAuth = hostsdk::configBool(QStringLiteral("Tessaro:useTokenAuth"), true);
    timeout = hostsdk::configLongLong(QStringLiteral("Tessaro:timeout"), 5);
    clientId = hostsdk::configString(QStringLiteral("Tessaro:clientId"));
    realmId = hostsdk::configString(QStringLiteral("Tessaro:realmId"));
    authorizationHeader = hostsdk::configString(QStringLiteral("Tessaro:authorizationHeader"));

    logger = Log4Qt::LogManager::logger(QStringLiteral("tessaro"));
    restClient = MockFactory<RestClient>::create();
    restClient->setLogger(logger);
    restClient->setTargetAlias(QStringLiteral("сервису Tessaro"));
    hostsdk::setTimeout(*restClient, milliseconds(timeout));
    hostsdk::setSecretHeaders(*restClient, {QStringLiteral("Authorization")});

    validationCouponMask = QRegularExpression(hostsdk::configString(QStringLiteral("Tessaro:validationCouponMask"), QStringLiteral("^255.*")));
    operationIdAsCardNumber = readIntegers(QStringLiteral("Tessaro:operationIdAsCardNumber"));
    operationIdAsEFTApprovalCode = readIntegers(QStringLiteral("Tessaro:operationIdAsEFTApprovalCode"));
    additionalDataSection = QStringLiteral("orvel");

    readPaymentMapping();
    readVatCodesMapping();
    readEanReasons();
    readDiscardPaymentFields();
    readGateSettings();
}

Interface::~Interface() = default;

void Interface::setLogger(Log4Qt::Logger *newLogger)
{
    logger = newLogger;
    restClient->setLogger(newLogger);
}

void Interface::setToken(const QString &newToken)
{
    token = newToken;
}

QUrl Interface::getUrl(Method method, const QString &arg) const
{
    QUrl result = url;
    result.setPath(url.path(QUrl::FullyDecoded) + methodPath(method).replace(QLatin1String("%1"), arg), QUrl::DecodedMode);
    return result;
}

Interface::Headers Interface::getHeaders(const QString &requestId) const
{
    Headers headers;
    if (useTokenAuth)
        headers.insert(QStringLiteral("Authorization"), QStringLiteral("Bearer ") + token);
    headers.insert(QStringLiteral("Content-Type"), QStringLiteral("application/json"));
    if (!requestId.isEmpty())
        headers.insert(QStringLiteral("X-Request-ID"), requestId);
    return headers;
}

Response Interface::send(const QUrl &target, const QJsonObject &body, const Headers &headers)
{
    return handleRequest(target, body, headers, true);
}

Response Interface::request(const QUrl &target, const Headers &headers)
{
    return handleRequest(target, QJsonObject(), headers, false);
}

void Interface::boundTimeout(int seconds)
{
    hostsdk::setTimeout(*restClient, milliseconds(seconds));
}

http::Response Interface::lastExchange() const
{
    return hostsdk::lastResponse(*restClient);
}

ClientSettings Interface::settings() const
{
    const QString authorization = authorizationHeader.trimmed();
    const qsizetype blank = authorization.indexOf(QLatin1Char(' '));
    ClientSettings settings;
    settings.url = url;
    settings.tokenUrl = tokenUrl;
    settings.useTokenAuth = useTokenAuth;
    settings.gateway = hostsdk::configBool(QStringLiteral("OrvelGate:tessaro"), false);
    settings.clientId = clientId;
    settings.realmId = realmId;
    settings.hasAuthorizationHeader = !authorizationHeader.isEmpty();
    // A value without a blank is the credentials alone: no scheme to show.
    settings.authorizationScheme = blank > 0 ? authorization.left(blank) : QString();
    settings.timeoutSeconds = timeout;
    settings.transportTimeoutMs = hostsdk::timeout(*restClient);
    settings.longestTransportTimeoutMs = hostsdk::longestTimeout(*restClient);
    settings.couponMask = validationCouponMask.pattern();
    settings.cardNumberPaymentCodes = operationIdAsCardNumber;
    settings.approvalCodePaymentCodes = operationIdAsEFTApprovalCode;
    return settings;
}

Interface::Headers Interface::getGateHeaders(const QUrl &target, const QByteArray &body, const Headers &headers,
                                             bool get) const
{
    if (!hostsdk::configBool(QStringLiteral("OrvelGate:tessaro"), false))
        return headers;
    return orvel::getGateHeaders(target, body, headers, get);
}

Response Interface::handleRequest(const QUrl &target, const QJsonObject &body, const Headers &headers, bool post)
{
    Response result;
    // With token authorisation nothing is sent without a token.
    if (!useTokenAuth || !token.isEmpty()) {
        const QByteArray json = QJsonDocument(body).toJson(QJsonDocument::Compact);
        const Headers sent = getGateHeaders(target, json, headers, !post);
        // The text signed is the text sent, serialised once: a second
        // serialisation by the transport could differ from the signed one, and
        // costs as much as the exchange itself.
        if (post)
            hostsdk::postRaw(*restClient, target, json, withJsonContentType(sent));
        else
            hostsdk::get(*restClient, target, sent);
        const http::Response reply = hostsdk::lastResponse(*restClient);
        result = Response(reply);

        const Response::Status status = result.status();
        if (!useTokenAuth || status != Response::TokenError) {
            tokenRetried = false;
            if (reply.isNetworkError() && status != Response::ShiftAlreadyOpened && status != Response::ShiftClosed)
                throw ConnectionErrorException();
            return result;
        }
    }
    return retryWithNewToken(target, body, result);
}

Response Interface::retryWithNewToken(const QUrl &target, const QJsonObject &body, const Response &failed)
{
    if (tokenRetried) {
        logger->error(QStringLiteral("Повторная ошибка авторизации после запроса токена"));
        // Throws: the answer is a token error, or there was none at all.
        failed.checkStatus();
        return failed;
    }
    const TokenResponse reply = getToken();
    if (reply.status() != Response::Success) {
        logger->error(QStringLiteral("Не удалось получить токен"));
        return reply;
    }
    tokenRetried = true;
    setToken(reply.token());
    // Deliberately a POST with the standard headers only, whatever the first request was.
    return send(target, body, getHeaders(QString()));
}

TokenResponse Interface::getToken()
{
    logger->info(QStringLiteral("Получение токена"));
    QUrlQuery form(tokenUrl);
    form.addQueryItem(QStringLiteral("grant_type"), QStringLiteral("client_credentials"));
    form.addQueryItem(QStringLiteral("client_id"), formValue(clientId));
    form.addQueryItem(QStringLiteral("realm_id"), formValue(realmId));
    const Headers headers{{QStringLiteral("Authorization"), authorizationHeader},
                          {QStringLiteral("Content-Type"), QStringLiteral("application/x-www-form-urlencoded")}};
    {
        // A token request changes nothing at the service: when the service
        // closed the kept-alive connection as it went out, it goes again on a
        // fresh one instead of failing the return being closed.
        const RepeatableExchanges repeatable(*restClient);
        hostsdk::postRaw(*restClient, tokenUrl, form.toString(QUrl::FullyEncoded).toUtf8(), headers);
    }
    const TokenResponse reply(hostsdk::lastResponse(*restClient));
    reply.checkStatus();
    // The token comes from outside: escaped, it cannot add lines of its own to the log.
    logger->info(QStringLiteral("Получен токен: %1").arg(LineSanitizer::escaped(reply.token())));
    return reply;
}

void Interface::readPaymentMapping()
{
    paymentCodes = readInvertedSection(QStringLiteral("Tessaro.PaymentCodes"));
}

void Interface::readVatCodesMapping()
{
    vatCodes = readInvertedSection(QStringLiteral("Tessaro.VatCodes"));
}

void Interface::readEanReasons()
{
    eanReasons = readListSection(QStringLiteral("Tessaro.EanReasons"));
}

void Interface::readDiscardPaymentFields()
{
    discardPaymentFields = readListSection(QStringLiteral("Tessaro.DiscardPaymentFields"));
}

void Interface::readGateSettings()
{
    if (hostsdk::configBool(QStringLiteral("OrvelGate:tessaro"), false)) {
        useTokenAuth = false;
        logger->info(QStringLiteral("Используется OrvelGate"));
    }
}

} // namespace tessaro
