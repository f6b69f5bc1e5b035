#pragma once

#include "exitcode.h"

#include <QCommandLineOption>
#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;
class QTextStream;

namespace till {

class CassetteRecorder;

/// What the subcommands' command lines share: the streams they write to,
/// parsing with --help, the usage message, and the options several take.
class CommandLine
{
public:
    static QTextStream &out();
    static QTextStream &err();

    /// Parses the subcommand's part of \a arguments (the process's command
    /// line, the command second), "tessaro-till COMMAND" as its program name.
    /// Returns nothing to go on, or the exit code (after --help or an error).
    static std::optional<ExitCode> parse(QCommandLineParser *parser, const QStringList &arguments, const QString &description);
    /// Says \a problem, when there is one, and how the program is called.
    static ExitCode usage(const QString &problem);
    /// Hides the plug-in's and the host's debug and info lines unless \a verbose.
    static void quietenLogs(bool verbose);

    /// --data DIR, the till's data folder.
    static QCommandLineOption dataOption();
    /// --plugins DIR, the folder holding the plug-in.
    static QCommandLineOption pluginsOption();
    /// --record FILE, the cassette a session's exchanges go to.
    static QCommandLineOption recordOption();
    /// --verbose, the plug-in's and the host's log.
    static QCommandLineOption verboseOption();

    /// Where the plug-in is looked for without --plugins: $TESSARO_PLUGIN_DIR,
    /// else the build's plug-in folder when it holds the plug-in, else the
    /// plug-in folder of the installed tools (next to the program's own folder).
    static QString defaultPluginFolder();
    /// The folder \a plugins names, else the default one.
    static QString pluginFolder(const QCommandLineParser &parser, const QCommandLineOption &plugins);

    /// Writes the recorder's cassette; false after saying why.
    static bool writeCassette(const CassetteRecorder &recorder, const QString &file);
};

} // namespace till
