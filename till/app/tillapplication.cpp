#include "tillapplication.h"

#include "cassetterecorder.h"
#include "cassettereplay.h"
#include "contractcommand.h"
#include "demorunner.h"
#include "pluginhost.h"
#include "reportwriter.h"
#include "scenarioparser.h"
#include "scenariorunner.h"
#include "shellsession.h"
#include "simulationcommand.h"
#include "tillcheck.h"
#include "tilldatafolder.h"

#include "secrets/secretmask.h"
#include <tessaroversion.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>

#include <contracts/cassettefile.h>

#include <cstdio>
#include <unistd.h>
#include <vector>

namespace till {

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

QTextStream &err()
{
    static QTextStream stream(stderr);
    return stream;
}

QCommandLineOption dataOption()
{
    return QCommandLineOption(QStringLiteral("data"), QStringLiteral("The till's data folder (default: till-data)."),
                              QStringLiteral("DIR"), QStringLiteral("till-data"));
}

QCommandLineOption pluginsOption()
{
    return QCommandLineOption(QStringLiteral("plugins"),
                              QStringLiteral("The folder holding libtessaroback.so (default: %1).").arg(TillApplication::defaultPluginFolder()),
                              QStringLiteral("DIR"));
}

QCommandLineOption recordOption()
{
    return QCommandLineOption(QStringLiteral("record"),
                              QStringLiteral("Keep every exchange with the service in the cassette FILE (docs/contracts.md); "
                                             "secrets become placeholders."),
                              QStringLiteral("FILE"));
}

/// Writes the recorder's cassette; false after saying why.
bool writeCassette(const CassetteRecorder &recorder, const QString &file)
{
    QString error;
    if (!recorder.write(file, &error)) {
        err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return false;
    }
    out() << QStringLiteral("Recorded %1 exchange(s) with the service in %2").arg(recorder.size()).arg(file) << Qt::endl;
    return true;
}

QCommandLineOption verboseOption()
{
    return QCommandLineOption(QStringLiteral("verbose"), QStringLiteral("Show the plug-in's and the host's log."));
}

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
    out().flush();
    err().flush();
    std::fflush(nullptr);
    ::execv("/proc/self/exe", argv.data());
}

} // namespace

TillApplication::TillApplication(const QStringList &arguments)
    : m_arguments(arguments)
{
}

QString TillApplication::defaultPluginFolder()
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

void TillApplication::quietenLogs(bool verbose)
{
    if (!verbose)
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
}

ExitCode TillApplication::usage(const QString &problem) const
{
    if (!problem.isEmpty())
        err() << QStringLiteral("tessaro-till: ") << problem << Qt::endl;
    err() << QStringLiteral("usage: tessaro-till init|run|shell|demo|check|simulate|contract [options]; tessaro-till COMMAND --help for more") << Qt::endl;
    return ExitCode::BadInput;
}

std::optional<ExitCode> TillApplication::parse(QCommandLineParser *parser, const QStringList &arguments, const QString &description)
{
    parser->setApplicationDescription(description);
    const QCommandLineOption help = parser->addHelpOption();
    if (!parser->parse(arguments)) {
        err() << QStringLiteral("tessaro-till: ") << parser->errorText() << Qt::endl;
        return ExitCode::BadInput;
    }
    if (parser->isSet(help)) {
        out() << parser->helpText();
        return ExitCode::Passed;
    }
    return std::nullopt;
}

ExitCode TillApplication::exec()
{
    if (m_arguments.size() < 2)
        return usage(QString());
    const QString command = m_arguments.at(1);
    // The subcommand's own parser sees "tessaro-till COMMAND" as its program name.
    QStringList arguments = m_arguments.mid(1);
    arguments[0] = m_arguments.first() + QLatin1Char(' ') + command;
    if (command == QLatin1String("init"))
        return init(arguments);
    if (command == QLatin1String("run"))
        return run(arguments);
    if (command == QLatin1String("shell"))
        return shell(arguments);
    if (command == QLatin1String("demo"))
        return demo(arguments);
    if (command == QLatin1String("simulate"))
        return simulate(arguments);
    if (command == QLatin1String("check"))
        return check(arguments);
    if (command == QLatin1String("contract"))
        return contract(arguments);
    if (command == QLatin1String("--version"))
        return version(arguments);
    if (command == QLatin1String("--help") || command == QLatin1String("-h") || command == QLatin1String("help")) {
        out() << QStringLiteral(
            "tessaro-till: a till that loads the TessaroBack plug-in as the POS host does.\n\n"
            "  tessaro-till init --data DIR [--service-url URL]   create a till's data folder\n"
            "  tessaro-till run [--data DIR] SCENARIO              play a scenario file and report\n"
            "  tessaro-till shell [--data DIR]                     work the till at the terminal\n"
            "  tessaro-till demo                                   play the bundled scenarios against the emulator\n"
            "  tessaro-till check [--data DIR | --config FILE]     check a till's configuration and its way to the service\n"
            "  tessaro-till simulate [--seed N] [--sessions N]     random sessions with faults and kills, every invariant checked\n"
            "  tessaro-till contract CASSETTE [--against URL]      compare a service's answers with a recorded session's\n"
            "  tessaro-till --version [--plugins DIR]              the till's version and the plug-in's\n\n"
            "tessaro-till COMMAND --help describes each command.\n\n"
            "Exit codes: 0 done, 1 something did not hold, 2 a wrong command line or file, 3 cannot run\n"
            "(check: 1 warnings, 2 failures); docs/scenarios.md has the table.\n");
        return ExitCode::Passed;
    }
    return usage(QStringLiteral("unknown command '%1'").arg(command));
}

ExitCode TillApplication::init(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = dataOption();
    const QCommandLineOption url(QStringLiteral("service-url"), QStringLiteral("The Tessaro service's address (default: http://127.0.0.1:8080)."),
                                 QStringLiteral("URL"), QStringLiteral("http://127.0.0.1:8080"));
    const QCommandLineOption tokenUrl(QStringLiteral("token-url"), QStringLiteral("Where the till fetches its token (default: the service's address followed by /token)."),
                                      QStringLiteral("URL"));
    parser.addOptions({data, url, tokenUrl});
    const std::optional<ExitCode> parsed = parse(&parser, arguments, QStringLiteral("Creates a till's data folder with default settings."));
    if (parsed)
        return *parsed;
    if (!parser.positionalArguments().isEmpty())
        return usage(QStringLiteral("init takes no arguments besides its options"));
    const TillDataFolder folder(parser.value(data));
    QString error;
    if (!folder.create(parser.value(url), parser.value(tokenUrl), &error)) {
        err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    out() << QStringLiteral("Created a till in %1 (service %2); its settings are in %3")
                 .arg(folder.path(), SecretMask().url(QUrl(parser.value(url))), folder.configFile())
          << Qt::endl;
    return ExitCode::Passed;
}

ExitCode TillApplication::run(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = dataOption();
    const QCommandLineOption plugins = pluginsOption();
    const QCommandLineOption report(QStringLiteral("report"), QStringLiteral("Also write the report as JSON to FILE."), QStringLiteral("FILE"));
    const QCommandLineOption again(QStringLiteral("again"), QStringLiteral("Start the scenario over instead of continuing an unfinished run."));
    const QCommandLineOption inProcess(QStringLiteral("restart-in-process"),
                                       QStringLiteral("Restart the till within the process instead of replacing the process."));
    const QCommandLineOption strict(QStringLiteral("strict-host"),
                                    QStringLiteral("Save documents only where a host must (opening, its own changes, closing), not after every action."));
    // The simulation's killed runs: the till dies right after a hook of action type TYPE lets the action go on.
    QCommandLineOption killAfterHook(QStringLiteral("kill-after-hook"), QStringLiteral("Kill the till after a hook of TYPE."), QStringLiteral("TYPE"));
    killAfterHook.setFlags(QCommandLineOption::HiddenFromHelp);
    const QCommandLineOption verbose = verboseOption();
    const QCommandLineOption record = recordOption();
    const QCommandLineOption replay(QStringLiteral("replay"),
                                    QStringLiteral("Play the scenario offline: the service's answers come from the cassette FILE, on a new till in "
                                                   "a temporary folder unless --data is given. A request that was not recorded, or a "
                                                   "recorded one not sent, fails the run."),
                                    QStringLiteral("FILE"));
    parser.addOptions({data, plugins, report, again, inProcess, strict, killAfterHook, verbose, record, replay});
    parser.addPositionalArgument(QStringLiteral("SCENARIO"), QStringLiteral("The scenario file (docs/scenarios.md)."));
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
                             QStringLiteral("Plays a scenario on the till and reports each action's hooks, dialogs and requests.\n"
                                            "A run stopped at any point continues from its first unfinished action when run again."));
    if (parsed)
        return *parsed;
    if (parser.positionalArguments().size() != 1)
        return usage(QStringLiteral("run takes one scenario file"));
    quietenLogs(parser.isSet(verbose));

    // The scenario is read whole before anything touches the till's folder.
    const QString file = parser.positionalArguments().first();
    QFile source(file);
    if (!source.open(QIODevice::ReadOnly)) {
        err() << QStringLiteral("tessaro-till: %1: cannot read the file: %2").arg(file, source.errorString()) << Qt::endl;
        return ExitCode::BadInput;
    }
    const QByteArray content = source.readAll();
    ScenarioParser scenarioParser(file);
    std::optional<Scenario> scenario = scenarioParser.parse(content);
    if (!scenario) {
        err() << QStringLiteral("tessaro-till: ") << scenarioParser.error().toString() << Qt::endl;
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
            err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
            return ExitCode::BadInput;
        }
        if (!replayer.start(*recorded, &error)
            || (!parser.isSet(data) && !TillDataFolder(dataPath = replayFolder.path()).create(replayer.serviceUrl(), replayer.tokenUrl(), &error))) {
            err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
            return ExitCode::CannotRun;
        }
        scenario->till.config.insert(replayer.config());
    }
    CassetteRecorder recorder;

    const TillDataFolder folder(dataPath);
    ScenarioRunner::Options options;
    options.pluginFolder = parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder();
    options.again = parser.isSet(again) || cassette;
    options.strictHost = parser.isSet(strict);
    if (parser.isSet(killAfterHook))
        options.killAfterHook = control::EActionType(parser.value(killAfterHook).toInt());
    if (parser.isSet(record))
        options.recorder = &recorder;
    if (!parser.isSet(inProcess) && !cassette) {
        const QStringList command = m_arguments;
        options.restartProcess = [command] { replaceProcess(command); };
    }
    options.onRecord = [](const ActionRecord &record, int count) { out() << ReportWriter::progressLine(record, count) << Qt::endl; };

    ScenarioRunner runner(folder, *scenario, content, file);
    Report result;
    QString error;
    if (!runner.run(options, &result, &error)) {
        err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    result.failures << replayer.failures();
    if (parser.isSet(record) && !writeCassette(recorder, parser.value(record)))
        return ExitCode::CannotRun;
    out() << Qt::endl << ReportWriter::text(result);
    if (parser.isSet(report) && !ReportWriter::writeJson(result, parser.value(report), &error)) {
        err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    return result.passed() ? ExitCode::Passed : ExitCode::Failed;
}

ExitCode TillApplication::shell(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = dataOption();
    const QCommandLineOption plugins = pluginsOption();
    const QCommandLineOption verbose = verboseOption();
    const QCommandLineOption record = recordOption();
    parser.addOptions({data, plugins, verbose, record});
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
                             QStringLiteral("Works the till at the terminal: type commands, answer the plug-in's dialogs.\n\n")
                                 + ShellSession::help());
    if (parsed)
        return *parsed;
    quietenLogs(parser.isSet(verbose));
    QTextStream in(stdin);
    ShellSession session(TillDataFolder(parser.value(data)), &in, &out());
    CassetteRecorder recorder;
    if (parser.isSet(record))
        session.setRecorder(&recorder);
    const ExitCode code = session.run(parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder());
    if (parser.isSet(record) && !writeCassette(recorder, parser.value(record)))
        return ExitCode::CannotRun;
    return code;
}

ExitCode TillApplication::demo(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption plugins = pluginsOption();
    const QCommandLineOption keep(QStringLiteral("keep"), QStringLiteral("Keep the tills in DIR, one folder per scenario."), QStringLiteral("DIR"));
    const QCommandLineOption verbose = verboseOption();
    const QCommandLineOption record(QStringLiteral("record"),
                                    QStringLiteral("Keep each scenario's exchanges with the emulator in DIR/<scenario>.json, a cassette "
                                                   "(docs/contracts.md)."),
                                    QStringLiteral("DIR"));
    parser.addOptions({plugins, keep, verbose, record});
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
                             QStringLiteral("Plays the bundled scenarios, each on a new till against the Tessaro service emulator,\n"
                                            "which runs in this process on a free loopback port."));
    if (parsed)
        return *parsed;
    quietenLogs(parser.isSet(verbose));
    DemoRunner demo(&out());
    demo.setCassetteFolder(parser.value(record));
    return demo.run(parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder(), parser.value(keep));
}


ExitCode TillApplication::simulate(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("The run's seed (default: a new one, printed)."), QStringLiteral("N"));
    const QCommandLineOption sessions(QStringLiteral("sessions"), QStringLiteral("How many sessions to play (default: 100, or as many as fit in --seconds)."),
                                      QStringLiteral("N"));
    const QCommandLineOption seconds(QStringLiteral("seconds"), QStringLiteral("Stop starting sessions after S seconds."), QStringLiteral("S"));
    const QCommandLineOption jobs(QStringLiteral("jobs"), QStringLiteral("Worker processes playing sessions side by side (default: 2)."),
                                 QStringLiteral("N"), QStringLiteral("2"));
    const QCommandLineOption killRate(QStringLiteral("kill-rate"),
                                      QStringLiteral("Chance of a till restart after each action; a tenth of it, of a session played in a child "
                                                     "process killed with SIGKILL inside a hook (default: 0.1)."),
                                      QStringLiteral("P"), QStringLiteral("0.1"));
    const QCommandLineOption faultRate(QStringLiteral("fault-rate"), QStringLiteral("Chance of a service fault on each request (default: 0.2)."),
                                       QStringLiteral("P"), QStringLiteral("0.2"));
    const QCommandLineOption plugins = pluginsOption();
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Print the report as one JSON object."));
    const QCommandLineOption outFolder(QStringLiteral("out"), QStringLiteral("Where failing sessions' shrunk scenarios go (default: simulation-failures)."),
                                 QStringLiteral("DIR"), QStringLiteral("simulation-failures"));
    const QCommandLineOption replay(QStringLiteral("replay"), QStringLiteral("Play the one session of this seed in this process, as a failure's replay command does."),
                                    QStringLiteral("SEED"));
    const QCommandLineOption scenario(QStringLiteral("scenario"),
                                      QStringLiteral("Play the session written in FILE (a shrunk failure, with its emulator settings in emulator/ "
                                                     "beside it) in this process and check every invariant."),
                                      QStringLiteral("FILE"));
    const QCommandLineOption cart(QStringLiteral("cart"),
                                  QStringLiteral("Drive the client's cart operations directly against the emulator with faults, instead of tills "
                                                 "(the program tessaro-till-cart beside this one)."));
    QCommandLineOption worker(QStringLiteral("worker"), QStringLiteral("Internal: be a worker starting at session N."), QStringLiteral("N"));
    QCommandLineOption stride(QStringLiteral("stride"), QStringLiteral("Internal: a worker's step between sessions."), QStringLiteral("N"), QStringLiteral("1"));
    QCommandLineOption deadline(QStringLiteral("deadline"), QStringLiteral("Internal: a worker's end, ms since the epoch."), QStringLiteral("MS"),
                                QStringLiteral("0"));
    for (QCommandLineOption *hidden : {&worker, &stride, &deadline})
        hidden->setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({seed, sessions, seconds, jobs, killRate, faultRate, plugins, json, outFolder, replay, scenario, cart, worker, stride, deadline});
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
                             QStringLiteral("Plays seeded random cashier sessions on tills with the real plug-in against the Tessaro service\n"
                                            "emulator in the process, with service faults and till kills, and checks every invariant after\n"
                                            "every step. A failing session prints its seed and the command that replays it, and is shrunk\n"
                                            "and written as a scenario. Exit code 0: no invariant was violated. docs/simulation.md tells more."));
    if (parsed)
        return *parsed;
    if (!parser.positionalArguments().isEmpty())
        return usage(QStringLiteral("simulate takes no arguments besides its options"));

    SimulationCommand::Options options;
    bool ok = true;
    const auto number = [&parser, &ok](const QCommandLineOption &option) {
        bool valid = false;
        const double value = parser.value(option).toDouble(&valid);
        ok = ok && valid && value >= 0;
        return value;
    };
    options.seed = parser.isSet(seed) ? parser.value(seed).toULongLong(&ok)
                                      : QRandomGenerator::system()->generate64() & ((quint64(1) << 53) - 1);
    if (parser.isSet(sessions))
        options.sessions = int(number(sessions));
    if (parser.isSet(seconds))
        options.seconds = int(number(seconds));
    const double jobCount = number(jobs);
    if (jobCount > SimulationCommand::mostJobs())
        return usage(QStringLiteral("simulate: --jobs takes at most %1 worker processes on this machine (four per processor core)")
                         .arg(SimulationCommand::mostJobs()));
    options.jobs = qMax(1, int(jobCount));
    options.rates.kill = number(killRate);
    options.rates.fault = number(faultRate);
    options.pluginFolder = QFileInfo(parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder()).absoluteFilePath();
    options.json = parser.isSet(json);
    options.outFolder = QFileInfo(parser.value(outFolder)).absoluteFilePath();
    options.program = parser.isSet(cart) ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tessaro-till-cart"))
                                         : QCoreApplication::applicationFilePath();
    if (!ok || options.rates.kill > 1 || options.rates.fault > 1)
        return usage(QStringLiteral("simulate: a count, a rate (0 to 1) or a seed is not a number"));

    SimulationCommand command(options, &out(), &err());
    if (parser.isSet(worker))
        return command.work(parser.value(worker).toInt(), qMax(1, parser.value(stride).toInt()), parser.value(deadline).toLongLong());
    if (parser.isSet(scenario))
        return command.replayFile(parser.value(scenario));
    if (parser.isSet(replay)) {
        const quint64 session = parser.value(replay).toULongLong(&ok);
        return ok ? command.replay(session) : usage(QStringLiteral("simulate: --replay takes a seed"));
    }
    return command.run();
}

ExitCode TillApplication::contract(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption against(QStringLiteral("against"),
                                     QStringLiteral("Send to the service at URL (its \"Tessaro:url\") instead of an emulator in this process; "
                                                    "only the token request and GETs unless --allow-writes."),
                                     QStringLiteral("URL"));
    const QCommandLineOption tokenUrl(QStringLiteral("token-url"), QStringLiteral("With --against: the token address (default: URL/token)."),
                                      QStringLiteral("URL"));
    const QCommandLineOption allowWrites(QStringLiteral("allow-writes"),
                                         QStringLiteral("With --against: send the writes too. An advice note sent to a live service is a real return."));
    const QCommandLineOption rules(QStringLiteral("rules"),
                                   QStringLiteral("Drift rules: {\"vary\": [...], \"ignore\": [...]}, the fields whose values may change "
                                                  "(docs/contracts.md)."),
                                   QStringLiteral("FILE"));
    const QCommandLineOption emulatorSettings(QStringLiteral("emulator-settings"),
                                              QStringLiteral("Without --against: the emulator's settings (docs/emulator.md)."), QStringLiteral("FILE"));
    const QCommandLineOption data(QStringLiteral("data"),
                                  QStringLiteral("The till whose \"Tessaro:authorizationHeader\" the token request carries."), QStringLiteral("DIR"));
    parser.addOptions({against, tokenUrl, allowWrites, rules, emulatorSettings, data});
    parser.addPositionalArgument(QStringLiteral("CASSETTE"), QStringLiteral("The recorded session (tessaro-till run --record)."));
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
                             QStringLiteral("Sends a cassette's requests to the emulator or to a service and compares every answer with the\n"
                                            "recorded one by contract: status, keys present and missing, value types, arrays empty or not,\n"
                                            "values unless the rules let them vary. One line per request, then a summary.\n\n"
                                            "Exit code: 0 no drift, 1 drift, 2 a wrong command line, cassette or rules file, 3 cannot run."));
    if (parsed)
        return *parsed;
    if (parser.positionalArguments().size() != 1)
        return usage(QStringLiteral("contract takes one cassette file"));
    if (parser.isSet(against) && parser.isSet(emulatorSettings))
        return usage(QStringLiteral("contract: --emulator-settings is for the emulator, not for --against"));
    ContractCommand::Options options;
    options.cassette = parser.positionalArguments().first();
    options.against = parser.value(against);
    options.tokenUrl = parser.value(tokenUrl);
    options.rulesFile = parser.value(rules);
    options.emulatorSettings = parser.value(emulatorSettings);
    options.dataFolder = parser.value(data);
    options.allowWrites = parser.isSet(allowWrites);
    quietenLogs(false);
    return ContractCommand(options, &out(), &err()).run();
}

ExitCode TillApplication::check(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = dataOption();
    const QCommandLineOption config(QStringLiteral("config"), QStringLiteral("Check this host configuration file instead of a till's data folder."),
                                    QStringLiteral("FILE"));
    const QCommandLineOption dictionaries(QStringLiteral("dictionaries"),
                                          QStringLiteral("With --config: the till's currencies, in the form of a data folder's dictionaries.json."),
                                          QStringLiteral("FILE"));
    const QCommandLineOption plugins = pluginsOption();
    const QCommandLineOption tolerance(QStringLiteral("clock-tolerance"),
                                       QStringLiteral("How many seconds the gateway lets a request's time lie from its own (default: 900)."),
                                       QStringLiteral("SECONDS"), QStringLiteral("900"));
    const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("Write the verdict as JSON, for monitoring systems."));
    parser.addOptions({data, config, dictionaries, plugins, tolerance, json});
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
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
        usage(QStringLiteral("check takes --data DIR or --config FILE (with --dictionaries FILE), and a whole number of seconds for --clock-tolerance"));
        return ExitCode::BadInput;
    }
    options.dataFolder = parser.isSet(config) ? QString() : parser.value(data);
    options.configFile = parser.value(config);
    options.dictionariesFile = parser.value(dictionaries);
    options.pluginFolder = parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder();

    // The verdict is the only output: the plug-in's log would name its token.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    const CheckReport report = TillCheck(options).run();
    if (parser.isSet(json))
        out() << QString::fromUtf8(QJsonDocument(report.json()).toJson(QJsonDocument::Indented));
    else
        out() << report.text();
    out().flush();
    return report.exitCode();
}

ExitCode TillApplication::version(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption plugins = pluginsOption();
    parser.addOption(plugins);
    const std::optional<ExitCode> parsed = parse(&parser, arguments,
                             QStringLiteral("Prints the till's version and the plug-in's, read from its library file without loading it."));
    if (parsed)
        return *parsed;
    out() << QStringLiteral("tessaro-till " TESSARO_VERSION) << Qt::endl;
    const QString folder = parser.isSet(plugins) ? parser.value(plugins) : defaultPluginFolder();
    const QString file = PluginHost::libraryFile(folder);
    if (!QFileInfo::exists(file)) {
        out() << QStringLiteral("plug-in: no %1 in %2").arg(PluginHost::libraryName(), folder) << Qt::endl;
        return ExitCode::Passed;
    }
    const QString version = PluginHost::versionOf(file);
    out() << QStringLiteral("plug-in %1: %2").arg(file, version.isEmpty() ? QStringLiteral("no version mark in it") : QStringLiteral("TessaroBack ") + version)
          << Qt::endl;
    return ExitCode::Passed;
}

} // namespace till
