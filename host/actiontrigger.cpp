#include "actiontrigger.h"

ActionTrigger::ActionTrigger(EContext::Code context, control::EActionType type, Order order, Function function,
                             Result result, Priority priority)
    : m_context(context)
    , m_type(type)
    , m_order(order)
    , m_function(std::move(function))
    , m_result(result)
    , m_priority(priority)
{
}
