#include "checkcommandline.h"

#include "commandline.h"
#include "tillcheck.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QTextStream>

namespace till {

ExitCode CheckCommandLine::exec(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = CommandLine::dataOption();
    const QCommandLineOption config(QStringLiteral("config"), QStringLiteral("Check this host configuration file instead of a till's data folder."),
                                    QStringLiteral("FILE"));
    const QCommandLineOption dictionaries(QStringLiteral("dictionaries"),
                                          QStringLiteral("With --config: the till's currencies, in the form of a data folder's dictionaries.json."),
                                          QStringLiteral("FILE"));
    const QCommandLineOption plugins = CommandLine::pluginsOption();
    const QCommandLineOption tolerance(QStringLiteral("clock-tolerance"),
                                       QStringLiteral("How many seconds the gateway lets a request's time lie from its own (default: 900)."),
                                       QStringLiteral("SECONDS"), QStringLiteral("900"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Write the verdict as JSON, for monitoring systems."));
    parser.addOptions({data, config, dictionaries, plugins, tolerance, json});
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Checks a till before its first return: the plug-in's configuration as the plug-in reads it,\n"
                                            "the way to the service step by step (name resolution, TCP, TLS and certificate, token,\n"
                                            "one authorised read-only request, the gateway's verdict on the signature) and the clock.\n"
                                            "Changes nothing at the till or the service; shows no secret.\n\n"
                                            "Exit code: 0 all ok, 1 warnings, 2 failures."));
    // A wrong command line says BadInput, as a failed check does.
    if (parsed)
        return *parsed;
    bool toleranceRead = false;
    TillCheck::Options options;
    options.clockToleranceSeconds = parser.value(tolerance).toInt(&toleranceRead);
    if (!parser.positionalArguments().isEmpty() || (parser.isSet(data) && parser.isSet(config)) || !toleranceRead
        || (parser.isSet(dictionaries) && !parser.isSet(config))) {
        return CommandLine::usage(
            QStringLiteral("check takes --data DIR or --config FILE (with --dictionaries FILE), and a whole number of seconds for --clock-tolerance"));
    }
    options.dataFolder = parser.isSet(config) ? QString() : parser.value(data);
    options.configFile = parser.value(config);
    options.dictionariesFile = parser.value(dictionaries);
    options.pluginFolder = CommandLine::pluginFolder(parser, plugins);

    // The verdict is the only output: the plug-in's log would name its token.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const CheckReport report = TillCheck(options).run();
    if (parser.isSet(json))
        CommandLine::out() << QString::fromUtf8(QJsonDocument(report.json()).toJson(QJsonDocument::Indented));
    else
        CommandLine::out() << report.text();
    CommandLine::out().flush();
    return report.exitCode();
}

} // namespace till
