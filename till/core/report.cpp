#include "report.h"

#include "secrets/secretmask.h"

#include <QJsonArray>

namespace till {

namespace {

QJsonObject stepToJson(const HookStep &step)
{
    return {{QStringLiteral("kind"), step.kind},
            {QStringLiteral("actionType"), step.actionType},
            {QStringLiteral("triggerId"), step.triggerId},
            {QStringLiteral("priority"), step.priority},
            {QStringLiteral("result"), step.result}};
}

HookStep stepFromJson(const QJsonObject &json)
{
    return {json.value(QStringLiteral("kind")).toString(), json.value(QStringLiteral("actionType")).toInt(),
            json.value(QStringLiteral("triggerId")).toInt(), json.value(QStringLiteral("priority")).toInt(),
            json.value(QStringLiteral("result")).toInt()};
}

QJsonObject dialogToJson(const DialogRecord &dialog)
{
    QJsonObject json{{QStringLiteral("kind"), dialog.kind},
                     {QStringLiteral("id"), dialog.id},
                     {QStringLiteral("text"), dialog.text}};
    if (!dialog.items.isEmpty())
        json.insert(QStringLiteral("items"), QJsonArray::fromStringList(dialog.items));
    if (!dialog.answer.isUndefined())
        json.insert(QStringLiteral("answer"), dialog.answer);
    return json;
}

DialogRecord dialogFromJson(const QJsonObject &json)
{
    QStringList items;
    for (const QJsonValue &item : json.value(QStringLiteral("items")).toArray())
        items << item.toString();
    return {json.value(QStringLiteral("kind")).toString(), json.value(QStringLiteral("id")).toString(),
            json.value(QStringLiteral("text")).toString(), items, json.value(QStringLiteral("answer"))};
}

QJsonObject requestToJson(const RequestRecord &request)
{
    QJsonObject json{{QStringLiteral("method"), request.method},
                     {QStringLiteral("url"), request.url},
                     {QStringLiteral("path"), request.path},
                     {QStringLiteral("httpCode"), request.httpCode},
                     {QStringLiteral("errorCode"), request.errorCode},
                     {QStringLiteral("networkError"), request.networkError}};
    if (!request.errorText.isEmpty())
        json.insert(QStringLiteral("errorText"), request.errorText);
    if (!request.requestBody.isUndefined())
        json.insert(QStringLiteral("request"), request.requestBody);
    if (!request.responseBody.isUndefined())
        json.insert(QStringLiteral("response"), request.responseBody);
    return json;
}

RequestRecord requestFromJson(const QJsonObject &json)
{
    RequestRecord request;
    request.method = json.value(QStringLiteral("method")).toString();
    request.url = json.value(QStringLiteral("url")).toString();
    request.path = json.value(QStringLiteral("path")).toString();
    request.httpCode = json.value(QStringLiteral("httpCode")).toInt();
    request.errorCode = json.value(QStringLiteral("errorCode")).toInt();
    request.networkError = json.value(QStringLiteral("networkError")).toBool();
    request.errorText = json.value(QStringLiteral("errorText")).toString();
    request.requestBody = json.value(QStringLiteral("request"));
    request.responseBody = json.value(QStringLiteral("response"));
    return request;
}

template <typename T, typename Convert>
QJsonArray arrayOf(const QList<T> &values, Convert convert)
{
    QJsonArray array;
    for (const T &value : values)
        array << convert(value);
    return array;
}

template <typename T, typename Convert>
QList<T> listOf(const QJsonValue &value, Convert convert)
{
    QList<T> list;
    for (const QJsonValue &item : value.toArray())
        list << convert(item.toObject());
    return list;
}

QStringList stringsOf(const QJsonValue &value)
{
    QStringList strings;
    for (const QJsonValue &item : value.toArray())
        strings << item.toString();
    return strings;
}

// Reports and progress files outlive the run and travel (a ticket, a mail):
// what they hold is masked as the logs are.
QJsonObject masked(const QJsonObject &json)
{
    thread_local const SecretMask mask;
    return mask.json(json).toObject();
}

} // namespace

QJsonObject ActionRecord::toJson() const
{
    QJsonObject json{{QStringLiteral("index"), index},
                     {QStringLiteral("type"), type},
                     {QStringLiteral("title"), title},
                     {QStringLiteral("steps"), arrayOf(steps, stepToJson)},
                     {QStringLiteral("dialogs"), arrayOf(dialogs, dialogToJson)},
                     {QStringLiteral("requests"), arrayOf(requests, requestToJson)},
                     {QStringLiteral("notes"), QJsonArray::fromStringList(notes)},
                     {QStringLiteral("failures"), QJsonArray::fromStringList(failures)}};
    if (result)
        json.insert(QStringLiteral("result"), *result);
    return masked(json);
}

ActionRecord ActionRecord::fromJson(const QJsonObject &json)
{
    ActionRecord record;
    record.index = json.value(QStringLiteral("index")).toInt();
    record.type = json.value(QStringLiteral("type")).toString();
    record.title = json.value(QStringLiteral("title")).toString();
    if (json.contains(QStringLiteral("result")))
        record.result = json.value(QStringLiteral("result")).toInt();
    record.steps = listOf<HookStep>(json.value(QStringLiteral("steps")), stepFromJson);
    record.dialogs = listOf<DialogRecord>(json.value(QStringLiteral("dialogs")), dialogFromJson);
    record.requests = listOf<RequestRecord>(json.value(QStringLiteral("requests")), requestFromJson);
    record.notes = stringsOf(json.value(QStringLiteral("notes")));
    record.failures = stringsOf(json.value(QStringLiteral("failures")));
    return record;
}

QStringList Report::allFailures() const
{
    QStringList all;
    for (const ActionRecord &action : actions) {
        for (const QString &failure : action.failures)
            all << QStringLiteral("action %1 (%2): %3").arg(action.index + 1).arg(action.type, failure);
    }
    return all + failures;
}

QJsonObject Report::toJson() const
{
    QJsonObject documentStates;
    for (auto it = documents.cbegin(); it != documents.cend(); ++it)
        documentStates.insert(it.key(), it.value());
    return masked({{QStringLiteral("scenario"), scenario},
            {QStringLiteral("file"), file},
            {QStringLiteral("dataFolder"), dataFolder},
            {QStringLiteral("plugin"), plugin},
            {QStringLiteral("service"), service},
            {QStringLiteral("actionCount"), actionCount},
            {QStringLiteral("actions"), arrayOf(actions, [](const ActionRecord &a) { return a.toJson(); })},
            {QStringLiteral("documents"), documentStates},
            {QStringLiteral("failures"), QJsonArray::fromStringList(allFailures())},
            {QStringLiteral("passed"), passed()}});
}

} // namespace till
