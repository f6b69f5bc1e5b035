#include "jsonpath.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>

namespace till::detail {

namespace {

QString kindOf(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("a boolean");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a string");
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    case QJsonValue::Undefined:
        break;
    }
    return QStringLiteral("nothing");
}

/// Line and column (from 1, in characters) of a byte offset into UTF-8 text.
QPair<int, int> lineAndColumn(const QByteArray &text, qsizetype offset)
{
    offset = qBound<qsizetype>(0, offset, text.size());
    const QByteArray before = text.left(offset);
    const int line = int(before.count('\n')) + 1;
    const QByteArray lastLine = before.mid(before.lastIndexOf('\n') + 1);
    return {line, int(QString::fromUtf8(lastLine).size()) + 1};
}

} // namespace

[[noreturn]] void fail(const QString &path, const QString &message)
{
    throw Failure{path, message};
}

QString child(const QString &path, const QString &key)
{
    return path.isEmpty() ? key : path + QLatin1Char('.') + key;
}

QString element(const QString &path, qsizetype index)
{
    return path + QStringLiteral("[%1]").arg(index);
}

[[noreturn]] void wrongKind(const QString &path, const QString &expected, const QJsonValue &found)
{
    fail(path, QStringLiteral("expected %1, found %2").arg(expected, kindOf(found)));
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

/// Readers of one JSON value each; \a path names the value in messages.
QJsonObject objectAt(const QJsonValue &value, const QString &path)
{
    if (!value.isObject())
        wrongKind(path, QStringLiteral("an object"), value);
    return value.toObject();
}

QJsonArray arrayAt(const QJsonValue &value, const QString &path)
{
    if (!value.isArray())
        wrongKind(path, QStringLiteral("an array"), value);
    return value.toArray();
}

QString stringAt(const QJsonValue &value, const QString &path)
{
    if (!value.isString())
        wrongKind(path, QStringLiteral("a string"), value);
    return value.toString();
}

double numberAt(const QJsonValue &value, const QString &path)
{
    if (!value.isDouble())
        wrongKind(path, QStringLiteral("a number"), value);
    return value.toDouble();
}

int integerAt(const QJsonValue &value, const QString &path)
{
    const double number = numberAt(value, path);
    if (std::floor(number) != number || std::fabs(number) > 2147483647.0)
        fail(path, QStringLiteral("expected an integer, found %1").arg(number));
    return int(number);
}

bool boolAt(const QJsonValue &value, const QString &path)
{
    if (!value.isBool())
        wrongKind(path, QStringLiteral("a boolean"), value);
    return value.toBool();
}

/// A text the cashier types: a string, or a number written as the cashier would type it.
QString textAt(const QJsonValue &value, const QString &path)
{
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', 15);
    if (!value.isString())
        wrongKind(path, QStringLiteral("a string or a number"), value);
    return value.toString();
}

QList<int> integersAt(const QJsonValue &value, const QString &path)
{
    QList<int> result;
    const QJsonArray array = arrayAt(value, path);
    for (qsizetype i = 0; i < array.size(); ++i)
        result << integerAt(array.at(i), element(path, i));
    return result;
}

QList<double> numbersAt(const QJsonValue &value, const QString &path)
{
    QList<double> result;
    const QJsonArray array = arrayAt(value, path);
    for (qsizetype i = 0; i < array.size(); ++i)
        result << numberAt(array.at(i), element(path, i));
    return result;
}

/// Refuses keys outside \a allowed, so that a misspelt key is not silently ignored.
void allowOnly(const QJsonObject &object, const QString &path, const QStringList &allowed)
{
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (!allowed.contains(it.key()))
            fail(child(path, it.key()), QStringLiteral("unknown key (expected one of: %1)").arg(allowed.join(QStringLiteral(", "))));
    }
}

QJsonValue required(const QJsonObject &object, const QString &path, const QString &key)
{
    if (!object.contains(key))
        fail(path, QStringLiteral("missing key %1").arg(quoted(key)));
    return object.value(key);
}

std::optional<QJsonObject> objectOf(const QByteArray &json, const QString &what, InputError *error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        const auto [line, column] = lineAndColumn(json, parseError.offset);
        error->line = line;
        error->column = column;
        error->message = QStringLiteral("JSON syntax error: %1").arg(parseError.errorString());
        return std::nullopt;
    }
    if (!document.isObject()) {
        error->message = QStringLiteral("%1 is a JSON object").arg(what);
        return std::nullopt;
    }
    return document.object();
}

} // namespace till::detail
