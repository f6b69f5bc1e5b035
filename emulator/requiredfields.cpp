#include "emulator/requiredfields.h"

#include "emulator/serviceanswers.h"

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

std::optional<Reply> RequiredFields::refusal(const QJsonObject &body, const QStringList &paths,
                                             const QString &arrayPath, const QStringList &elementFields)
{
    QStringList absent = missing(body, paths);
    if (!arrayPath.isEmpty()) {
        const QJsonValue array = valueAt(body, arrayPath);
        if (present(array) && !array.isArray())
            return ServiceAnswers::invalidDataType();
        const QJsonArray elements = array.toArray();
        for (qsizetype index = 0; index < elements.size(); ++index) {
            const QString prefix = QStringLiteral("%1[%2].").arg(arrayPath).arg(index);
            for (const QString &field : missing(elements.at(index).toObject(), elementFields))
                absent.append(prefix + field);
        }
    }
    if (absent.isEmpty())
        return std::nullopt;
    return ServiceAnswers::missedFields(absent);
}

QStringList RequiredFields::missing(const QJsonObject &body, const QStringList &paths)
{
    QStringList absent;
    for (const QString &path : paths) {
        if (!present(valueAt(body, path)))
            absent.append(path);
    }
    return absent;
}

} // namespace tessaro::emulator
