#include "quantity.h"

Quantity::Quantity(double value)
    : m_value(value)
{
}
