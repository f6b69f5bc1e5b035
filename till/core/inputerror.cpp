#include "inputerror.h"

namespace till {

QString InputError::toString() const
{
    QString text = file.isEmpty() ? QStringLiteral("<scenario>") : file;
    if (line > 0)
        text += QStringLiteral(":%1:%2").arg(line).arg(column);
    text += QStringLiteral(": ");
    if (!path.isEmpty())
        text += path + QStringLiteral(": ");
    return text + message;
}

} // namespace till
