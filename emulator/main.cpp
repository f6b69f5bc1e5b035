// tessaro-emulator: the Tessaro service emulator as a program.
#include "emulator/emulator.h"

#include <contracts/cassettefile.h>
#include <tessaroversion.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;

namespace {

QString authModeName(EmulatorSettings::AuthMode mode)
{
    switch (mode) {
    case EmulatorSettings::AuthMode::Token: return QStringLiteral("token");
    case EmulatorSettings::AuthMode::Gateway: return QStringLiteral("gateway");
    case EmulatorSettings::AuthMode::None: return QStringLiteral("none");
    }
    return {};
}

int fail(const QString &message, int code)
{
    QTextStream(stderr) << "tessaro-emulator: " << message << Qt::endl;
    return code;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tessaro-emulator"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TESSARO_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Emulates the Tessaro cart and pricing service over HTTP for tests and demos.\n"
        "The first line written to standard output is the port it listens on."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption portOption(
        {QStringLiteral("p"), QStringLiteral("port")},
        QStringLiteral("Port to listen on; 0 picks a free one. Default: the settings' \"port\", else 8080."),
        QStringLiteral("N"));
    const QCommandLineOption hostOption(
        QStringLiteral("host"), QStringLiteral("Address to listen on. Default: 127.0.0.1."), QStringLiteral("ADDRESS"));
    const QCommandLineOption configOption({QStringLiteral("c"), QStringLiteral("config")},
                                          QStringLiteral("JSON settings file (see docs/emulator.md)."),
                                          QStringLiteral("FILE"));
    const QCommandLineOption replayOption(
        QStringLiteral("replay"),
        QStringLiteral("Answer from this cassette (recorded by tessaro-till --record) instead of emulating: each request gets the "
                       "recorded answer of the recorded request it matches; one that matches none gets HTTP 500 and a journal "
                       "entry naming the nearest recorded request and the first difference (docs/contracts.md)."),
        QStringLiteral("CASSETTE"));
    const QCommandLineOption showSecretsOption(
        QStringLiteral("show-secrets-in-journal"),
        QStringLiteral("GET /_emulator/requests shows credentials, tokens and keys as they came, instead of their "
                       "scheme and length. For a private emulator only: anyone who reaches the port may read them."));
    parser.addOptions({portOption, hostOption, configOption, replayOption, showSecretsOption});
    parser.process(app);

    EmulatorSettings settings;
    if (parser.isSet(configOption)) {
        QString error;
        const auto loaded = EmulatorSettings::load(parser.value(configOption), &error);
        if (!loaded)
            return fail(error, 2);
        settings = *loaded;
    }
    if (parser.isSet(hostOption)) {
        settings.address = QHostAddress(parser.value(hostOption));
        if (settings.address.isNull())
            return fail(QStringLiteral("--host needs an IP address"), 2);
    }
    if (parser.isSet(showSecretsOption))
        settings.showSecretsInJournal = true;
    quint16 port = settings.port;
    if (parser.isSet(portOption)) {
        bool ok = false;
        const uint value = parser.value(portOption).toUInt(&ok);
        if (!ok || value > 65535)
            return fail(QStringLiteral("--port needs a number from 0 to 65535"), 2);
        port = quint16(value);
    }

    Emulator emulator(settings);
    if (parser.isSet(replayOption)) {
        QString error;
        const auto cassette = tessaro::contracts::CassetteFile::read(parser.value(replayOption), &error);
        if (!cassette)
            return fail(error, 2);
        emulator.replay(*cassette);
    }
    if (emulator.start(port) == 0)
        return fail(QStringLiteral("cannot listen on %1 port %2").arg(settings.address.toString()).arg(port), 1);

    QTextStream(stdout) << emulator.port() << Qt::endl;
    QTextStream(stderr) << "tessaro-emulator: serving " << emulator.baseUrl().toString() << ", token path "
                        << emulator.tokenUrl().toString() << ", auth " << authModeName(settings.authMode)
                        << (emulator.player() ? QStringLiteral(", replaying %1").arg(parser.value(replayOption)) : QString())
                        << Qt::endl;
    return QCoreApplication::exec();
}
