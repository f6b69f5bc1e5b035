#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till check: checks a till's configuration and its way to the
/// service; its exit code is the check's verdict.
class CheckCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
