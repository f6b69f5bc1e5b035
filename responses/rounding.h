#pragma once

namespace tessaro {

/// Rounds \a value to two decimals, half away from zero, as the service counts
/// money. A thousandth of a hundredth more is pushed away from zero to absorb
/// binary error (0.285 is stored as 0.28499…).
double roundToHundredths(double value);

} // namespace tessaro
