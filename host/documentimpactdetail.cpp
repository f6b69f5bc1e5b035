#include "documentimpactdetail.h"

DocumentImpactDetail::DocumentImpactDetail(int discountMode, double discountSum)
    : m_discountMode(discountMode)
    , m_discountSum(discountSum)
{
}
