#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till init: creates a till's data folder with default settings.
class InitCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
