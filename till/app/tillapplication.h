#pragma once

#include "exitcode.h"

#include <QStringList>

#include <optional>

class QCommandLineParser;

namespace till {

/// The tessaro-till command: init, run, shell, demo, check, simulate and
/// contract, each with --help; every one says how it went by an ExitCode.
class TillApplication
{
public:
    /// \a arguments as the process got them (program name first).
    explicit TillApplication(const QStringList &arguments);

    ExitCode exec();

    /// Where the plug-in is looked for without --plugins: $TESSARO_PLUGIN_DIR,
    /// else the build's plug-in folder when it holds the plug-in, else the
    /// plug-in folder of the installed tools (next to the program's own folder).
    static QString defaultPluginFolder();

private:
    ExitCode init(const QStringList &arguments);
    ExitCode run(const QStringList &arguments);
    ExitCode shell(const QStringList &arguments);
    ExitCode demo(const QStringList &arguments);
    ExitCode simulate(const QStringList &arguments);
    ExitCode check(const QStringList &arguments);
    ExitCode contract(const QStringList &arguments);
    /// The tool's version and, read from its metadata without loading it, the plug-in's.
    ExitCode version(const QStringList &arguments);
    ExitCode usage(const QString &problem) const;

    /// Parses \a arguments; returns nothing to go on, or the exit code (after --help or an error).
    static std::optional<ExitCode> parse(QCommandLineParser *parser, const QStringList &arguments, const QString &description);
    static void quietenLogs(bool verbose);

    QStringList m_arguments;
};

} // namespace till
