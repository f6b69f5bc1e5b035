#include "basicplugin.h"

BasicPlugin::BasicPlugin() = default;

BasicPlugin::~BasicPlugin() = default;

void BasicPlugin::init()
{
}

void BasicPlugin::deinit()
{
    m_triggers.clear();
    m_handlers.clear();
}

bool BasicPlugin::isFeatureMatched(const QString &feature) const
{
    return !m_feature.isEmpty() && feature == m_feature;
}

int BasicPlugin::addTrigger(const ActionTrigger &trigger)
{
    const int id = m_nextId++;
    m_triggers.append({id, trigger, true});
    return id;
}

void BasicPlugin::addHandler(const ActionHandler &handler)
{
    m_handlers.append(handler);
}

void BasicPlugin::disableTriggers(const QSet<int> &ids)
{
    for (Registration &registration : m_triggers) {
        if (ids.contains(registration.id))
            registration.enabled = false;
    }
}

void BasicPlugin::enableTriggers()
{
    for (Registration &registration : m_triggers)
        registration.enabled = true;
}

bool BasicPlugin::isTriggerEnabled(int id) const
{
    for (const Registration &registration : m_triggers) {
        if (registration.id == id)
            return registration.enabled;
    }
    return false;
}
