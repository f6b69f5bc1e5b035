#include "contracts/cassette.h"

#include <QJsonArray>

namespace tessaro::contracts {

namespace {

QJsonArray toArray(const QStringList &list)
{
    return QJsonArray::fromStringList(list);
}

QStringList toStringList(const QJsonValue &value)
{
    QStringList list;
    for (const QJsonValue &entry : value.toArray())
        list << entry.toString();
    return list;
}

} // namespace

QStringList Cassette::defaultVolatileHeaders()
{
    return {QStringLiteral("host"), QStringLiteral("x-sdk-date")};
}

QJsonObject Cassette::toJson() const
{
    QJsonArray list;
    for (const CassetteExchange &exchange : exchanges)
        list.append(exchange.toJson());
    return {{QStringLiteral("cassetteVersion"), formatVersion},
            {QStringLiteral("pluginVersion"), pluginVersion},
            {QStringLiteral("serviceUrl"), serviceUrl},
            {QStringLiteral("tokenUrl"), tokenUrl},
            {QStringLiteral("volatileHeaders"), toArray(volatileHeaders)},
            {QStringLiteral("volatileFields"), toArray(volatileFields)},
            {QStringLiteral("exchanges"), list}};
}

std::optional<Cassette> Cassette::fromJson(const QJsonObject &json, QString *error)
{
    const QJsonValue version = json.value(QStringLiteral("cassetteVersion"));
    if (!version.isDouble() || version.toInt() < 1) {
        *error = QStringLiteral("no cassette: \"cassetteVersion\" is missing or not a positive number");
        return std::nullopt;
    }
    if (version.toInt() > formatVersion) {
        *error = QStringLiteral("the cassette has format version %1; this program reads up to version %2, a newer tessaro-till reads it")
                     .arg(version.toInt())
                     .arg(formatVersion);
        return std::nullopt;
    }
    if (!json.value(QStringLiteral("exchanges")).isArray()) {
        *error = QStringLiteral("no cassette: \"exchanges\" is missing or not a list");
        return std::nullopt;
    }
    Cassette cassette;
    cassette.pluginVersion = json.value(QStringLiteral("pluginVersion")).toString();
    cassette.serviceUrl = json.value(QStringLiteral("serviceUrl")).toString();
    cassette.tokenUrl = json.value(QStringLiteral("tokenUrl")).toString();
    if (json.contains(QStringLiteral("volatileHeaders")))
        cassette.volatileHeaders = toStringList(json.value(QStringLiteral("volatileHeaders")));
    cassette.volatileFields = toStringList(json.value(QStringLiteral("volatileFields")));
    const QJsonArray list = json.value(QStringLiteral("exchanges")).toArray();
    for (qsizetype i = 0; i < list.size(); ++i) {
        QString problem;
        const auto exchange = CassetteExchange::fromJson(list.at(i).toObject(), &problem);
        if (!exchange) {
            *error = QStringLiteral("exchange %1: %2").arg(i + 1).arg(problem);
            return std::nullopt;
        }
        cassette.exchanges.append(*exchange);
    }
    return cassette;
}

} // namespace tessaro::contracts
