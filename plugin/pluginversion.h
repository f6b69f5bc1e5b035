#pragma once

#include <QString>

namespace tessaro {

/// The plug-in's version, "major.minor.patch", the project's version in CMake.
QString pluginVersion();

/// "TessaroBack " followed by the version: the line init() logs. The library
/// also keeps it as the what-string "@(#)TessaroBack x.y.z", where a tool
/// finds it without loading the library.
QString pluginVersionLine();

} // namespace tessaro
