#include "democommandline.h"

#include "commandline.h"
#include "demorunner.h"

#include <QCommandLineParser>

namespace till {

ExitCode DemoCommandLine::exec(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption plugins = CommandLine::pluginsOption();
    const QCommandLineOption keep(QStringLiteral("keep"), QStringLiteral("Keep the tills in DIR, one folder per scenario."), QStringLiteral("DIR"));
    const QCommandLineOption verbose = CommandLine::verboseOption();
    const QCommandLineOption record(QStringLiteral("record"),
                                    QStringLiteral("Keep each scenario's exchanges with the emulator in DIR/<scenario>.json, a cassette "
                                                   "(docs/contracts.md)."),
                                    QStringLiteral("DIR"));
    parser.addOptions({plugins, keep, verbose, record});
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Plays the bundled scenarios, each on a new till against the Tessaro service emulator,\n"
                                            "which runs in this process on a free loopback port."));
    if (parsed)
        return *parsed;
    CommandLine::quietenLogs(parser.isSet(verbose));
    DemoRunner demo(&CommandLine::out());
    demo.setCassetteFolder(parser.value(record));
    return demo.run(CommandLine::pluginFolder(parser, plugins), parser.value(keep));
}

} // namespace till
