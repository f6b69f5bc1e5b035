#include "installationcheck.h"

#include "client/interface.h"
#include "hostsdk/hostadapter.h"
#include "plugin/backplugin.h"
#include "plugin/pluginversion.h"
#include "selfcheckprotocol.h"

#include <basicexception.h>
#include <config.h>
#include "secrets/secretmask.h"
#include <singleton.h>

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QUuid>

#include <functional>

namespace tessaro {

namespace {

QJsonObject plainSetting(const QString &key, const QJsonValue &value)
{
    return {{QStringLiteral("key"), key},
            {QStringLiteral("set"), hostsdk::configContains(key)},
            {QStringLiteral("text"), hostsdk::configString(key)},
            {QStringLiteral("value"), value}};
}

// An address as it may be shown: no password, no secret query field.
QString shownUrl(const QUrl &url)
{
    return SecretMask().url(url);
}

QJsonObject urlSetting(const QString &key, const QUrl &value)
{
    QJsonObject setting = plainSetting(key, shownUrl(value));
    setting.insert(QStringLiteral("text"), shownUrl(QUrl(hostsdk::configString(key), QUrl::TolerantMode)));
    setting.insert(QStringLiteral("scheme"), value.scheme());
    setting.insert(QStringLiteral("host"), value.host());
    setting.insert(QStringLiteral("port"), value.port(value.scheme() == QLatin1String("https") ? 443 : 80));
    setting.insert(QStringLiteral("valid"), value.isValid() && !value.host().isEmpty());
    // What makes an address unusable although it parses: the till judges these.
    const QString text = hostsdk::configString(key);
    // QUrl keeps control characters percent-encoded, even when asked to decode.
    static const QRegularExpression control(QStringLiteral("%(?:[01][0-9a-f]|7f)"), QRegularExpression::CaseInsensitiveOption);
    setting.insert(QStringLiteral("length"), text.size());
    setting.insert(QStringLiteral("blanks"), std::any_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSpace(); }));
    setting.insert(QStringLiteral("controlCharacters"), control.match(QString::fromLatin1(value.toEncoded())).hasMatch());
    setting.insert(QStringLiteral("pathEndsWithSlash"), value.path().endsWith(QLatin1Char('/')));
    return setting;
}

// What may be said of a secret: whether it is there, how long it is and
// whether blanks stand around it; never a character of it.
QJsonObject secretSetting(const QString &key)
{
    const QString value = hostsdk::configString(key);
    return {{QStringLiteral("key"), key},
            {QStringLiteral("set"), hostsdk::configContains(key)},
            {QStringLiteral("secret"), true},
            {QStringLiteral("length"), value.size()},
            {QStringLiteral("blanksAround"), value != value.trimmed()}};
}

QJsonArray toJson(const QList<int> &values)
{
    QJsonArray array;
    for (int value : values)
        array.append(value);
    return array;
}

QJsonArray toJson(const QSet<int> &values)
{
    QList<int> sorted = values.values();
    std::sort(sorted.begin(), sorted.end());
    return toJson(sorted);
}

template <typename Value>
QJsonObject mapToJson(const QMap<int, Value> &map, const std::function<QJsonValue(const Value &)> &convert)
{
    QJsonObject object;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        object.insert(QString::number(it.key()), convert(it.value()));
    return object;
}

bool isInteger(const QString &text)
{
    bool ok = false;
    static_cast<void>(text.toInt(&ok, 10));
    return ok;
}

// Mapping tables skip a key that is not one integer; currency lists skip each
// piece of a key's comma-separated list that is not an integer.
bool isCurrencyListKey(const QString &name)
{
    const QStringList pieces = name.split(QLatin1Char(','), Qt::SkipEmptyParts);
    return !pieces.isEmpty() && std::all_of(pieces.cbegin(), pieces.cend(), [](const QString &piece) {
        return isInteger(piece.trimmed());
    });
}

QJsonObject section(const QString &name, const QJsonObject &map, const std::function<bool(const QString &)> &accepted)
{
    QJsonObject keys;
    QJsonArray ignored;
    const QStringList names = hostsdk::configKeys(name);
    for (const QString &key : names) {
        keys.insert(key, hostsdk::configString(name + QLatin1Char(':') + key));
        if (!accepted(key))
            ignored.append(key);
    }
    return {{QStringLiteral("section"), name},
            {QStringLiteral("keys"), keys},
            {QStringLiteral("ignored"), ignored},
            {QStringLiteral("map"), map}};
}

// What the client can make of an answer's body: it reads JSON objects and arrays.
QString answerShape(const QByteArray &body)
{
    if (body.trimmed().isEmpty())
        return QStringLiteral("empty");
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        return QStringLiteral("object");
    return document.isArray() ? QStringLiteral("array") : QStringLiteral("other");
}

// The transport's side of an exchange that failed or was refused.
void addExchange(QJsonObject &report, const http::Response &exchange)
{
    report.insert(QStringLiteral("httpCode"), hostsdk::httpCode(exchange));
    report.insert(QStringLiteral("networkError"), exchange.isNetworkError());
    if (hostsdk::errorCode(exchange) != 0)
        report.insert(QStringLiteral("transportError"), exchange.errorText().text());
    report.insert(QStringLiteral("answerShape"), answerShape(exchange.body()));
    report.insert(QStringLiteral("answerBytes"), exchange.body().size());
    // The peer's own word on a refusal; a successful token answer never gets here.
    const QJsonObject body = exchange.responseObject();
    for (const QString &field : {QStringLiteral("error"), QStringLiteral("error_msg"), QStringLiteral("message")}) {
        if (body.value(field).isString()) {
            report.insert(QStringLiteral("serviceError"), body.value(field));
            break;
        }
    }
    // Only the gateway words its refusals under "error_msg".
    if (body.value(QStringLiteral("error_msg")).isString())
        report.insert(QStringLiteral("gatewayError"), body.value(QStringLiteral("error_msg")));
}

QJsonObject receiptNumber(const Interface &client, int currency)
{
    const QString section = QStringLiteral("Tessaro.ReceiptNumber.%1").arg(currency);
    const QString maskKey = section + QStringLiteral(":mask");
    const QRegularExpression mask = client.receiptNumberMask(currency);
    QJsonObject report{{QStringLiteral("maskSet"), hostsdk::configContains(maskKey)},
                       {QStringLiteral("mask"), hostsdk::configString(maskKey)},
                       {QStringLiteral("valid"), mask.isValid()},
                       {QStringLiteral("resultGroup"), mask.namedCaptureGroups().contains(QStringLiteral("result"))},
                       {QStringLiteral("symbolsToRemove"), hostsdk::configString(section + QStringLiteral(":symbolsToRemove"))}};
    if (!mask.isValid())
        report.insert(QStringLiteral("error"), QStringLiteral("%1 at offset %2").arg(mask.errorString()).arg(mask.patternErrorOffset()));
    return report;
}

QJsonObject customFields(int currency)
{
    const QString group = QStringLiteral("Tessaro.CustomFields.%1").arg(currency);
    QJsonObject fields;
    const QStringList names = hostsdk::configKeys(group);
    for (const QString &name : names) {
        fields.insert(name, QJsonObject{{QStringLiteral("template"), hostsdk::configString(group + QLatin1Char(':') + name)},
                                        {QStringLiteral("symbolsToRemove"),
                                         hostsdk::configString(QStringLiteral("Tessaro.%1.%2:symbolsToRemove").arg(name).arg(currency))}});
    }
    return fields;
}

} // namespace

InstallationCheck::InstallationCheck(const QJsonObject &options)
    : m_options(options)
{
}

QJsonObject InstallationCheck::run() const
{
    Interface client;
    // Read before the check bounds the time-out: the transport's own as the plug-in runs it.
    const QJsonArray read = settings(client);
    if (client.timeoutSeconds() <= 0)
        client.boundTimeout(m_options.value(selfcheck::option::BoundSeconds).toInt(10));
    const QJsonObject fetched = token(client);
    const bool tokenMissing = client.usesTokenAuth() && !fetched.value(QStringLiteral("ok")).toBool();
    return {{selfcheck::report::Version, pluginVersion()},
            {selfcheck::report::Settings, read},
            {selfcheck::report::Sections, sections(client)},
            {selfcheck::report::Currencies, currencies(client)},
            {selfcheck::report::Token, fetched},
            {selfcheck::report::Signing, signing(client)},
            {selfcheck::report::Request, request(client, tokenMissing)}};
}

QJsonArray InstallationCheck::settings(const Interface &client)
{
    const ClientSettings read = client.settings();
    const auto text = [](const QString &key, const QString &fallback = QString()) {
        return hostsdk::configString(key, fallback);
    };
    QJsonObject authorization = secretSetting(QStringLiteral("Tessaro:authorizationHeader"));
    authorization.insert(QStringLiteral("scheme"), read.authorizationScheme);
    return {
        urlSetting(QStringLiteral("Tessaro:url"), read.url),
        urlSetting(QStringLiteral("Tessaro:tokenUrl"), read.tokenUrl),
        plainSetting(QStringLiteral("Tessaro:useTokenAuth"), read.useTokenAuth),
        plainSetting(QStringLiteral("Tessaro:clientId"), read.clientId),
        plainSetting(QStringLiteral("Tessaro:realmId"), read.realmId),
        authorization,
        timeoutSetting(read),
        plainSetting(QStringLiteral("Tessaro:validationCouponMask"), read.couponMask),
        plainSetting(QStringLiteral("Tessaro:validationCoupon"), client.validatesCoupons()),
        plainSetting(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), client.getOnlineCheckEanReasonCode()),
        plainSetting(QStringLiteral("Tessaro:typeTill"), client.tillType()),
        plainSetting(QStringLiteral("Tessaro:nameTypeTill"), client.tillTypeName()),
        plainSetting(QStringLiteral("Tessaro:hostName"), client.tillHostName()),
        plainSetting(QStringLiteral("Tessaro:operationIdAsCardNumber"), toJson(read.cardNumberPaymentCodes)),
        plainSetting(QStringLiteral("Tessaro:operationIdAsEFTApprovalCode"), toJson(read.approvalCodePaymentCodes)),
        plainSetting(QStringLiteral("OrvelGate:tessaro"), read.gateway),
        secretSetting(QStringLiteral("OrvelGate:appKey")),
        secretSetting(QStringLiteral("OrvelGate:appSecret")),
        plainSetting(QStringLiteral("OrvelGate:xStage"), text(QStringLiteral("OrvelGate:xStage"), QStringLiteral("PreProd"))),
        plainSetting(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"),
                     hostsdk::configBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), true)),
        plainSetting(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"),
                     hostsdk::configBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), true)),
    };
}

QJsonArray InstallationCheck::sections(const Interface &client)
{
    const std::function<QJsonValue(const int &)> code = [](const int &value) { return QJsonValue(value); };
    const std::function<QJsonValue(const QStringList &)> texts = [](const QStringList &value) {
        return QJsonValue(QJsonArray::fromStringList(value));
    };
    const std::function<QJsonValue(const QSet<int> &)> codes = [](const QSet<int> &value) {
        return QJsonValue(toJson(value));
    };
    // A plug-in object that is never initialised nor handed to a host: only
    // its currency lists read by its own readers, as init() reads them.
    BackPlugin plugin;
    plugin.readForbiddenMixedValuts();
    plugin.readAdditionalBackBySaleValuts();
    return {
        section(QStringLiteral("Tessaro.PaymentCodes"), mapToJson(client.paymentCodeMap(), code), isInteger),
        section(QStringLiteral("Tessaro.VatCodes"), mapToJson(client.vatCodeMap(), code), isInteger),
        section(QStringLiteral("Tessaro.EanReasons"), mapToJson(client.eanReasonMap(), texts), isInteger),
        section(QStringLiteral("Tessaro.DiscardPaymentFields"), mapToJson(client.discardPaymentFieldMap(), texts),
                isInteger),
        section(QStringLiteral("Tessaro.ForbiddenMixedValuts"), mapToJson(plugin.forbiddenMixedCurrencies(), codes),
                isCurrencyListKey),
        section(QStringLiteral("TessaroBack.AdditionalBackBySaleValuts"),
                mapToJson(plugin.additionalBackBySaleCurrencies(), codes), isCurrencyListKey),
    };
}

QJsonObject InstallationCheck::timeoutSetting(const ClientSettings &client)
{
    QJsonObject setting = plainSetting(QStringLiteral("Tessaro:timeout"), client.timeoutSeconds);
    // The transport replaces a time-out that is not positive or too long by its cap.
    setting.insert(QStringLiteral("transportMs"), client.transportTimeoutMs);
    setting.insert(QStringLiteral("longestMs"), client.longestTransportTimeoutMs);
    return setting;
}

QJsonArray InstallationCheck::currencies(const Interface &client) const
{
    QJsonArray report;
    const QJsonArray codes = m_options.value(selfcheck::option::Currencies).toArray();
    for (const QJsonValue &code : codes) {
        const int currency = code.toInt();
        report.append(QJsonObject{{QStringLiteral("code"), currency},
                                  {QStringLiteral("receiptNumber"), receiptNumber(client, currency)},
                                  {QStringLiteral("customFields"), customFields(currency)}});
    }
    return report;
}

QJsonObject InstallationCheck::token(Interface &client) const
{
    QJsonObject report{{QStringLiteral("used"), client.usesTokenAuth()}};
    if (!client.usesTokenAuth() || !m_options.value(selfcheck::option::Token).toBool(true))
        return report;
    QElapsedTimer clock;
    clock.start();
    try {
        const TokenResponse reply = client.getToken();
        report.insert(QStringLiteral("ms"), clock.elapsed());
        report.insert(QStringLiteral("ok"), true);
        report.insert(QStringLiteral("lifetimeSeconds"), reply.jsonObject().value(QStringLiteral("expires_in")));
        report.insert(QStringLiteral("empty"), reply.token().isEmpty());
        // Kept as a document would keep it, so the request goes with it.
        client.setToken(reply.token());
    } catch (const BasicException &e) {
        report.insert(QStringLiteral("ms"), clock.elapsed());
        report.insert(QStringLiteral("ok"), false);
        report.insert(QStringLiteral("message"), e.tr().text());
        addExchange(report, client.lastExchange());
    }
    return report;
}

QJsonObject InstallationCheck::signing(const Interface &client)
{
    const bool on = client.settings().gateway;
    QJsonObject report{{QStringLiteral("on"), on}};
    if (!on)
        return report;
    const QUrl target = client.getUrl(Interface::Messages, QStringLiteral("probe"));
    const Interface::Headers headers = client.getGateHeaders(target, QByteArray(), client.getHeaders(QString()), true);
    const QString authorization = headers.value(QStringLiteral("Authorization"));
    static const QString algorithm = QStringLiteral("SDK-HMAC-SHA256 ");
    const bool isSigned = authorization.startsWith(algorithm);
    report.insert(QStringLiteral("signed"), isSigned);
    if (isSigned) {
        // Only the names of what is signed: the access key and the signature stay out.
        const QStringList parts = authorization.mid(algorithm.size()).split(QStringLiteral(", "));
        for (const QString &part : parts) {
            if (part.startsWith(QLatin1String("SignedHeaders=")))
                report.insert(QStringLiteral("signedHeaders"), part.mid(part.indexOf(QLatin1Char('=')) + 1));
        }
    }
    return report;
}

QJsonObject InstallationCheck::request(Interface &client, bool tokenMissing) const
{
    // No cart is ever named like this, so the answer cannot be anybody's data.
    const QString id = QStringLiteral("installation-check-") + QUuid::createUuid().toString(QUuid::Id128);
    const QUrl target = client.getUrl(Interface::Messages, id);
    QJsonObject report{{QStringLiteral("path"), target.path()}, {QStringLiteral("url"), shownUrl(target)}};
    if (!m_options.value(selfcheck::option::Request).toBool(true) || tokenMissing) {
        report.insert(QStringLiteral("sent"), false);
        return report;
    }
    report.insert(QStringLiteral("sent"), true);
    QElapsedTimer clock;
    clock.start();
    try {
        const MessagesResponse reply = client.messages(id);
        report.insert(QStringLiteral("ms"), clock.elapsed());
        report.insert(QStringLiteral("status"), int(reply.status()));
        if (!reply.success()) {
            const tr::Tr message = reply.errorMessage();
            report.insert(QStringLiteral("messageId"), message.id());
            report.insert(QStringLiteral("message"), message.text());
        }
    } catch (const BasicException &e) {
        report.insert(QStringLiteral("ms"), clock.elapsed());
        report.insert(QStringLiteral("thrown"), true);
        report.insert(QStringLiteral("messageId"), e.tr().id());
        report.insert(QStringLiteral("message"), e.tr().text());
    }
    addExchange(report, client.lastExchange());
    return report;
}

} // namespace tessaro

void tessaro_check_installation(const char *options, void (*deliver)(const char *report, void *context), void *context)
{
    QJsonObject report;
    try {
        const QJsonObject given = QJsonDocument::fromJson(QByteArray(options)).object();
        report = tessaro::InstallationCheck(given).run();
    } catch (const std::exception &e) {
        report = {{tessaro::selfcheck::report::Error, QString::fromUtf8(e.what())}};
    } catch (...) {
        report = {{tessaro::selfcheck::report::Error, QStringLiteral("the check stopped on an unknown failure")}};
    }
    if (deliver)
        deliver(QJsonDocument(report).toJson(QJsonDocument::Compact).constData(), context);
}
