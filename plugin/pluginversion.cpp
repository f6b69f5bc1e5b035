#include "pluginversion.h"

#include <tessaroversion.h>

namespace tessaro {

namespace {

constexpr char versionLine[] = "TessaroBack " TESSARO_VERSION;

} // namespace

QString pluginVersion()
{
    return QStringLiteral(TESSARO_VERSION);
}

QString pluginVersionLine()
{
    return QString::fromLatin1(versionLine);
}

} // namespace tessaro
