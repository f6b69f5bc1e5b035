#pragma once

#include <QString>

namespace tessaro {

/// The plug-in's version, "major.minor.patch", the project's version in CMake.
QString pluginVersion();

/// "TessaroBack " followed by the version: the line init() logs. The library
/// also keeps it as plain text, where `strings libtessaroback.so` finds it.
QString pluginVersionLine();

} // namespace tessaro
