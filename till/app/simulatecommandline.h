#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till simulate: seeded random sessions with faults and kills,
/// every invariant checked; also a worker's and a replay's command line.
class SimulateCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
