#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till shell: works the till at the terminal.
class ShellCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
