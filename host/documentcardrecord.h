#pragma once

#include <QVariant>

/// A card presented for a document (a loyalty card identifies the customer).
class DocumentCardRecord
{
public:
    DocumentCardRecord(int cardType = 0, const QVariant &number = QVariant());

    int getCardType() const { return m_cardType; }
    QVariant getNumber() const { return m_number; }
    void setNumber(const QVariant &number) { m_number = number; }
    int getMaxPointsForSpend() const { return m_maxPointsForSpend; }
    void setMaxPointsForSpend(int points) { m_maxPointsForSpend = points; }

private:
    int m_cardType;
    QVariant m_number;
    int m_maxPointsForSpend = 0;
};
