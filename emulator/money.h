#pragma once

namespace tessaro::emulator {

/// Money arithmetic of the service: amounts to the cent.
class Money
{
public:
    /// Rounds to two decimals, halves away from zero.
    static double round(double amount);
};

} // namespace tessaro::emulator
