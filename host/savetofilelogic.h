#pragma once

#include <QSharedPointer>
#include <QStringList>

class AbstractDocument;

/// Writes the document in progress out, so that it survives a restart of the
/// till. Made through MockFactory<SaveToFileLogic>.
///
/// Documents go to the folder named by the configuration's
/// "Host:documentsDir", one JSON file per document named after its id; with
/// no folder configured the host keeps them in memory only.
class SaveToFileLogic
{
public:
    virtual ~SaveToFileLogic();

    /// Saves \a document; \a parts, when not empty, names the parts that
    /// changed (the host saves the whole document either way).
    virtual bool save(const QSharedPointer<AbstractDocument> &document, const QStringList &parts);

    /// The file \a document is saved to in \a folder.
    static QString fileName(const QString &folder, const QString &documentId);
};
