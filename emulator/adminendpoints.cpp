#include "emulator/adminendpoints.h"

#include "emulator/clock.h"
#include "emulator/faultplan.h"
#include "emulator/journal.h"
#include "emulator/servicestate.h"
#include "emulator/tokenissuer.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tessaro::emulator {

namespace {

const QString prefix = QStringLiteral("/_emulator/");

Reply methodNotAllowed()
{
    return Reply::message(405, QStringLiteral("Method not allowed"));
}

Reply done()
{
    return Reply::json(200, QJsonObject{{QStringLiteral("status"), QStringLiteral("ok")}});
}

QJsonArray faultsJson(const QList<Fault> &faults)
{
    QJsonArray array;
    for (const Fault &fault : faults)
        array.append(fault.toJson());
    return array;
}

} // namespace

AdminEndpoints::AdminEndpoints(Journal &journal, FaultPlan &faults, Clock &clock, ServiceState &state,
                               TokenIssuer &tokens, bool showSecrets)
    : m_journal(journal)
    , m_faults(faults)
    , m_clock(clock)
    , m_state(state)
    , m_tokens(tokens)
    , m_showSecrets(showSecrets)
{
}

bool AdminEndpoints::owns(const QString &path)
{
    return path.startsWith(prefix);
}

Reply AdminEndpoints::handle(const Exchange &exchange)
{
    const QString name = exchange.path.mid(prefix.size());
    if (name == QLatin1String("requests"))
        return requests(exchange.method);
    if (name == QLatin1String("faults"))
        return faults(exchange);
    if (name == QLatin1String("clock"))
        return clock(exchange);
    if (name == QLatin1String("shifts"))
        return shifts(exchange);
    if (name == QLatin1String("tokens"))
        return tokens(exchange.method);
    if (name == QLatin1String("state"))
        return exchange.method == "GET" ? Reply::json(200, m_state.toJson()) : methodNotAllowed();
    return Reply::message(404, QStringLiteral("Not found"));
}

Reply AdminEndpoints::requests(const QByteArray &method)
{
    if (method == "GET")
        return Reply::json(200, m_journal.toJson(m_showSecrets ? JournalEntry::Secrets::Shown : JournalEntry::Secrets::Masked));
    if (method == "DELETE") {
        m_journal.clear();
        return done();
    }
    return methodNotAllowed();
}

Reply AdminEndpoints::faults(const Exchange &exchange)
{
    if (exchange.method == "GET")
        return Reply::json(200, faultsJson(m_faults.faults()));
    if (exchange.method == "DELETE") {
        m_faults.clear();
        return done();
    }
    if (exchange.method != "POST")
        return methodNotAllowed();

    // A list of faults, or a single one.
    const QJsonDocument document = QJsonDocument::fromJson(exchange.body);
    const QJsonArray list = document.isArray() ? document.array() : QJsonArray{document.object()};
    QList<Fault> added;
    for (const QJsonValue &value : list) {
        QString error;
        const auto fault = Fault::fromJson(value.toObject(), &error);
        if (!fault)
            return Reply::message(400, error);
        added.append(*fault);
    }
    for (const Fault &fault : std::as_const(added))
        m_faults.add(fault);
    return Reply::json(200, faultsJson(m_faults.faults()));
}

Reply AdminEndpoints::clock(const Exchange &exchange)
{
    if (exchange.method == "POST") {
        const QJsonObject body = exchange.jsonObject();
        if (body.value(QStringLiteral("reset")).toBool())
            m_clock.reset();
        if (body.contains(QStringLiteral("now"))) {
            const QDateTime now = QDateTime::fromString(body.value(QStringLiteral("now")).toString(), Qt::ISODate);
            if (!now.isValid())
                return Reply::message(400, QStringLiteral("\"now\" must be an ISO 8601 date and time"));
            m_clock.setNow(now);
        }
        m_clock.advance(body.value(QStringLiteral("advanceSeconds")).toInteger());
    } else if (exchange.method != "GET") {
        return methodNotAllowed();
    }
    return Reply::json(200, QJsonObject{{QStringLiteral("now"), m_clock.now().toString(Qt::ISODateWithMs)}});
}

Reply AdminEndpoints::shifts(const Exchange &exchange)
{
    if (exchange.method != "POST")
        return methodNotAllowed();
    const QJsonObject body = exchange.jsonObject();
    m_state.shifts.setOpen(body.value(QStringLiteral("storeNo")).toInt(), body.value(QStringLiteral("tillNo")).toInt(),
                           body.value(QStringLiteral("open")).toBool());
    return Reply::json(200, m_state.shifts.toJson());
}

Reply AdminEndpoints::tokens(const QByteArray &method)
{
    if (method != "DELETE")
        return methodNotAllowed();
    m_tokens.revokeAll();
    return done();
}

} // namespace tessaro::emulator
