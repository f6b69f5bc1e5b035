#include "runcommandline.h"

#include "cassetterecorder.h"
#include "cassettereplay.h"
#include "commandline.h"
#include "reportwriter.h"
#include "scenarioparser.h"
#include "scenariorunner.h"
#include "tilldatafolder.h"

#include <QCommandLineParser>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <contracts/cassettefile.h>

#include <cstdio>
#include <unistd.h>
#include <vector>

namespace till {

namespace {

/// Replaces the process with a fresh one of the same command, which continues
/// the run from its saved progress.
void replaceProcess(const QStringList &arguments)
{
    std::vector<QByteArray> storage;
    for (const QString &argument : arguments) {
        if (argument != QLatin1String("--again"))
            storage.push_back(argument.toLocal8Bit());
    }
    std::vector<char *> argv;
    argv.reserve(storage.size() + 1);
    for (QByteArray &argument : storage)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    CommandLine::out().flush();
    CommandLine::err().flush();
    std::fflush(nullptr);
    ::execv("/proc/self/exe", argv.data());
}

} // namespace

ExitCode RunCommandLine::exec(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = CommandLine::dataOption();
    const QCommandLineOption plugins = CommandLine::pluginsOption();
    const QCommandLineOption report(QStringLiteral("report"), QStringLiteral("Also write the report as JSON to FILE."), QStringLiteral("FILE"));
    const QCommandLineOption again(QStringLiteral("again"), QStringLiteral("Start the scenario over instead of continuing an unfinished run."));
    const QCommandLineOption inProcess(QStringLiteral("restart-in-process"),
                                       QStringLiteral("Restart the till within the process instead of replacing the process."));
    const QCommandLineOption strict(QStringLiteral("strict-host"),
                                    QStringLiteral("Save documents only where a host must (opening, its own changes, closing), not after every action."));
    // The simulation's killed runs: the till dies right after a hook of action type TYPE lets the action go on.
    QCommandLineOption killAfterHook(QStringLiteral("kill-after-hook"), QStringLiteral("Kill the till after a hook of TYPE."), QStringLiteral("TYPE"));
    killAfterHook.setFlags(QCommandLineOption::HiddenFromHelp);
    const QCommandLineOption verbose = CommandLine::verboseOption();
    const QCommandLineOption record = CommandLine::recordOption();
    const QCommandLineOption replay(QStringLiteral("replay"),
                                    QStringLiteral("Play the scenario offline: the service's answers come from the cassette FILE, on a new till in "
                                                   "a temporary folder unless --data is given. A request that was not recorded, or a "
                                                   "recorded one not sent, fails the run."),
                                    QStringLiteral("FILE"));
    parser.addOptions({data, plugins, report, again, inProcess, strict, killAfterHook, verbose, record, replay});
    parser.addPositionalArgument(QStringLiteral("SCENARIO"), QStringLiteral("The scenario file (docs/scenarios.md)."));
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Plays a scenario on the till and reports each action's hooks, dialogs and requests.\n"
                                            "A run stopped at any point continues from its first unfinished action when run again."));
    if (parsed)
        return *parsed;
    if (parser.positionalArguments().size() != 1)
        return CommandLine::usage(QStringLiteral("run takes one scenario file"));
    CommandLine::quietenLogs(parser.isSet(verbose));

    // The scenario is read whole before anything touches the till's folder.
    const QString file = parser.positionalArguments().first();
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        CommandLine::err() << QStringLiteral("tessaro-till: %1: cannot read the file: %2").arg(file, source.errorString()) << Qt::endl;
        return ExitCode::BadInput;
    }
    const QByteArray content = source.readAll();
    ScenarioParser scenarioParser(file);
    std::optional<Scenario> scenario = scenarioParser.parse(content);
    if (!scenario) {
        CommandLine::err() << QStringLiteral("tessaro-till: ") << scenarioParser.error().toString() << Qt::endl;
        return ExitCode::BadInput;
    }

    // A cassette holds one whole run in one process: it starts over and restarts within the process.
    const bool cassette = parser.isSet(record) || parser.isSet(replay);
    QString dataPath = parser.value(data);
    QTemporaryDir replayFolder;
    CassetteReplay replayer;
    if (parser.isSet(replay)) {
        QString error;
        const auto recorded = tessaro::contracts::CassetteFile::read(parser.value(replay), &error);
        if (!recorded) {
            CommandLine::err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
            return ExitCode::BadInput;
        }
        if (!replayer.start(*recorded, &error)
            || (!parser.isSet(data) && !TillDataFolder(dataPath = replayFolder.path()).create(replayer.serviceUrl(), replayer.tokenUrl(), &error))) {
            CommandLine::err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
            return ExitCode::CannotRun;
        }
        scenario->till.config.insert(replayer.config());
    }
    CassetteRecorder recorder;

    const TillDataFolder folder(dataPath);
    ScenarioRunner::Options options;
    options.pluginFolder = CommandLine::pluginFolder(parser, plugins);
    options.again = parser.isSet(again) || cassette;
    options.strictHost = parser.isSet(strict);
    if (parser.isSet(killAfterHook))
        options.killAfterHook = control::EActionType(parser.value(killAfterHook).toInt());
    if (parser.isSet(record))
        options.recorder = &recorder;
    if (!parser.isSet(inProcess) && !cassette)
        options.restartProcess = [arguments] { replaceProcess(arguments); };
    options.onRecord = [](const ActionRecord &record, int count) { CommandLine::out() << ReportWriter::progressLine(record, count) << Qt::endl; };

    ScenarioRunner runner(folder, *scenario, content, file);
    Report result;
    QString error;
    if (!runner.run(options, &result, &error)) {
        CommandLine::err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    result.failures << replayer.failures();
    if (parser.isSet(record) && !CommandLine::writeCassette(recorder, parser.value(record)))
        return ExitCode::CannotRun;
    CommandLine::out() << Qt::endl << ReportWriter::text(result);
    if (parser.isSet(report) && !ReportWriter::writeJson(result, parser.value(report), &error)) {
        CommandLine::err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    return result.passed() ? ExitCode::Passed : ExitCode::Failed;
}

} // namespace till
