#include "actionpipeline.h"

#include "actionqueuecontroller.h"
#include "contextmanager.h"
#include "singleton.h"

#include <algorithm>

void ActionPipeline::addPlugin(BasicPlugin *plugin)
{
    if (!m_plugins.contains(plugin))
        m_plugins << plugin;
}

void ActionPipeline::removePlugin(BasicPlugin *plugin)
{
    m_plugins.removeAll(plugin);
}

void ActionPipeline::setHostAction(control::EActionType type, const HostAction &action)
{
    m_hostActions.insert(type, action);
}

bool ActionPipeline::contextMatches(EContext::Code code) const
{
    return code == EContext::Any || Singleton<ContextManager>::instance()->isCurrentContext(code);
}

QList<BasicPlugin::Registration> ActionPipeline::triggersFor(const control::Action &action, ActionTrigger::Order order) const
{
    QList<BasicPlugin::Registration> matching;
    for (const BasicPlugin *plugin : m_plugins) {
        const auto registrations = plugin->triggers();
        for (const auto &registration : registrations) {
            const ActionTrigger &trigger = registration.trigger;
            if (registration.enabled && trigger.actionType() == action.getType() && trigger.order() == order
                && contextMatches(trigger.context()))
                matching << registration;
        }
    }
    std::stable_sort(matching.begin(), matching.end(), [](const auto &a, const auto &b) {
        return a.trigger.priority() > b.trigger.priority();
    });
    return matching;
}

void ActionPipeline::notify(const Step &step) const
{
    if (m_observer)
        m_observer(step);
}

EContext::Result ActionPipeline::run(const control::Action &action) const
{
    const control::EActionType type = action.getType();
    for (const auto &registration : triggersFor(action, ActionTrigger::Before)) {
        const EContext::Result result = registration.trigger(action);
        notify({Step::BeforeTrigger, type, registration.id, registration.trigger.priority(), result});
        if (result == EContext::Stop)
            return EContext::Stop;
    }

    EContext::Result result = EContext::Continue;
    bool hostReplaced = false;
    for (const BasicPlugin *plugin : m_plugins) {
        const auto handlers = plugin->handlers();
        for (const ActionHandler &handler : handlers) {
            if (hostReplaced || handler.actionType() != type || !contextMatches(handler.context()))
                continue;
            result = handler(action);
            notify({Step::Handler, type, 0, 0, result});
            hostReplaced = handler.replacesHost();
            if (result == EContext::Stop)
                return EContext::Stop;
        }
    }
    if (!hostReplaced && m_hostActions.contains(type)) {
        result = m_hostActions.value(type)(action);
        notify({Step::HostImplementation, type, 0, 0, result});
        if (result == EContext::Stop)
            return EContext::Stop;
    }

    for (const auto &registration : triggersFor(action, ActionTrigger::After)) {
        const EContext::Result afterResult = registration.trigger(action);
        notify({Step::AfterTrigger, type, registration.id, registration.trigger.priority(), afterResult});
    }
    return result;
}

void ActionPipeline::installAsQueueRunner()
{
    Singleton<ActionQueueController>::instance()->setRunner([this](const control::Action &action) { return run(action); });
}
