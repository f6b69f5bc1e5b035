#include "demorunner.h"

#include "cassetterecorder.h"
#include "emulatedtill.h"
#include "reportwords.h"
#include "reportwriter.h"
#include "scenarioparser.h"
#include "scenariorunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTextStream>

namespace till {

namespace {

QByteArray resource(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

QList<DemoRunner::Play> DemoRunner::bundled()
{
    QList<Play> plays;
    const QDir folder(QStringLiteral(":/scenarios"));
    for (const QString &name : folder.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name)) {
        plays << Play{QFileInfo(name).completeBaseName(), resource(folder.filePath(name)),
                      resource(folder.filePath(QStringLiteral("emulator/") + name))};
    }
    return plays;
}

bool DemoRunner::play(const Play &play, const QString &folder, const QString &pluginFolder, Report *report, QString *error,
                      const std::function<void(const ActionRecord &, int)> &onRecord, CassetteRecorder *recorder)
{
    ScenarioParser parser(play.name);
    const std::optional<Scenario> scenario = parser.parse(play.scenario);
    if (!scenario) {
        *error = parser.error().toString();
        return false;
    }
    const std::optional<tessaro::emulator::EmulatorSettings> settings = EmulatedTill::settings(play.emulatorSettings, error);
    if (!settings)
        return false;
    EmulatedTill service(*settings);
    if (!service.start(folder, error))
        return false;
    const TillDataFolder &till = service.folder();

    ScenarioRunner::Options options;
    options.pluginFolder = pluginFolder;
    options.onRecord = onRecord;
    options.recorder = recorder;
    // The bundled scenarios hold with a host that saves only where it must.
    options.strictHost = true;
    ScenarioRunner runner(till, *scenario, play.scenario, play.name);
    if (!runner.run(options, report, error))
        return false;

    int recorded = 0;
    for (const ActionRecord &record : std::as_const(report->actions))
        recorded += int(record.requests.size());
    const int journal = service.emulator().journal().size();
    if (journal != recorded)
        report->failures << QStringLiteral("the emulator's journal holds %1 request(s), the till recorded %2").arg(journal).arg(recorded);
    return true;
}

DemoRunner::DemoRunner(QTextStream *out)
    : m_out(out)
{
}

ExitCode DemoRunner::run(const QString &pluginFolder, const QString &keepFolder)
{
    QTemporaryDir temporary;
    const QDir base(keepFolder.isEmpty() ? temporary.path() : keepFolder);
    const QList<Play> plays = bundled();
    *m_out << QStringLiteral("tessaro-till demo: %1 scenarios, each on a new till against the Tessaro service emulator").arg(plays.size())
           << Qt::endl;
    *m_out << QStringLiteral("plug-in folder: %1").arg(pluginFolder) << Qt::endl;

    QStringList summary;
    int passed = 0;
    bool allRan = true;
    for (const Play &play : plays) {
        *m_out << Qt::endl << QStringLiteral("== %1").arg(play.name) << Qt::endl;
        Report report;
        QString error;
        CassetteRecorder recorder;
        const bool recording = !m_cassetteFolder.isEmpty();
        bool ran = DemoRunner::play(play, base.filePath(play.name), pluginFolder, &report, &error,
                                          [this](const ActionRecord &record, int count) {
                                              *m_out << QStringLiteral("  ") << ReportWriter::progressLine(record, count) << Qt::endl;
                                              for (const QString &failure : record.failures)
                                                  *m_out << QStringLiteral("      ") << ReportWords::failure(failure) << Qt::endl;
                                          },
                                          recording ? &recorder : nullptr);
        if (ran && recording) {
            const QString file = QDir(m_cassetteFolder).filePath(play.name + QStringLiteral(".json"));
            ran = QDir().mkpath(m_cassetteFolder) && recorder.write(file, &error);
            if (ran)
                *m_out << QStringLiteral("  recorded %1 exchange(s) in %2").arg(recorder.size()).arg(file) << Qt::endl;
        }
        const QStringList failures = ran ? report.failures : QStringList{error};
        for (const QString &failure : failures)
            *m_out << QStringLiteral("  ") << ReportWords::failure(failure) << Qt::endl;
        allRan = allRan && ran;
        const bool ok = ran && report.passed();
        passed += ok ? 1 : 0;
        summary << QStringLiteral("  %1  %2 — %3").arg(ReportWords::verdict(ok), play.name,
                                                        ran ? report.scenario : error);
    }
    *m_out << Qt::endl << QStringLiteral("Summary:") << Qt::endl << summary.join(QLatin1Char('\n')) << Qt::endl;
    if (!keepFolder.isEmpty())
        *m_out << QStringLiteral("The tills are kept in %1; tessaro-till shell --data <folder> opens one.").arg(base.path()) << Qt::endl;
    *m_out << ReportWords::tally({ReportWords::count(passed, QStringLiteral("passed")), ReportWords::count(plays.size() - passed, QStringLiteral("failed"))})
           << Qt::endl;
    if (!allRan)
        return ExitCode::CannotRun;
    return passed == plays.size() ? ExitCode::Passed : ExitCode::Failed;
}

} // namespace till
