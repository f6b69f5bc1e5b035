#include "versioncommandline.h"

#include "commandline.h"
#include "pluginhost.h"

#include <tessaroversion.h>

#include <QCommandLineParser>
#include <QFileInfo>
#include <QTextStream>

namespace till {

ExitCode VersionCommandLine::exec(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption plugins = CommandLine::pluginsOption();
    parser.addOption(plugins);
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Prints the till's version and the plug-in's, read from its library file without loading it."));
    if (parsed)
        return *parsed;
    CommandLine::out() << QStringLiteral("tessaro-till " TESSARO_VERSION) << Qt::endl;
    const QString folder = CommandLine::pluginFolder(parser, plugins);
    const QString file = PluginHost::libraryFile(folder);
    if (!QFileInfo::exists(file)) {
        CommandLine::out() << QStringLiteral("plug-in: no %1 in %2").arg(PluginHost::libraryName(), folder) << Qt::endl;
        return ExitCode::Passed;
    }
    const QString version = PluginHost::versionOf(file);
    CommandLine::out() << QStringLiteral("plug-in %1: %2")
                              .arg(file, version.isEmpty() ? QStringLiteral("no version mark in it") : QStringLiteral("TessaroBack ") + version)
                       << Qt::endl;
    return ExitCode::Passed;
}

} // namespace till
