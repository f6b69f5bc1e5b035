#include "rounding.h"

#include <QtGlobal>

namespace tessaro {

double roundToHundredths(double value)
{
    const double sign = value > 0 ? 1.0 : (value < 0 ? -1.0 : 0.0);
    return double(qint64((value + 0.005 * sign) * 100 + 0.001 * sign)) / 100;
}

} // namespace tessaro
