#pragma once

#include "sessionoutcome.h"

#include <QString>

namespace till {

/// The client's cart operations under the simulation: a session drawn from a
/// seed drives tessaro::Interface directly (cart create, customer, coupons,
/// items, quantity and price overwrite, paid and cancelled) against the
/// emulator in this process, with faults on its requests. After every
/// operation: an operation that returned a cart returned the emulator's cart
/// as it stands (otherwise the client has told the cashier, by an exception
/// or a message), and no item was added twice except after a lost answer
/// (counted).
class CartSessionRunner
{
public:
    SessionOutcome run(quint64 seed, double faultRate) const;
};

} // namespace till
