#pragma once

#include "logger.h"

namespace Log4Qt {

/// Hands out one logger per name; loggers live until the process ends.
class LogManager
{
public:
    static Logger *logger(const QString &name);
};

} // namespace Log4Qt
