#include "simulatecommandline.h"

#include "commandline.h"
#include "simulationcommand.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

namespace till {

ExitCode SimulateCommandLine::exec(const QStringList &arguments)
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
    const QCommandLineOption plugins = CommandLine::pluginsOption();
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
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Plays seeded random cashier sessions on tills with the real plug-in against the Tessaro service\n"
                                            "emulator in the process, with service faults and till kills, and checks every invariant after\n"
                                            "every step. A failing session prints its seed and the command that replays it, and is shrunk\n"
                                            "and written as a scenario. Exit code 0: no invariant was violated. docs/simulation.md tells more."));
    if (parsed)
        return *parsed;
    if (!parser.positionalArguments().isEmpty())
        return CommandLine::usage(QStringLiteral("simulate takes no arguments besides its options"));

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
        return CommandLine::usage(QStringLiteral("simulate: --jobs takes at most %1 worker processes on this machine (four per processor core)")
                         .arg(SimulationCommand::mostJobs()));
    options.jobs = qMax(1, int(jobCount));
    options.rates.kill = number(killRate);
    options.rates.fault = number(faultRate);
    options.pluginFolder = QFileInfo(CommandLine::pluginFolder(parser, plugins)).absoluteFilePath();
    options.json = parser.isSet(json);
    options.outFolder = QFileInfo(parser.value(outFolder)).absoluteFilePath();
    options.program = parser.isSet(cart) ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tessaro-till-cart"))
                                         : QCoreApplication::applicationFilePath();
    if (!ok || options.rates.kill > 1 || options.rates.fault > 1)
        return CommandLine::usage(QStringLiteral("simulate: a count, a rate (0 to 1) or a seed is not a number"));

    SimulationCommand command(options, &CommandLine::out(), &CommandLine::err());
    if (parser.isSet(worker))
        return command.work(parser.value(worker).toInt(), qMax(1, parser.value(stride).toInt()), parser.value(deadline).toLongLong());
    if (parser.isSet(scenario))
        return command.replayFile(parser.value(scenario));
    if (parser.isSet(replay)) {
        const quint64 session = parser.value(replay).toULongLong(&ok);
        return ok ? command.replay(session) : CommandLine::usage(QStringLiteral("simulate: --replay takes a seed"));
    }
    return command.run();
}

} // namespace till
