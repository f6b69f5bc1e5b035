#include "actionqueuecontroller.h"

ActionQueueController::ActionQueueController(QObject *parent)
    : QObject(parent)
{
}

EContext::Result ActionQueueController::runAction(const control::Action &action)
{
    m_ran << action;
    return m_runner ? m_runner(action) : m_defaultResult;
}

void ActionQueueController::addAction(const control::Action &action, bool urgent)
{
    if (urgent)
        m_queue.prepend(action);
    else
        m_queue.append(action);
}

void ActionQueueController::processQueue()
{
    while (!m_queue.isEmpty())
        runAction(m_queue.takeFirst());
}

void ActionQueueController::clearRecords()
{
    m_ran.clear();
    m_queue.clear();
}
