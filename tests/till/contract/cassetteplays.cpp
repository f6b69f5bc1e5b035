#include "cassetteplays.h"

#include "cassetterecorder.h"
#include "cassettereplay.h"
#include "emulatedtill.h"
#include "scenarioparser.h"
#include "scenariorunner.h"
#include "tilldatafolder.h"

namespace cassetteplays {

namespace {

// Plays \a play on the till in \a till, which talks to the service to be recorded or replayed.
bool playOn(const till::DemoRunner::Play &play, const till::TillDataFolder &till, const QMap<QString, QString> &config,
            till::CassetteRecorder *recorder, till::Report *report, QString *error)
{
    till::ScenarioParser parser(play.name);
    std::optional<till::Scenario> scenario = parser.parse(play.scenario);
    if (!scenario) {
        *error = parser.error().toString();
        return false;
    }
    scenario->till.config.insert(config);
    till::ScenarioRunner::Options options;
    options.pluginFolder = QStringLiteral(TILL_PLUGIN_DIR);
    options.again = true;
    options.recorder = recorder;
    till::ScenarioRunner runner(till, *scenario, play.scenario, play.name);
    return runner.run(options, report, error);
}

} // namespace

bool record(const till::DemoRunner::Play &play, const QString &folder, Recording *recording, QString *error,
            const QMap<QString, QString> &config, const QByteArray &emulatorSettings)
{
    const std::optional<tessaro::emulator::EmulatorSettings> settings =
        till::EmulatedTill::settings(emulatorSettings.isEmpty() ? play.emulatorSettings : emulatorSettings, error);
    if (!settings)
        return false;
    till::EmulatedTill service(*settings);
    till::CassetteRecorder recorder;
    if (!service.start(folder, error) || !playOn(play, service.folder(), config, &recorder, &recording->report, error))
        return false;
    recording->cassette = recorder.cassette();
    recording->journal = service.emulator().journal().entries();
    return true;
}

bool replay(const till::DemoRunner::Play &play, const tessaro::contracts::Cassette &cassette, const QString &folder,
            till::Report *report, QString *error, const QMap<QString, QString> &config)
{
    till::CassetteReplay replay;
    if (!replay.start(cassette, error))
        return false;
    QMap<QString, QString> settings = config;
    settings.insert(replay.config());
    const till::TillDataFolder till(folder);
    if (!till.create(replay.serviceUrl(), replay.tokenUrl(), error) || !playOn(play, till, settings, nullptr, report, error))
        return false;
    report->failures << replay.failures();
    return true;
}

QStringList verdicts(const till::Report &report)
{
    QStringList list;
    for (const till::ActionRecord &action : report.actions) {
        list << QStringLiteral("%1 %2 → %3 %4")
                    .arg(action.index)
                    .arg(action.type, action.result ? QString::number(*action.result) : QStringLiteral("-"), action.failures.join(QLatin1Char('|')));
    }
    list << report.failures;
    return list;
}

till::DemoRunner::Play bundled(const QString &name)
{
    for (const till::DemoRunner::Play &play : till::DemoRunner::bundled()) {
        if (play.name == name)
            return play;
    }
    return {};
}

} // namespace cassetteplays
