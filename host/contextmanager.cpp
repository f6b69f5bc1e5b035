#include "contextmanager.h"

ContextManager::ContextManager() = default;
