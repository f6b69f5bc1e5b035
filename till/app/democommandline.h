#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till demo: plays the bundled scenarios against the emulator in
/// the process.
class DemoCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
