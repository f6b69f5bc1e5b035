#include "inputerror.h"

#include "secrets/linesanitizer.h"

namespace till {

QString InputError::toString() const
{
    QString text = file.isEmpty() ? QStringLiteral("<scenario>") : file;
    if (line > 0)
        text += QStringLiteral(":%1:%2").arg(line).arg(column);
    text += QStringLiteral(": ");
    if (!path.isEmpty())
        text += path + QStringLiteral(": ");
    // Paths and messages quote the file's own keys and values: one line, no escape sequence.
    return LineSanitizer::escaped(text + message);
}

} // namespace till
