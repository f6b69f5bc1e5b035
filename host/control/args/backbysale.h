#pragma once

#include "../action.h"

namespace control::args {

/// The arguments of a return-by-sale action: the identifier of the sale.
class BackBySale
{
public:
    explicit BackBySale(const Action &action);

    QString identifier() const;
    void setIdentifier(const QString &identifier) const;

private:
    Action m_action;
};

} // namespace control::args
