#pragma once

#include "backdocument.h"

#include <QMap>
#include <QSet>

/// A return built from the sale document it reverses.
class BackBySaleDocument : public BackDocument
{
    Q_OBJECT

public:
    explicit BackBySaleDocument(QObject *parent = nullptr);

    /// The identifier of the sale, as scanned from its receipt.
    QString getSaleIdentifier() const { return m_saleIdentifier; }
    void setSaleIdentifier(const QString &identifier) { m_saleIdentifier = identifier; }

    /// The sale document, when the host still has it.
    QSharedPointer<AbstractDocument> getSourceDocument() const { return m_source; }
    void setSourceDocument(const QSharedPointer<AbstractDocument> &source) { m_source = source; }

    /// For a currency of the sale, the further currencies the return may be paid in.
    void setAdditionalBackBySaleValuts(const QMap<int, QSet<int>> &valuts) { m_additionalValuts = valuts; }
    QMap<int, QSet<int>> getAdditionalBackBySaleValuts() const { return m_additionalValuts; }

private:
    QString m_saleIdentifier;
    QSharedPointer<AbstractDocument> m_source;
    QMap<int, QSet<int>> m_additionalValuts;
};
