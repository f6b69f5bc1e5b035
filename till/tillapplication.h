#pragma once

#include <QStringList>

class QCommandLineParser;

namespace till {

/// The tessaro-till command: init, run, shell, demo, check and simulate, each with --help.
///
/// Exit codes: 0 done (every expectation held), 1 an expectation failed,
/// 2 wrong command line or scenario file, 3 the till could not run. The check
/// says 0 all ok, 1 warnings, 2 failures (a wrong command line included).
class TillApplication
{
public:
    enum ExitCode { Passed = 0, Failed = 1, BadInput = 2, CannotRun = 3 };

    /// \a arguments as the process got them (program name first).
    explicit TillApplication(const QStringList &arguments);

    int exec();

    /// Where the plug-in is looked for without --plugins: $TESSARO_PLUGIN_DIR,
    /// else the build's plug-in folder when it holds the plug-in, else the
    /// plug-in folder of the installed tools (next to the program's own folder).
    static QString defaultPluginFolder();

private:
    int init(const QStringList &arguments);
    int run(const QStringList &arguments);
    int shell(const QStringList &arguments);
    int demo(const QStringList &arguments);
    int simulate(const QStringList &arguments);
    int check(const QStringList &arguments);
    int contract(const QStringList &arguments);
    /// The tool's version and, read from its metadata without loading it, the plug-in's.
    int version(const QStringList &arguments);
    int usage(const QString &problem) const;

    /// Parses \a arguments; returns -1 to go on, or an exit code (after --help or an error).
    static int parse(QCommandLineParser *parser, const QStringList &arguments, const QString &description);
    static void quietenLogs(bool verbose);

    QStringList m_arguments;
};

} // namespace till
