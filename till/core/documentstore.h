#pragma once

#include <abstractdocument.h>

#include <QHash>
#include <QList>
#include <QSharedPointer>
#include <QString>

namespace till {

/// The till's documents: kept in memory while the till runs, written out by
/// the host's SaveToFileLogic after every change and read back from the
/// documents folder at start, plug-in data included.
class DocumentStore
{
public:
    explicit DocumentStore(const QString &folder);

    /// Forgets what is in memory and reads every document file of the folder.
    bool load(QString *error);

    QSharedPointer<AbstractDocument> find(const QString &id) const;
    QList<QSharedPointer<AbstractDocument>> documents() const { return m_documents; }

    /// Adds \a document (replacing one of the same id) and saves it.
    bool add(const QSharedPointer<AbstractDocument> &document);
    /// Writes \a document out through the host's SaveToFileLogic.
    bool save(const QSharedPointer<AbstractDocument> &document) const;

private:
    QString m_folder;
    QList<QSharedPointer<AbstractDocument>> m_documents;
    /// Position in m_documents by id: a day's documents are found at one cost.
    QHash<QString, qsizetype> m_index;
};

} // namespace till
