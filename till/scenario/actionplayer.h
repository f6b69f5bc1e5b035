#pragma once

#include "report.h"
#include "scenario.h"

#include <abstractdocument.h>

#include <QSharedPointer>
#include <QString>

#include <functional>

namespace till {

class ActionLog;
class Till;
class TillActions;

/// Plays one scenario action on a till as the cashier would. The action's
/// record in the log begins, the action runs through the till's actions, an
/// exception that reaches the host is caught as the host catches it, and the
/// record is finished. The scenario runner, the simulation and the shell play
/// every action through it; what they do with the outcome is theirs.
class ActionPlayer
{
public:
    /// What playing one action gave.
    struct Played
    {
        ActionRecord record;
        /// The document the action worked on.
        QSharedPointer<AbstractDocument> document;
        /// Says what reached the host, when an exception did; empty otherwise.
        QString exception;
        /// For a "restart" action: whether the till came back, and if not, why.
        bool restarted = true;
        QString restartError;
    };

    /// Restarts the till for a "restart" action; false, saying why in \a error, when it did not come back.
    using Restart = std::function<bool(QString *error)>;

    /// \a scenario names the documents the actions work on; they take the ids
    /// of run \a run. The player keeps \a scenario by reference, and plays on
    /// \a till through \a actions, recording in \a log.
    ActionPlayer(const Scenario &scenario, int run, Till *till, TillActions *actions, ActionLog *log);

    /// Later documents take the ids of run \a run.
    void setRun(int run) { m_run = run; }
    /// Replaces the till's restart within the process (Till::restart) for "restart" actions.
    void setRestart(const Restart &restart) { m_restart = restart; }

    /// Plays \a action, the scenario's action \a index. \a resuming tells that
    /// the till stopped right before it. The record, and the requests recorded
    /// meanwhile, are titled \a titled, or title(action) when it is empty.
    Played play(const ScenarioAction &action, int index, bool resuming = false, const QString &titled = QString());

    /// The id of the scenario's document \a name in run \a run.
    static QString documentId(int run, const QString &name);
    /// A line saying what \a action does.
    static QString title(const ScenarioAction &action);

private:
    /// Runs \a action through the till's actions; tells \a played the document
    /// it worked on and, for a restart, how the till came back.
    void perform(const ScenarioAction &action, int index, bool resuming, Played *played);
    QSharedPointer<AbstractDocument> scenarioDocument(const QString &name) const;
    /// The document the actions before \a index last opened.
    QString documentNameBefore(int index) const;

    const Scenario &m_scenario;
    int m_run = 0;
    Till *m_till;
    TillActions *m_actions;
    ActionLog *m_log;
    Restart m_restart;
};

} // namespace till
