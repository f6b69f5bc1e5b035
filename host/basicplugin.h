#pragma once

#include "actionhandler.h"
#include "actiontrigger.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

/// The host's plug-in interface: what a plug-in registers with the host's
/// action pipeline. The host keeps a copy of every trigger and handler; the
/// pipeline reads them back through triggers() and handlers().
class BasicPlugin
{
public:
    /// A registered trigger and whether it currently fires.
    struct Registration
    {
        int id;
        ActionTrigger trigger;
        bool enabled;
    };

    BasicPlugin();
    virtual ~BasicPlugin();

    virtual void init();
    virtual void deinit();

    /// Whether the plug-in provides \a feature (compared with its feature name).
    virtual bool isFeatureMatched(const QString &feature) const;
    void setFeature(const QString &feature) { m_feature = feature; }
    QString feature() const { return m_feature; }

    /// Registers a hook; returns its identifier for disableTriggers().
    int addTrigger(const ActionTrigger &trigger);
    void addHandler(const ActionHandler &handler);
    /// Switches the triggers with these identifiers off until enableTriggers().
    void disableTriggers(const QSet<int> &ids);
    /// Switches every disabled trigger on again.
    void enableTriggers();

    QList<Registration> triggers() const { return m_triggers; }
    QList<ActionHandler> handlers() const { return m_handlers; }
    bool isTriggerEnabled(int id) const;

private:
    QString m_feature;
    QList<Registration> m_triggers;
    QList<ActionHandler> m_handlers;
    int m_nextId = 1;
};

#define BasicPlugin_iid "norvik.AbstractPlugin"
Q_DECLARE_INTERFACE(BasicPlugin, BasicPlugin_iid)
