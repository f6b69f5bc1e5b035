#pragma once

#include <QList>

namespace tessaro {

/// Reads the host's record of a shift: the total of each payment type.
///
/// Made through MockFactory<tessaro::Dao>, so a substitute can stand in for it.
class Dao
{
public:
    /// The total of one till payment type (the host's currency code) in a shift.
    struct ShiftPayment
    {
        int code = 0;
        double amount = 0.0;
    };

    virtual ~Dao();

    /// One entry per payment type known to the host, in the host's order.
    virtual QList<ShiftPayment> getShiftPayments(int shift) const;
};

} // namespace tessaro
