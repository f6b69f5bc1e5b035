#pragma once

#include "scenario.h"

#include <abstractdocument.h>

#include <QSharedPointer>
#include <QString>

namespace till {

class ActionLog;
class Till;
class TillActions;

/// Plays a scenario's actions on a till, one at a time, as the cashier would.
class ActionPlayer
{
public:
    /// \a scenario names the documents the actions work on; they take the ids of run \a run.
    ActionPlayer(const Scenario &scenario, int run);

    /// The id of the scenario's document \a name in run \a run.
    static QString documentId(int run, const QString &name);
    /// A line saying what \a action does.
    static QString title(const ScenarioAction &action);

    /// Runs \a action as the cashier would on \a till; returns the document it
    /// worked on. \a resuming tells that the till stopped right before it.
    QSharedPointer<AbstractDocument> perform(const ScenarioAction &action, int index, bool resuming, Till *till,
                                             TillActions *actions, ActionLog *log);

private:
    QSharedPointer<AbstractDocument> scenarioDocument(const QString &name, Till *till) const;
    /// The document the actions before \a index last opened.
    QString documentNameBefore(int index) const;

    const Scenario &m_scenario;
    int m_run = 0;
};

} // namespace till
