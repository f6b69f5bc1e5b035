#include "rounding.h"

#include <QtGlobal>

namespace tessaro {

double roundToHundredths(double value)
{
    const double sign = value > 0 ? 1.0 : (value < 0 ? -1.0 : 0.0);
    const double hundredths = (value + 0.005 * sign) * 100 + 0.001 * sign;
    // Converting beyond 64 bits is undefined; a double that large is a whole
    // number already, so it has nothing to round (nor have NaN and infinity).
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (!(qAbs(hundredths) < limit))
        return value;
    return double(qint64(hundredths)) / 100;
}

} // namespace tessaro
