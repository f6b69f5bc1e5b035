#include "commandline.h"

#include "cassetterecorder.h"
#include "pluginhost.h"
#include "tillapplication.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QTextStream>

namespace till {

QTextStream &CommandLine::out()
{
    static QTextStream stream(stdout);
    return stream;
}

QTextStream &CommandLine::err()
{
    static QTextStream stream(stderr);
    return stream;
}

std::optional<ExitCode> CommandLine::parse(QCommandLineParser *parser, const QStringList &arguments, const QString &description)
{
    // The subcommand's own parser sees "tessaro-till COMMAND" as its program name.
    QStringList own = arguments.mid(1);
    own[0] = arguments.first() + QLatin1Char(' ') + own.first();
    parser->setApplicationDescription(description);
    const QCommandLineOption help = parser->addHelpOption();
    if (!parser->parse(own)) {
        err() << QStringLiteral("tessaro-till: ") << parser->errorText() << Qt::endl;
        return ExitCode::BadInput;
    }
    if (parser->isSet(help)) {
        out() << parser->helpText();
        return ExitCode::Passed;
    }
    return std::nullopt;
}

ExitCode CommandLine::usage(const QString &problem)
{
    if (!problem.isEmpty())
        err() << QStringLiteral("tessaro-till: ") << problem << Qt::endl;
    err() << QStringLiteral("usage: tessaro-till %1 [options]; tessaro-till COMMAND --help for more")
                 .arg(TillApplication::commandNames().join(QLatin1Char('|')))
          << Qt::endl;
    return ExitCode::BadInput;
}

void CommandLine::quietenLogs(bool verbose)
{
    if (!verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
}

QCommandLineOption CommandLine::dataOption()
{
    return QCommandLineOption(QStringLiteral("data"), QStringLiteral("The till's data folder (default: till-data)."),
                              QStringLiteral("DIR"), QStringLiteral("till-data"));
}

QCommandLineOption CommandLine::pluginsOption()
{
    return QCommandLineOption(QStringLiteral("plugins"),
                              QStringLiteral("The folder holding libtessaroback.so (default: %1).").arg(defaultPluginFolder()),
                              QStringLiteral("DIR"));
}

QCommandLineOption CommandLine::recordOption()
{
    return QCommandLineOption(QStringLiteral("record"),
                              QStringLiteral("Keep every exchange with the service in the cassette FILE (docs/contracts.md); "
                                             "secrets become placeholders."),
                              QStringLiteral("FILE"));
}

QCommandLineOption CommandLine::verboseOption()
{
    return QCommandLineOption(QStringLiteral("verbose"), QStringLiteral("Show the plug-in's and the host's log."));
}

QString CommandLine::defaultPluginFolder()
{
    const QString fromEnvironment = qEnvironmentVariable("TESSARO_PLUGIN_DIR");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QString build = QStringLiteral(TESSARO_BUILD_PLUGIN_DIR);
    if (QFileInfo::exists(QDir(build).filePath(PluginHost::libraryName())))
        return build;
    // Installed: the tools' own copy of the plug-in, relative to the install prefix unless absolute.
    const QString installed = QStringLiteral(TESSARO_TOOLS_PLUGIN_DIR);
    if (QDir::isAbsolutePath(installed))
        return installed;
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../") + installed);
}

QString CommandLine::pluginFolder(const QCommandLineParser &parser, const QCommandLineOption &plugins)
{
    return parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder();
}

bool CommandLine::writeCassette(const CassetteRecorder &recorder, const QString &file)
{
    QString error;
    if (!recorder.write(file, &error)) {
        err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return false;
    }
    out() << QStringLiteral("Recorded %1 exchange(s) with the service in %2").arg(recorder.size()).arg(file) << Qt::endl;
    return true;
}

} // namespace till
