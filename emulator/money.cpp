#include "emulator/money.h"

#include <cmath>

namespace tessaro::emulator {

double Money::round(double amount)
{
    return std::round(amount * 100.0) / 100.0;
}

} // namespace tessaro::emulator
