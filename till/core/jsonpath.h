#pragma once

// Readers of one JSON value each, which name the place of a problem by its
// JSON path ("actions[3].type"), and the reading of a whole JSON text into a
// value with them. The scenario parser and the data folder's dictionaries.json
// share them.

#include "inputerror.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace till::detail {

/// The first problem found; ends the reading.
struct Failure
{
    QString path;
    QString message;
};

[[noreturn]] void fail(const QString &path, const QString &message);
[[noreturn]] void wrongKind(const QString &path, const QString &expected, const QJsonValue &found);

QString child(const QString &path, const QString &key);
QString element(const QString &path, qsizetype index);
QString quoted(const QString &text);

QJsonObject objectAt(const QJsonValue &value, const QString &path);
QJsonArray arrayAt(const QJsonValue &value, const QString &path);
QString stringAt(const QJsonValue &value, const QString &path);
double numberAt(const QJsonValue &value, const QString &path);
int integerAt(const QJsonValue &value, const QString &path);
bool boolAt(const QJsonValue &value, const QString &path);
QString textAt(const QJsonValue &value, const QString &path);
QList<int> integersAt(const QJsonValue &value, const QString &path);
QList<double> numbersAt(const QJsonValue &value, const QString &path);

void allowOnly(const QJsonObject &object, const QString &path, const QStringList &allowed);
QJsonValue required(const QJsonObject &object, const QString &path, const QString &key);

/// The JSON text \a json as an object; nothing, and \a error filled in (with
/// the line and column of a syntax error), when it is not one. \a what names
/// the object in the message ("a scenario").
std::optional<QJsonObject> objectOf(const QByteArray &json, const QString &what, InputError *error);

/// \a reader applied to \a object; nothing, and \a error's path and message
/// filled in, at the first problem it finds.
template <typename Value, typename Reader>
std::optional<Value> readObject(const QJsonObject &object, Reader reader, InputError *error)
{
    try {
        return reader(object);
    } catch (const Failure &failure) {
        error->path = failure.path;
        error->message = failure.message;
    }
    return std::nullopt;
}

/// Reads the JSON text \a json with \a reader; \a error says what is wrong
/// and where when nothing is read. Its file name is kept.
template <typename Value, typename Reader>
std::optional<Value> readJson(const QByteArray &json, const QString &what, Reader reader, InputError *error)
{
    *error = InputError{error->file, QString(), 0, 0, QString()};
    const std::optional<QJsonObject> object = objectOf(json, what, error);
    if (!object)
        return std::nullopt;
    return readObject<Value>(*object, reader, error);
}

} // namespace till::detail
