#include "contractcommandline.h"

#include "commandline.h"
#include "contractcommand.h"

#include <QCommandLineParser>

namespace till {

ExitCode ContractCommandLine::exec(const QStringList &arguments)
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
    const std::optional<ExitCode> parsed = CommandLine::parse(&parser, arguments,
                             QStringLiteral("Sends a cassette's requests to the emulator or to a service and compares every answer with the\n"
                                            "recorded one by contract: status, keys present and missing, value types, arrays empty or not,\n"
                                            "values unless the rules let them vary. One line per request, then a summary.\n\n"
                                            "Exit code: 0 no drift, 1 drift, 2 a wrong command line, cassette or rules file, 3 cannot run."));
    if (parsed)
        return *parsed;
    if (parser.positionalArguments().size() != 1)
        return CommandLine::usage(QStringLiteral("contract takes one cassette file"));
    if (parser.isSet(against) && parser.isSet(emulatorSettings))
        return CommandLine::usage(QStringLiteral("contract: --emulator-settings is for the emulator, not for --against"));
    ContractCommand::Options options;
    options.cassette = parser.positionalArguments().first();
    options.against = parser.value(against);
    options.tokenUrl = parser.value(tokenUrl);
    options.rulesFile = parser.value(rules);
    options.emulatorSettings = parser.value(emulatorSettings);
    options.dataFolder = parser.value(data);
    options.allowWrites = parser.isSet(allowWrites);
    CommandLine::quietenLogs(false);
    return ContractCommand(options, &CommandLine::out(), &CommandLine::err()).run();
}

} // namespace till
