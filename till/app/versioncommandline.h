#pragma once

#include "exitcode.h"

#include <QStringList>

namespace till {

/// tessaro-till --version: the till's version and, read from its metadata
/// without loading it, the plug-in's.
class VersionCommandLine
{
public:
    /// Parses \a arguments (the process's command line, the command second) and runs the command.
    static ExitCode exec(const QStringList &arguments);
};

} // namespace till
