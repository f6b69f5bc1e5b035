#include "tillapplication.h"

#include "checkcommandline.h"
#include "commandline.h"
#include "contractcommandline.h"
#include "democommandline.h"
#include "initcommandline.h"
#include "runcommandline.h"
#include "shellcommandline.h"
#include "simulatecommandline.h"
#include "versioncommandline.h"

#include <QTextStream>

namespace till {

namespace {

/// Where the summaries start in the help's list of commands.
constexpr qsizetype synopsisWidth = 39;

} // namespace

TillApplication::TillApplication(const QStringList &arguments)
    : m_arguments(arguments)
{
}

const QList<TillApplication::Command> &TillApplication::commands()
{
    static const QList<Command> table{
        {QLatin1String("init"), QLatin1String("init --data DIR [--service-url URL]"), QLatin1String("create a till's data folder"), &InitCommandLine::exec},
        {QLatin1String("run"), QLatin1String("run [--data DIR] SCENARIO"), QLatin1String("play a scenario file and report"), &RunCommandLine::exec},
        {QLatin1String("shell"), QLatin1String("shell [--data DIR]"), QLatin1String("work the till at the terminal"), &ShellCommandLine::exec},
        {QLatin1String("demo"), QLatin1String("demo"), QLatin1String("play the bundled scenarios against the emulator"), &DemoCommandLine::exec},
        {QLatin1String("check"), QLatin1String("check [--data DIR | --config FILE]"),
         QLatin1String("check a till's configuration and its way to the service"), &CheckCommandLine::exec},
        {QLatin1String("simulate"), QLatin1String("simulate [--seed N] [--sessions N]"),
         QLatin1String("random sessions with faults and kills, every invariant checked"), &SimulateCommandLine::exec},
        {QLatin1String("contract"), QLatin1String("contract CASSETTE [--against URL]"),
         QLatin1String("compare a service's answers with a recorded session's"), &ContractCommandLine::exec},
        {QLatin1String("--version"), QLatin1String("--version [--plugins DIR]"), QLatin1String("the till's version and the plug-in's"),
         &VersionCommandLine::exec},
    };
    return table;
}

QStringList TillApplication::commandNames()
{
    QStringList names;
    for (const Command &command : commands()) {
        if (!command.name.startsWith(QLatin1String("--")))
            names << command.name;
    }
    return names;
}

QString TillApplication::help()
{
    QString text = QStringLiteral("tessaro-till: a till that loads the TessaroBack plug-in as the POS host does.\n\n");
    for (const Command &command : commands())
        text += QStringLiteral("  tessaro-till %1%2\n").arg(QString(command.synopsis).leftJustified(synopsisWidth), command.summary);
    return text
        + QStringLiteral("\ntessaro-till COMMAND --help describes each command.\n\n"
                         "Exit codes: 0 done, 1 something did not hold, 2 a wrong command line or file, 3 cannot run\n"
                         "(check: 1 warnings, 2 failures); docs/scenarios.md has the table.\n");
}

ExitCode TillApplication::exec()
{
    if (m_arguments.size() < 2)
        return CommandLine::usage(QString());
    const QString name = m_arguments.at(1);
    for (const Command &command : commands()) {
        if (name == command.name)
            return command.exec(m_arguments);
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        CommandLine::out() << help();
        return ExitCode::Passed;
    }
    return CommandLine::usage(QStringLiteral("unknown command '%1'").arg(name));
}

} // namespace till
