#include "jsontext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace till {

QString JsonText::of(const QJsonValue &value, const QString &null, const QString &undefined)
{
    switch (value.type()) {
    case QJsonValue::Object:
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    case QJsonValue::Array:
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
    case QJsonValue::String:
        return QLatin1Char('"') + value.toString() + QLatin1Char('"');
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 15);
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Null:
        return null;
    case QJsonValue::Undefined:
        break;
    }
    return undefined;
}

} // namespace till
