#include "tmcunit.h"

TmcUnit::TmcUnit(bool fractional)
    : m_fractional(fractional)
{
}
