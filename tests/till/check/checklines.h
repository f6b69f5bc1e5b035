#pragma once

#include "checkreport.h"

#include <QList>
#include <QMetaType>
#include <QString>

Q_DECLARE_METATYPE(till::CheckReport::Level)

/// The lines of a check's report that a judge wrote under \a name, in order.
inline QList<till::CheckReport::Item> checkLines(const till::CheckReport &report, const QString &name)
{
    QList<till::CheckReport::Item> lines;
    const QList<till::CheckReport::Item> items = report.items();
    for (const till::CheckReport::Item &item : items) {
        if (item.name == name)
            lines << item;
    }
    return lines;
}

/// The one line \a name of \a report; an empty one when there is none or more.
inline till::CheckReport::Item checkLine(const till::CheckReport &report, const QString &name)
{
    const QList<till::CheckReport::Item> lines = checkLines(report, name);
    return lines.size() == 1 ? lines.first() : till::CheckReport::Item();
}
