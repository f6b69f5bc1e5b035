#include "emulator/requiredfields.h"

#include <QJsonArray>
#include <QJsonValue>

namespace tessaro::emulator {

namespace {

QJsonValue valueAt(const QJsonObject &body, const QString &path)
{
    QJsonValue value = body;
    for (const QString &key : path.split(QLatin1Char('.'))) {
        if (!value.isObject())
            return QJsonValue::Undefined;
        value = value.toObject().value(key);
    }
    return value;
}

bool present(const QJsonValue &value)
{
    return !value.isUndefined() && !value.isNull();
}

} // namespace

QStringList RequiredFields::missing(const QJsonObject &body, const QStringList &paths)
{
    QStringList absent;
    for (const QString &path : paths) {
        if (!present(valueAt(body, path)))
            absent.append(path);
    }
    return absent;
}

QStringList RequiredFields::missingInEach(const QJsonObject &body, const QString &arrayPath,
                                          const QStringList &fields)
{
    QStringList absent;
    const QJsonArray array = valueAt(body, arrayPath).toArray();
    for (qsizetype index = 0; index < array.size(); ++index) {
        const QString prefix = QStringLiteral("%1[%2]").arg(arrayPath).arg(index);
        for (const QString &field : missing(array.at(index).toObject(), fields))
            absent.append(prefix + QLatin1Char('.') + field);
    }
    return absent;
}

} // namespace tessaro::emulator
