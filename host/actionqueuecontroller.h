#pragma once

#include "control/action.h"
#include "econtext.h"

#include <QList>
#include <QObject>

#include <functional>

/// The host's queue of cashier actions. Actions run synchronously through the
/// runner that the host application installs (its action pipeline); every
/// action run or queued is also recorded, so tests see what a hook started.
class ActionQueueController : public QObject
{
    Q_OBJECT

public:
    using Runner = std::function<EContext::Result(const control::Action &)>;

    explicit ActionQueueController(QObject *parent = nullptr);

    /// Runs \a action at once and returns its result.
    EContext::Result runAction(const control::Action &action);
    /// Puts \a action on the queue; \a urgent puts it before the waiting ones.
    virtual void addAction(const control::Action &action, bool urgent);

    /// Runs queued actions until the queue is empty.
    void processQueue();

    void setRunner(const Runner &runner) { m_runner = runner; }
    /// The result of an action when no runner is installed.
    void setDefaultResult(EContext::Result result) { m_defaultResult = result; }

    QList<control::Action> ranActions() const { return m_ran; }
    QList<control::Action> queuedActions() const { return m_queue; }
    void clearRecords();

private:
    Runner m_runner;
    EContext::Result m_defaultResult = EContext::Continue;
    QList<control::Action> m_queue;
    QList<control::Action> m_ran;
};
