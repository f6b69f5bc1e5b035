#include "tmc.h"

Tmc::Tmc(const QSet<int> &getMethods)
    : m_getMethods(getMethods)
{
}
