#include "documentimpact.h"

DocumentImpact::DocumentImpact(const QList<DocumentImpactDetail> &totals)
    : m_totals(totals)
{
}
