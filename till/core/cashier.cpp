#include "cashier.h"

namespace till {

Cashier::~Cashier() = default;

} // namespace till
