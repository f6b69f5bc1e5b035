#pragma once

#include "report.h"
#include "scenario.h"
#include "tilldatafolder.h"

#include <abstractdocument.h>
#include <control/eactiontype.h>

#include <QByteArray>
#include <QSharedPointer>
#include <QString>

#include <functional>
#include <optional>

namespace till {

class CassetteRecorder;
class CashierScript;
class Till;
struct Observation;

/// Plays a scenario on a till: starts the till on its data folder with the
/// scenario's settings, runs each action as the cashier would, holds every
/// expectation against what happened, and keeps its progress on disk after
/// each action, so that a run stopped at any point continues where it was.
class ScenarioRunner
{
public:
    struct Options
    {
        QString pluginFolder;
        /// Starts over instead of continuing an unfinished run.
        bool again = false;
        /// Replaces the process for a "restart" action, the progress being
        /// saved; when unset the till restarts within the process. It does
        /// not return when it succeeds: if it returns, the run fails ("the
        /// till process could not be replaced").
        std::function<void()> restartProcess;
        /// Told of every record as soon as it is complete.
        std::function<void(const ActionRecord &record, int actionCount)> onRecord;
        /// Keeps every exchange with the service in a cassette; null: none.
        CassetteRecorder *recorder = nullptr;
        /// The till saves documents only where a host must (Till::setStrictHost).
        bool strictHost = false;
        /// The till kills itself right after a plug-in's before-hook of this
        /// action type lets the action go on (Till::setKillAfterHook).
        std::optional<control::EActionType> killAfterHook;
    };

    /// \a source is the scenario file's content: its hash names the run's progress.
    ScenarioRunner(const TillDataFolder &folder, const Scenario &scenario, const QByteArray &source, const QString &file);

    /// Plays the scenario from its first unfinished action to the end. False
    /// when the till could not run at all (\a error says why); failed
    /// expectations are in the report.
    bool run(const Options &options, Report *report, QString *error);

private:
    Observation observe(const Expectation &expectation, const QList<ActionRecord> &records,
                        const QSharedPointer<AbstractDocument> &document, Till *till) const;

    TillDataFolder m_folder;
    Scenario m_scenario;
    QByteArray m_source;
    QString m_file;
    int m_run = 0;
};

} // namespace till
