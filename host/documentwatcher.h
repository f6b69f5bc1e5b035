#pragma once

#include <QSharedPointer>
#include <QWeakPointer>

class AbstractDocument;

/// Something the host binds to the document in progress.
class DocumentWatcher
{
public:
    virtual ~DocumentWatcher();

    /// Binds \a document; the host calls it whenever the document in progress changes.
    virtual void setDocument(const QSharedPointer<AbstractDocument> &document);
    /// The bound document, or null when it is gone.
    QSharedPointer<AbstractDocument> getDocument() const { return m_document.toStrongRef(); }

private:
    QWeakPointer<AbstractDocument> m_document;
};
