#include "emulator/fault.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <array>
#include <utility>

namespace tessaro::emulator {

namespace {

constexpr std::array<std::pair<Fault::Kind, const char *>, 12> kindNames{{
    {Fault::Kind::Hang, "hang"},
    {Fault::Kind::CloseAfterApply, "close-after-apply"},
    {Fault::Kind::CloseBeforeApply, "close-before-apply"},
    {Fault::Kind::Reset, "reset"},
    {Fault::Kind::Delay, "delay"},
    {Fault::Kind::HttpStatus, "http-status"},
    {Fault::Kind::TruncatedJson, "truncated-json"},
    {Fault::Kind::MalformedJson, "malformed-json"},
    {Fault::Kind::EmptyBody, "empty-body"},
    {Fault::Kind::InvalidToken, "invalid-token"},
    {Fault::Kind::ShiftClosed, "shift-closed"},
    {Fault::Kind::Status3001, "status-3001"},
}};

} // namespace

Fault::Fault(Kind kind, const QString &path, int count)
    : kind(kind)
    , path(path)
    , count(count)
{
}

std::optional<Fault> Fault::fromJson(const QJsonObject &object, QString *error)
{
    const auto kind = kindFromName(object.value(QStringLiteral("kind")).toString());
    if (!kind) {
        *error = QStringLiteral("unknown fault kind '%1'").arg(object.value(QStringLiteral("kind")).toString());
        return std::nullopt;
    }
    Fault fault;
    fault.kind = *kind;
    fault.path = object.value(QStringLiteral("path")).toString();
    fault.pathPrefix = object.value(QStringLiteral("pathPrefix")).toString();
    fault.pathPattern = object.value(QStringLiteral("pathPattern")).toString();
    if (fault.path.isEmpty() && fault.pathPrefix.isEmpty() && fault.pathPattern.isEmpty()) {
        *error = QStringLiteral("a fault needs \"path\", \"pathPrefix\" or \"pathPattern\"");
        return std::nullopt;
    }
    if (!fault.pathPattern.isEmpty() && !QRegularExpression(fault.pathPattern).isValid()) {
        *error = QStringLiteral("invalid pathPattern '%1'").arg(fault.pathPattern);
        return std::nullopt;
    }
    fault.method = object.value(QStringLiteral("method")).toString().toUpper().toLatin1();
    fault.count = object.value(QStringLiteral("count")).toInt(1);
    fault.skip = object.value(QStringLiteral("skip")).toInt(0);
    fault.delayMs = object.value(QStringLiteral("delayMs")).toInt(0);
    fault.status = object.value(QStringLiteral("status")).toInt(500);
    fault.releaseAfterMs = object.value(QStringLiteral("releaseAfterMs")).toInt(0);
    const QJsonValue body = object.value(QStringLiteral("body"));
    if (body.isString())
        fault.body = body.toString().toUtf8();
    else if (body.isObject())
        fault.body = QJsonDocument(body.toObject()).toJson(QJsonDocument::Compact);
    else if (body.isArray())
        fault.body = QJsonDocument(body.toArray()).toJson(QJsonDocument::Compact);
    return fault;
}

QJsonObject Fault::toJson() const
{
    QJsonObject object{
        {QStringLiteral("kind"), kindName(kind)},
        {QStringLiteral("count"), count},
        {QStringLiteral("skip"), skip},
    };
    const auto insertIfSet = [&object](const QString &key, const QString &value) {
        if (!value.isEmpty())
            object.insert(key, value);
    };
    insertIfSet(QStringLiteral("path"), path);
    insertIfSet(QStringLiteral("pathPrefix"), pathPrefix);
    insertIfSet(QStringLiteral("pathPattern"), pathPattern);
    insertIfSet(QStringLiteral("method"), QString::fromLatin1(method));
    switch (kind) {
    case Kind::Delay:
        object.insert(QStringLiteral("delayMs"), delayMs);
        break;
    case Kind::HttpStatus:
        object.insert(QStringLiteral("status"), status);
        object.insert(QStringLiteral("body"), QString::fromUtf8(body));
        break;
    case Kind::Hang:
        object.insert(QStringLiteral("releaseAfterMs"), releaseAfterMs);
        break;
    default:
        break;
    }
    return object;
}

QString Fault::kindName(Kind kind)
{
    for (const auto &[value, name] : kindNames) {
        if (value == kind)
            return QString::fromLatin1(name);
    }
    return {};
}

std::optional<Fault::Kind> Fault::kindFromName(const QString &name)
{
    for (const auto &[value, text] : kindNames) {
        if (name == QLatin1String(text))
            return value;
    }
    return std::nullopt;
}

bool Fault::matches(const QByteArray &requestMethod, const QString &requestPath) const
{
    if (!method.isEmpty() && method != requestMethod)
        return false;
    if (!path.isEmpty())
        return requestPath == path;
    if (!pathPrefix.isEmpty())
        return requestPath.startsWith(pathPrefix);
    return QRegularExpression(pathPattern).match(requestPath).hasMatch();
}

} // namespace tessaro::emulator
