#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace till {

/// The plug-in's own half of an installation check, run through the entry
/// point tessaro::selfcheck::EntryPoint of the plug-in's library file, which a
/// host never calls. The till links none of the plug-in's code: it finds the
/// function by name in the file QPluginLoader loaded, hands it the options as
/// JSON text and takes its JSON report back.
///
/// The report holds the plug-in's settings as it reads them, its mapping
/// tables and currency lists, and the outcome of a token request and of one
/// read-only request through the plug-in's client; never a secret.
class PluginSelfCheck
{
public:
    /// Runs the plug-in's checks in \a libraryFile with \a options ("token",
    /// "request", "boundSeconds"). Nothing when the library has no such entry
    /// or answers no JSON object; \a error then says why.
    static std::optional<QJsonObject> run(const QString &libraryFile, const QJsonObject &options, QString *error);
};

} // namespace till
