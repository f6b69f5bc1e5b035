#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till run: plays a scenario file on the till and reports; a run
/// stopped at any point continues from its first unfinished action.
class RunCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
