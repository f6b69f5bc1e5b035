#include "emulator/servicerouter.h"

#include "emulator/clock.h"
#include "emulator/emulatorsettings.h"
#include "emulator/serviceanswers.h"
#include "emulator/tokenissuer.h"

#include <QJsonDocument>

namespace tessaro::emulator {

namespace {

bool segmentsMatch(const QStringList &pattern, const QStringList &segments, QString *id)
{
    if (pattern.size() != segments.size())
        return false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        if (pattern.at(i) == QLatin1String("{id}"))
            *id = segments.at(i);
        else if (pattern.at(i) != segments.at(i))
            return false;
    }
    return true;
}

} // namespace

ServiceRouter::ServiceRouter(const EmulatorSettings &settings, const Clock &clock, ServiceState &state,
                             TokenIssuer &tokens)
    : m_settings(settings)
    , m_clock(clock)
    , m_tokens(tokens)
    , m_gateway(settings.appKey, settings.appSecret, settings.clockToleranceSeconds)
    , m_till(state, clock)
    , m_carts(settings, state)
    , m_adviceNotes(state)
    , m_content(settings, state)
{
    const auto path = [](const char *text) { return QString::fromLatin1(text).split(QLatin1Char('/')); };
    m_routes = {
        {path("till/open"), false, [this](const Exchange &, const QJsonObject &body, const QString &) {
             return m_till.open(body); }},
        {path("till/close"), false, [this](const Exchange &, const QJsonObject &body, const QString &) {
             return m_till.close(body); }},
        {path("till/deposit"), false, [this](const Exchange &exchange, const QJsonObject &body, const QString &) {
             return m_till.deposit(body, QString::fromUtf8(exchange.header(QByteArrayLiteral("x-request-id")))); }},
        {path("cart/create"), false, [this](const Exchange &, const QJsonObject &body, const QString &) {
             return m_carts.create(body); }},
        {path("cart/{id}"), true, [this](const Exchange &, const QJsonObject &, const QString &id) {
             return m_carts.content(id); }},
        {path("cart/{id}/update"), false, [this](const Exchange &, const QJsonObject &body, const QString &id) {
             return m_carts.update(id, body); }},
        {path("cart/{id}/cart_status"), false, [this](const Exchange &, const QJsonObject &body, const QString &id) {
             return m_carts.setStatus(id, body); }},
        {path("cart/{id}/add_customer"), false, [this](const Exchange &, const QJsonObject &body, const QString &id) {
             return m_carts.addCustomer(id, body); }},
        {path("advicenote"), false, [this](const Exchange &exchange, const QJsonObject &body, const QString &) {
             return m_adviceNotes.receive(body, exchange.receivedAt); }},
        {path("payload/{id}"), true, [this](const Exchange &, const QJsonObject &, const QString &id) {
             return m_content.payload(id); }},
        {path("messages/{id}"), true, [this](const Exchange &, const QJsonObject &, const QString &id) {
             return m_content.messages(id); }},
    };
}

Reply ServiceRouter::process(const Exchange &exchange)
{
    if (exchange.path == m_settings.tokenPath)
        return m_tokens.issue(exchange);
    if (!isUnderBase(exchange.path))
        return Reply::message(404, QStringLiteral("Not found"));
    if (const auto refusal = authRefusal(exchange))
        return *refusal;
    return dispatch(exchange);
}

QString ServiceRouter::servicePath(const QString &path) const
{
    if (m_settings.basePath.isEmpty() || !isUnderBase(path))
        return path;
    const QString rest = path.mid(m_settings.basePath.size());
    return rest.isEmpty() ? QStringLiteral("/") : rest;
}

bool ServiceRouter::isUnderBase(const QString &path) const
{
    const QString &base = m_settings.basePath;
    return base.isEmpty() || path == base || path.startsWith(base + QLatin1Char('/'));
}

std::optional<Reply> ServiceRouter::authRefusal(const Exchange &exchange) const
{
    switch (m_settings.authMode) {
    case EmulatorSettings::AuthMode::Token:
        if (!m_tokens.accepts(exchange.header(QByteArrayLiteral("authorization"))))
            return ServiceAnswers::invalidToken();
        return std::nullopt;
    case EmulatorSettings::AuthMode::Gateway:
        return m_gateway.refusal(exchange, m_clock.now());
    case EmulatorSettings::AuthMode::None:
        break;
    }
    return std::nullopt;
}

Reply ServiceRouter::dispatch(const Exchange &exchange)
{
    const QStringList segments = servicePath(exchange.path).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const Route &route : std::as_const(m_routes)) {
        QString id;
        if (!segmentsMatch(route.segments, segments, &id))
            continue;
        const bool allowed = exchange.method == "POST" || (route.readOnly && exchange.method == "GET");
        if (!allowed)
            return Reply::message(405, QStringLiteral("Method %1 not allowed").arg(QString::fromLatin1(exchange.method)));
        if (route.readOnly)
            return route.handler(exchange, QJsonObject(), id);
        if (!exchange.header(QByteArrayLiteral("content-type")).startsWith("application/json"))
            return Reply::message(415, QStringLiteral("Content-Type must be application/json"));
        const QJsonDocument document = QJsonDocument::fromJson(exchange.body);
        if (!document.isObject())
            return ServiceAnswers::invalidDataType();
        return route.handler(exchange, document.object(), id);
    }
    return Reply::message(404, QStringLiteral("Not found"));
}

} // namespace tessaro::emulator
