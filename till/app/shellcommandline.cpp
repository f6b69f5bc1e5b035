#include "shellcommandline.h"

#include "cassetterecorder.h"
#include "commandline.h"
#include "shellsession.h"
#include "tilldatafolder.h"

#include <QCommandLineParser>
#include <QTextStream>

namespace till {

ExitCode ShellCommandLine::exec(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = CommandLine::dataOption();
    const QCommandLineOption plugins = CommandLine::pluginsOption();
    const QCommandLineOption verbose = CommandLine::verboseOption();
    const QCommandLineOption record = CommandLine::recordOption();
    parser.addOptions({data, plugins, verbose, record});
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Works the till at the terminal: type commands, answer the plug-in's dialogs.\n\n")
                                 + ShellSession::help());
    if (parsed)
        return *parsed;
    CommandLine::quietenLogs(parser.isSet(verbose));
    QTextStream in(stdin);
    ShellSession session(TillDataFolder(parser.value(data)), &in, &CommandLine::out());
    CassetteRecorder recorder;
    if (parser.isSet(record))
        session.setRecorder(&recorder);
    const ExitCode code = session.run(CommandLine::pluginFolder(parser, plugins));
    if (parser.isSet(record) && !CommandLine::writeCassette(recorder, parser.value(record)))
        return ExitCode::CannotRun;
    return code;
}

} // namespace till
