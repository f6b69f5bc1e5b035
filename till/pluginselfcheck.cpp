#include "pluginselfcheck.h"

#include <QJsonDocument>
#include <QLibrary>

namespace till {

namespace {

// The entry point's signature, as the plug-in module exports it.
using Deliver = void (*)(const char *report, void *context);
using Entry = void (*)(const char *options, Deliver deliver, void *context);

void keepReport(const char *report, void *context)
{
    *static_cast<QByteArray *>(context) = QByteArray(report);
}

} // namespace

const char *PluginSelfCheck::entryName()
{
    return "tessaro_check_installation";
}

std::optional<QJsonObject> PluginSelfCheck::run(const QString &libraryFile, const QJsonObject &options, QString *error)
{
    // The library is already loaded by the plug-in loader: this finds the same
    // one, and leaves it loaded.
    QLibrary library(libraryFile);
    const auto entry = reinterpret_cast<Entry>(library.resolve(entryName()));
    if (!entry) {
        if (error)
            *error = QStringLiteral("%1 has no installation check (%2): %3").arg(libraryFile, QLatin1String(entryName()), library.errorString());
        return std::nullopt;
    }
    QByteArray report;
    entry(QJsonDocument(options).toJson(QJsonDocument::Compact).constData(), &keepReport, &report);
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(report, &parseError);
    if (!document.isObject()) {
        if (error)
            *error = QStringLiteral("the plug-in's check answered no JSON object: %1").arg(parseError.errorString());
        return std::nullopt;
    }
    const QJsonObject object = document.object();
    if (object.contains(QStringLiteral("error"))) {
        if (error)
            *error = QStringLiteral("the plug-in's check stopped: %1").arg(object.value(QStringLiteral("error")).toString());
        return std::nullopt;
    }
    return object;
}

} // namespace till
