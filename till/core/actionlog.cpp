#include "actionlog.h"

namespace till {

namespace {

QString stepKind(ActionPipeline::Step::Kind kind)
{
    switch (kind) {
    case ActionPipeline::Step::BeforeTrigger:
        return QStringLiteral("before");
    case ActionPipeline::Step::Handler:
        return QStringLiteral("handler");
    case ActionPipeline::Step::HostImplementation:
        return QStringLiteral("host");
    case ActionPipeline::Step::AfterTrigger:
        break;
    }
    return QStringLiteral("after");
}

} // namespace

void ActionLog::begin(int index, const QString &type, const QString &title)
{
    m_current = ActionRecord();
    m_current.index = index;
    m_current.type = type;
    m_current.title = title;
}

ActionRecord ActionLog::finish()
{
    ActionRecord record = m_current;
    m_current = ActionRecord();
    return record;
}

void ActionLog::addStep(const ActionPipeline::Step &step)
{
    m_current.steps << HookStep{stepKind(step.kind), int(step.actionType), step.triggerId, step.priority, int(step.result)};
}

void ActionLog::addDialog(const DialogRecord &dialog)
{
    m_current.dialogs << dialog;
}

void ActionLog::addRequest(const RequestRecord &request)
{
    m_current.requests << request;
}

void ActionLog::addNote(const QString &note)
{
    m_current.notes << note;
}

void ActionLog::addFailure(const QString &failure)
{
    m_current.failures << failure;
}

void ActionLog::setResult(int result)
{
    m_current.result = result;
}

} // namespace till
