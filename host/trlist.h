#pragma once

#include "tr.h"

#include <QList>

namespace tr {

/// An ordered list of cashier messages, shown one after the other.
class TrList : public QList<Tr>
{
public:
    using QList<Tr>::QList;

    /// The texts joined by line feeds.
    QString joined() const;
};

} // namespace tr
