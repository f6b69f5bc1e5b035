#include "actionhandler.h"

ActionHandler::ActionHandler(EContext::Code context, control::EActionType type, Function function, bool replacesHost)
    : m_context(context)
    , m_type(type)
    , m_function(std::move(function))
    , m_replacesHost(replacesHost)
{
}
