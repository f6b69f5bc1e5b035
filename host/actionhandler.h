#pragma once

#include "control/action.h"
#include "econtext.h"

#include <functional>

/// A plug-in handler that takes over a cashier action in a context: the host
/// runs it instead of its own implementation of the action.
class ActionHandler
{
public:
    using Function = std::function<EContext::Result(const control::Action &)>;

    ActionHandler(EContext::Code context, control::EActionType type, Function function, bool replacesHost);

    EContext::Code context() const { return m_context; }
    control::EActionType actionType() const { return m_type; }
    /// Whether the handler replaces the host's own implementation of the action.
    bool replacesHost() const { return m_replacesHost; }
    EContext::Result operator()(const control::Action &action) const { return m_function(action); }

private:
    EContext::Code m_context;
    control::EActionType m_type;
    Function m_function;
    bool m_replacesHost;
};
