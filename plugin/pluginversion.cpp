#include "pluginversion.h"

#include <tessaroversion.h>

namespace tessaro {

namespace {

// A what-string: "@(#)" marks it, so that a tool finds the version in the
// library file without loading it (tessaro-till --version, what(1)).
constexpr char whatString[] = "@(#)TessaroBack " TESSARO_VERSION;
constexpr int whatMarkLength = 4;

} // namespace

QString pluginVersion()
{
    return QStringLiteral(TESSARO_VERSION);
}

QString pluginVersionLine()
{
    return QString::fromLatin1(whatString + whatMarkLength);
}

} // namespace tessaro
