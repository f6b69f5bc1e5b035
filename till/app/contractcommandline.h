#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till contract: compares a service's answers with a recorded
/// session's.
class ContractCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
