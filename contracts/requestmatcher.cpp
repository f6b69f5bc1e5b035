#include "contracts/requestmatcher.h"

#include "contracts/textdifference.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessaro::contracts {

namespace {

/// Headers the HTTP transport adds or sets by itself; the client does not choose them.
bool isTransportHeader(const QString &name)
{
    static const QStringList names{QStringLiteral("host"), QStringLiteral("content-length"), QStringLiteral("accept"),
                                   QStringLiteral("user-agent"), QStringLiteral("connection"), QStringLiteral("expect"),
                                   QStringLiteral("accept-encoding"), QStringLiteral("transfer-encoding")};
    return names.contains(name, Qt::CaseInsensitive);
}

QJsonValue withoutVolatile(const QJsonValue &value, const QString &path, const DriftRules &rules)
{
    if (!path.isEmpty() && rules.varies(path))
        return QJsonValue::Null;
    if (value.isObject()) {
        QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            *it = withoutVolatile(*it, path.isEmpty() ? it.key() : path + QLatin1Char('.') + it.key(), rules);
        return object;
    }
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size(); ++i)
            array[i] = withoutVolatile(array.at(i), QStringLiteral("%1[%2]").arg(path).arg(i), rules);
        return array;
    }
    return value;
}

QByteArray normalised(const QByteArray &body, const DriftRules &rules)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isNull())
        return body;
    const QJsonValue value = withoutVolatile(document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array()), QString(), rules);
    return (value.isObject() ? QJsonDocument(value.toObject()) : QJsonDocument(value.toArray())).toJson(QJsonDocument::Compact);
}

} // namespace

RequestMatcher::RequestMatcher(const Cassette &cassette)
    : m_cassette(cassette)
    , m_volatileFields(cassette.volatileFields, {})
    , m_used(cassette.exchanges.size(), false)
{
}

RequestMatcher::Result RequestMatcher::match(const CassetteExchange &request)
{
    Result result;
    // The nearest: the first unused request to the same place, else the
    // unused one of the same method whose path agrees longest.
    qsizetype nearestScore = -1;
    for (int i = m_next; i < m_cassette.exchanges.size(); ++i) {
        if (m_used.at(i))
            continue;
        const CassetteExchange &recorded = m_cassette.exchanges.at(i);
        const bool sameMethod = recorded.method == request.method;
        const bool route = sameMethod && recorded.path == request.path;
        if (route && difference(recorded, request).isEmpty()) {
            m_used[i] = true;
            while (m_next < m_used.size() && m_used.at(m_next))
                ++m_next;
            result.index = i;
            return result;
        }
        // Ranked by: same place, then same method, then how long the paths agree.
        const qsizetype differsAt = TextDifference::firstDifference(recorded.path.toUtf8(), request.path.toUtf8());
        const qsizetype agreed = differsAt < 0 ? request.path.size() : differsAt;
        const qsizetype score = (route ? 2 : sameMethod ? 1 : 0) * (request.path.size() + 1) + agreed;
        if (score > nearestScore) {
            nearestScore = score;
            result.nearest = i;
        }
    }
    result.difference = result.nearest >= 0 ? difference(m_cassette.exchanges.at(result.nearest), request)
                                            : QStringLiteral("every recorded request has been answered");
    return result;
}

QList<int> RequestMatcher::unused() const
{
    QList<int> list;
    for (int i = m_next; i < m_used.size(); ++i) {
        if (!m_used.at(i))
            list << i;
    }
    return list;
}

QString RequestMatcher::difference(const CassetteExchange &recorded, const CassetteExchange &sent) const
{
    if (recorded.method != sent.method)
        return QStringLiteral("method: recorded %1, sent %2").arg(recorded.method, sent.method);
    if (recorded.path != sent.path) {
        const QByteArray before = recorded.path.toUtf8();
        const QByteArray after = sent.path.toUtf8();
        return QStringLiteral("path, ") + TextDifference::describe(before, after, TextDifference::firstDifference(before, after));
    }
    const QByteArray queryBefore = recorded.query.toUtf8();
    const QByteArray queryAfter = sent.query.toUtf8();
    const qsizetype queryAt = TextDifference::firstDifference(queryBefore, queryAfter);
    if (queryAt >= 0)
        return QStringLiteral("query, ") + TextDifference::describe(queryBefore, queryAfter, queryAt);
    const QString headers = headerDifference(recorded, sent);
    if (!headers.isEmpty())
        return headers;
    return bodyDifference(recorded.requestBody, sent.requestBody);
}

QString RequestMatcher::headerDifference(const CassetteExchange &recorded, const CassetteExchange &sent) const
{
    for (const auto &[name, value] : recorded.requestHeaders) {
        if (isVolatileHeader(name))
            continue;
        const std::optional<QString> now = CassetteExchange::header(sent.requestHeaders, name);
        if (!now)
            return QStringLiteral("header %1 missing (recorded «%2»)").arg(name, value);
        const QByteArray before = value.toUtf8();
        const QByteArray after = now->toUtf8();
        const qsizetype at = TextDifference::firstDifference(before, after);
        if (at >= 0)
            return QStringLiteral("header %1, ").arg(name) + TextDifference::describe(before, after, at);
    }
    for (const auto &[name, value] : sent.requestHeaders) {
        if (!isVolatileHeader(name) && !isTransportHeader(name) && !CassetteExchange::header(recorded.requestHeaders, name))
            return QStringLiteral("header %1 sent, not recorded («%2»)").arg(name, value);
    }
    return {};
}

QString RequestMatcher::bodyDifference(const QByteArray &recorded, const QByteArray &sent) const
{
    if (recorded == sent)
        return {};
    const QByteArray before = m_cassette.volatileFields.isEmpty() ? recorded : normalised(recorded, m_volatileFields);
    const QByteArray after = m_cassette.volatileFields.isEmpty() ? sent : normalised(sent, m_volatileFields);
    const qsizetype at = TextDifference::firstDifference(before, after);
    return at < 0 ? QString() : QStringLiteral("body, ") + TextDifference::describe(before, after, at);
}

bool RequestMatcher::isVolatileHeader(const QString &name) const
{
    return m_cassette.volatileHeaders.contains(name, Qt::CaseInsensitive);
}

} // namespace tessaro::contracts
