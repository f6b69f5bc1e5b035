#pragma once

#include "basicplugin.h"

#include <QHash>
#include <QList>

#include <functional>

/// The host's action pipeline: how a cashier action runs through plug-ins.
///
/// For an action of a type in the current context (ContextManager), the
/// pipeline runs the enabled "before" triggers registered for that type and
/// context (or for every context, 255), highest priority first; a result of
/// 0 stops the action there. Then a handler registered for the type and
/// context takes the action over, or else the host's own implementation of
/// the action runs. Last, the "after" triggers run, highest priority first.
class ActionPipeline
{
public:
    /// The host's own implementation of an action.
    using HostAction = std::function<EContext::Result(const control::Action &)>;

    /// One step of a run, for whoever watches the pipeline (a log, a report).
    struct Step
    {
        enum Kind { BeforeTrigger, Handler, HostImplementation, AfterTrigger };
        Kind kind;
        control::EActionType actionType;
        int triggerId;      ///< 0 for handlers and the host's implementation
        int priority;
        EContext::Result result;
    };
    using Observer = std::function<void(const Step &)>;

    void addPlugin(BasicPlugin *plugin);
    void removePlugin(BasicPlugin *plugin);
    void setHostAction(control::EActionType type, const HostAction &action);
    void setObserver(const Observer &observer) { m_observer = observer; }

    /// Runs \a action through the pipeline; returns 0 when it was stopped.
    EContext::Result run(const control::Action &action) const;

    /// Makes the host's action queue run its actions through this pipeline.
    void installAsQueueRunner();

private:
    bool contextMatches(EContext::Code code) const;
    QList<BasicPlugin::Registration> triggersFor(const control::Action &action, ActionTrigger::Order order) const;
    void notify(const Step &step) const;

    QList<BasicPlugin *> m_plugins;
    QHash<int, HostAction> m_hostActions;
    Observer m_observer;
};
