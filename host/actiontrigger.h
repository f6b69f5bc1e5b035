#pragma once

#include "control/action.h"
#include "econtext.h"

#include <functional>

/// A plug-in hook on a cashier action: run before or after the action, in a
/// context, by priority (higher first).
class ActionTrigger
{
public:
    enum Order {
        After = 0,
        Before = 1,
    };
    enum Result {
        Default = 0,
    };
    enum Priority {
        Low = 1,
        Normal = 2,
        High = 3,
    };
    using Function = std::function<EContext::Result(const control::Action &)>;

    ActionTrigger(EContext::Code context, control::EActionType type, Order order, Function function,
                  Result result, Priority priority);

    EContext::Code context() const { return m_context; }
    control::EActionType actionType() const { return m_type; }
    Order order() const { return m_order; }
    Result result() const { return m_result; }
    Priority priority() const { return m_priority; }
    EContext::Result operator()(const control::Action &action) const { return m_function(action); }

private:
    EContext::Code m_context;
    control::EActionType m_type;
    Order m_order;
    Function m_function;
    Result m_result;
    Priority m_priority;
};
