#pragma once

#include <QSet>

/// One discount line of a document impact.
class DocumentImpactDetail
{
public:
    DocumentImpactDetail(int discountMode = 0, double discountSum = 0.0);

    int getDiscountMode() const { return m_discountMode; }
    /// Whether the line's discount mode is one of \a modes.
    bool checkDiscountMode(const QSet<int> &modes) const { return modes.contains(m_discountMode); }
    double getDiscountSum() const { return m_discountSum; }

private:
    int m_discountMode;
    double m_discountSum;
};
