#pragma once

#include "documentimpactdetail.h"

#include <QList>

/// A discount applied to a document, with its lines.
class DocumentImpact
{
public:
    explicit DocumentImpact(const QList<DocumentImpactDetail> &totals = {});

    QList<DocumentImpactDetail> getTotals() const { return m_totals; }
    void addTotal(const DocumentImpactDetail &detail) { m_totals << detail; }

private:
    QList<DocumentImpactDetail> m_totals;
};
