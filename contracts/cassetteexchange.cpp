#include "contracts/cassetteexchange.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace tessaro::contracts {

namespace {

QJsonArray headersToJson(const CassetteExchange::Headers &headers)
{
    QJsonArray array;
    for (const auto &[name, value] : headers)
        array.append(QJsonArray{name, value});
    return array;
}

bool headersFromJson(const QJsonValue &value, CassetteExchange::Headers *headers)
{
    if (value.isUndefined())
        return true;
    if (!value.isArray())
        return false;
    for (const QJsonValue &entry : value.toArray()) {
        const QJsonArray pair = entry.toArray();
        if (pair.size() != 2 || !pair.at(0).isString() || !pair.at(1).isString())
            return false;
        headers->append({pair.at(0).toString(), pair.at(1).toString()});
    }
    return true;
}

// A body that is JSON is kept as JSON, so that a cassette reads and diffs as
// text; the exact bytes are kept beside it whenever re-serialising would not
// give them back (white space, key order, a body that is no JSON at all).
void bodyToJson(QJsonObject *json, const QString &key, const QByteArray &body)
{
    if (body.isEmpty())
        return;
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isNull() && document.toJson(QJsonDocument::Compact) == body)
        json->insert(key, document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array()));
    else
        json->insert(key + QStringLiteral("Text"), QString::fromUtf8(body));
}

QByteArray bodyFromJson(const QJsonObject &json, const QString &key)
{
    const QJsonValue text = json.value(key + QStringLiteral("Text"));
    if (text.isString())
        return text.toString().toUtf8();
    const QJsonValue value = json.value(key);
    if (value.isObject())
        return QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
    if (value.isArray())
        return QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact);
    return {};
}

} // namespace

std::optional<QString> CassetteExchange::header(const Headers &headers, const QString &name)
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return std::nullopt;
}

QJsonObject CassetteExchange::toJson() const
{
    QJsonObject request{{QStringLiteral("method"), method}, {QStringLiteral("path"), path},
                        {QStringLiteral("headers"), headersToJson(requestHeaders)}};
    if (!query.isEmpty())
        request.insert(QStringLiteral("query"), query);
    bodyToJson(&request, QStringLiteral("body"), requestBody);

    QJsonObject answer{{QStringLiteral("status"), status}};
    if (!responseHeaders.isEmpty())
        answer.insert(QStringLiteral("headers"), headersToJson(responseHeaders));
    if (networkError)
        answer.insert(QStringLiteral("networkError"), true);
    bodyToJson(&answer, QStringLiteral("body"), responseBody);

    return {{QStringLiteral("action"), action},
            {QStringLiteral("request"), request},
            {QStringLiteral("answer"), answer},
            {QStringLiteral("durationMs"), durationMs}};
}

std::optional<CassetteExchange> CassetteExchange::fromJson(const QJsonObject &json, QString *error)
{
    const QJsonObject request = json.value(QStringLiteral("request")).toObject();
    const QJsonObject answer = json.value(QStringLiteral("answer")).toObject();
    CassetteExchange exchange;
    exchange.method = request.value(QStringLiteral("method")).toString();
    exchange.path = request.value(QStringLiteral("path")).toString();
    exchange.query = request.value(QStringLiteral("query")).toString();
    if (exchange.method.isEmpty() || !exchange.path.startsWith(QLatin1Char('/'))) {
        *error = QStringLiteral("an exchange needs request.method and a request.path beginning with /");
        return std::nullopt;
    }
    if (!answer.value(QStringLiteral("status")).isDouble()) {
        *error = QStringLiteral("an exchange needs a number answer.status");
        return std::nullopt;
    }
    if (!headersFromJson(request.value(QStringLiteral("headers")), &exchange.requestHeaders)
        || !headersFromJson(answer.value(QStringLiteral("headers")), &exchange.responseHeaders)) {
        *error = QStringLiteral("headers must be a list of [name, value] pairs");
        return std::nullopt;
    }
    exchange.requestBody = bodyFromJson(request, QStringLiteral("body"));
    exchange.status = answer.value(QStringLiteral("status")).toInt();
    exchange.networkError = answer.value(QStringLiteral("networkError")).toBool();
    exchange.responseBody = bodyFromJson(answer, QStringLiteral("body"));
    exchange.durationMs = json.value(QStringLiteral("durationMs")).toInteger();
    exchange.action = json.value(QStringLiteral("action")).toString();
    return exchange;
}

} // namespace tessaro::contracts
