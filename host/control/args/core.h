#pragma once

#include "../action.h"

#include <QSharedPointer>

class GoodsItem;

namespace control::args {

/// The common arguments of an action: the position it concerns.
class Core
{
public:
    explicit Core(const Action &action);

    /// The goods position carried by the action, or null.
    QSharedPointer<GoodsItem> getPosition() const;
    /// Puts \a position into the action (visible to every copy of it).
    void setPosition(const QSharedPointer<GoodsItem> &position) const;
    /// The number of the position the action was started on; 0 when none.
    int positionNumber() const;
    /// Where the action was started from: 1 for a position of the document list.
    int kind() const;

private:
    Action m_action;
};

} // namespace control::args
