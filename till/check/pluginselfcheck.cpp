#include "pluginselfcheck.h"

#include <plugin/selfcheck/selfcheckprotocol.h>

#include <QJsonDocument>
#include <QLibrary>

namespace till {

namespace selfcheck = tessaro::selfcheck;

namespace {

void keepReport(const char *report, void *context)
{
    *static_cast<QByteArray *>(context) = QByteArray(report);
}

} // namespace

std::optional<QJsonObject> PluginSelfCheck::run(const QString &libraryFile, const QJsonObject &options, QString *error)
{
    // The library is already loaded by the plug-in loader: this finds the same
    // one, and leaves it loaded.
    QLibrary library(libraryFile);
    const auto entry = reinterpret_cast<selfcheck::Entry>(library.resolve(selfcheck::EntryPoint));
    if (!entry) {
        if (error)
            *error = QStringLiteral("%1 has no installation check (%2): %3").arg(libraryFile, QLatin1String(selfcheck::EntryPoint), library.errorString());
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
    if (object.contains(selfcheck::report::Error)) {
        if (error)
            *error = QStringLiteral("the plug-in's check stopped: %1").arg(object.value(selfcheck::report::Error).toString());
        return std::nullopt;
    }
    return object;
}

} // namespace till
