#include "initcommandline.h"

#include "commandline.h"
#include "tilldatafolder.h"

#include "secrets/secretmask.h"

#include <QCommandLineParser>
#include <QTextStream>
#include <QUrl>

namespace till {

ExitCode InitCommandLine::exec(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption data = CommandLine::dataOption();
    const QCommandLineOption url(QStringLiteral("service-url"), QStringLiteral("The Tessaro service's address (default: http://127.0.0.1:8080)."),
                                 QStringLiteral("URL"), QStringLiteral("http://127.0.0.1:8080"));
    const QCommandLineOption tokenUrl(QStringLiteral("token-url"), QStringLiteral("Where the till fetches its token (default: the service's address followed by /token)."),
                                      QStringLiteral("URL"));
    parser.addOptions({data, url, tokenUrl});
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments, QStringLiteral("Creates a till's data folder with default settings."));
    if (parsed)
        return *parsed;
    if (!parser.positionalArguments().isEmpty())
        return CommandLine::usage(QStringLiteral("init takes no arguments besides its options"));
    const TillDataFolder folder(parser.value(data));
    QString error;
    if (!folder.create(parser.value(url), parser.value(tokenUrl), &error)) {
        CommandLine::err() << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::CannotRun;
    }
    CommandLine::out() << QStringLiteral("Created a till in %1 (service %2); its settings are in %3")
                              .arg(folder.path(), SecretMask().url(QUrl(parser.value(url))), folder.configFile())
                       << Qt::endl;
    return ExitCode::Passed;
}

} // namespace till
