#pragma once

#include "exitcode.h"

#include <QLatin1String>
#include <QList>
#include <QStringList>

namespace till {

/// The tessaro-till command: finds the subcommand (init, run, shell, demo,
/// check, simulate, contract, --version) in its table and hands it the
/// command line; every one answers --help and says how it went by an ExitCode.
class TillApplication
{
public:
    /// One subcommand: what calls it, what --help shows of it, and what runs it.
    struct Command
    {
        QLatin1String name;
        /// The command with its main options, as the help lists it.
        QLatin1String synopsis;
        /// What it does, in a few words.
        QLatin1String summary;
        /// Runs it on the process's command line (the command second).
        ExitCode (*exec)(const QStringList &arguments);
    };

    /// \a arguments as the process got them (program name first).
    explicit TillApplication(const QStringList &arguments);

    ExitCode exec();

    /// Every subcommand, in the order the help lists them.
    static const QList<Command> &commands();
    /// The subcommands' names, --version left out, for the usage line.
    static QStringList commandNames();
    /// The overview tessaro-till --help prints.
    static QString help();

private:
    QStringList m_arguments;
};

} // namespace till
