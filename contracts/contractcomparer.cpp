#include "contracts/contractcomparer.h"

#include "contracts/placeholdermap.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace tessaro::contracts {

namespace {

QString typeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null: return QStringLiteral("null");
    case QJsonValue::Bool: return QStringLiteral("boolean");
    case QJsonValue::Double: return QStringLiteral("number");
    case QJsonValue::String: return QStringLiteral("string");
    case QJsonValue::Array: return QStringLiteral("array");
    case QJsonValue::Object: return QStringLiteral("object");
    case QJsonValue::Undefined: break;
    }
    return QStringLiteral("nothing");
}

QString shown(const QJsonValue &value)
{
    if (value.isString())
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    return QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact).chopped(1).mid(1));
}

QString child(const QString &path, const QString &key)
{
    return path.isEmpty() ? key : path + QLatin1Char('.') + key;
}

/// The body as a JSON value; undefined when it is no JSON text.
QJsonValue parsed(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (document.isObject())
        return document.object();
    if (document.isArray())
        return document.array();
    return QJsonValue::Undefined;
}

// "application/json" of "Application/JSON; charset=utf-8": the parameters
// describe the bytes, not the contract.
QString mediaType(const QString &contentType)
{
    return contentType.section(QLatin1Char(';'), 0, 0).trimmed().toLower();
}

} // namespace

ContractComparer::ContractComparer(const DriftRules &rules)
    : m_rules(rules)
{
}

QList<ContractComparer::Difference> ContractComparer::compare(int recordedStatus, const QByteArray &recordedBody, int status,
                                                              const QByteArray &body) const
{
    QList<Difference> differences;
    if (recordedStatus != status)
        differences << Difference{QStringLiteral("status"), QStringLiteral("%1 → %2").arg(recordedStatus).arg(status)};
    const QJsonValue recorded = parsed(recordedBody);
    const QJsonValue value = parsed(body);
    if (recorded.isUndefined() || value.isUndefined()) {
        // Not JSON on one side at least: only the bytes can tell.
        if (recorded.isUndefined() != value.isUndefined())
            differences << Difference{QStringLiteral("body"), QStringLiteral("%1 → %2").arg(recorded.isUndefined() ? QStringLiteral("not JSON") : QStringLiteral("JSON"),
                                                                                           value.isUndefined() ? QStringLiteral("not JSON") : QStringLiteral("JSON"))};
        else if (recordedBody.trimmed() != body.trimmed())
            differences << Difference{QStringLiteral("body"), QStringLiteral("text differs")};
        return differences;
    }
    compareValues(QString(), recorded, value, &differences);
    return differences;
}

QList<ContractComparer::Difference> ContractComparer::compareHeaders(const CassetteExchange::Headers &recorded,
                                                                     const CassetteExchange::Headers &headers) const
{
    const QString name = QStringLiteral("Content-Type");
    const std::optional<QString> before = CassetteExchange::header(recorded, name);
    if (!before)
        return {};
    const QString after = CassetteExchange::header(headers, name).value_or(QString());
    if (mediaType(*before) == mediaType(after))
        return {};
    return {{QStringLiteral("header content-type"),
             QStringLiteral("%1 → %2").arg(mediaType(*before), after.isEmpty() ? QStringLiteral("none") : mediaType(after))}};
}

void ContractComparer::compareValues(const QString &path, const QJsonValue &recorded, const QJsonValue &value,
                                     QList<Difference> *differences) const
{
    if (!path.isEmpty() && m_rules.ignored(path))
        return;
    const QString where = path.isEmpty() ? QStringLiteral("body") : path;
    if (recorded.type() != value.type()) {
        differences->append({where, QStringLiteral("type %1 → %2").arg(typeName(recorded), typeName(value))});
        return;
    }
    if (recorded.isObject()) {
        const QJsonObject before = recorded.toObject();
        const QJsonObject after = value.toObject();
        for (auto it = before.begin(); it != before.end(); ++it) {
            const QString key = child(path, it.key());
            if (!after.contains(it.key())) {
                if (!m_rules.ignored(key))
                    differences->append({key, QStringLiteral("missing")});
                continue;
            }
            compareValues(key, it.value(), after.value(it.key()), differences);
        }
        for (auto it = after.begin(); it != after.end(); ++it) {
            const QString key = child(path, it.key());
            if (!before.contains(it.key()) && !m_rules.ignored(key))
                differences->append({key, QStringLiteral("new")});
        }
        return;
    }
    if (recorded.isArray()) {
        const QJsonArray before = recorded.toArray();
        const QJsonArray after = value.toArray();
        if (before.isEmpty() != after.isEmpty()) {
            differences->append({where, before.isEmpty() ? QStringLiteral("empty → not empty") : QStringLiteral("not empty → empty")});
            return;
        }
        if (before.size() != after.size() && !m_rules.varies(path))
            differences->append({where, QStringLiteral("%1 elements → %2").arg(before.size()).arg(after.size())});
        for (qsizetype i = 0; i < qMin(before.size(), after.size()); ++i)
            compareValues(QStringLiteral("%1[%2]").arg(path).arg(i), before.at(i), after.at(i), differences);
        return;
    }
    const bool secret = recorded.isString() && PlaceholderMap::holdsPlaceholder(recorded.toString());
    if (recorded != value && !secret && !m_rules.varies(path))
        differences->append({where, QStringLiteral("value %1 → %2").arg(shown(recorded), shown(value))});
}

} // namespace tessaro::contracts
