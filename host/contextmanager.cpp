#include "contextmanager.h"

ContextManager::ContextManager()
    : m_current(EContext::Menu)
{
}
