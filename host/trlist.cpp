#include "trlist.h"

#include <QStringList>

namespace tr {

QString TrList::joined() const
{
    QStringList texts;
    texts.reserve(size());
    for (const Tr &message : *this)
        texts << message.text();
    return texts.join(QLatin1Char('\n'));
}

} // namespace tr
