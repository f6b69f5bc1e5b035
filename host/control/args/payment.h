#pragma once

#include "../action.h"

namespace control::args {

/// The arguments of a payment action.
class Payment
{
public:
    explicit Payment(const Action &action);

    /// The currency code of the payment, as the cashier's screen gave it.
    QString valutCode() const;
    double amount() const;

private:
    Action m_action;
};

} // namespace control::args
