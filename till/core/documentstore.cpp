#include "documentstore.h"

#include <documentserializer.h>
#include <mockfactory.h>
#include <savetofilelogic.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace till {

DocumentStore::DocumentStore(const QString &folder)
    : m_folder(folder)
{
}

bool DocumentStore::load(QString *error)
{
    m_documents.clear();
    m_index.clear();
    const QDir dir(m_folder);
    const QStringList files = dir.entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (const QString &name : files) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            if (error)
                *error = QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
        QJsonParseError parseError;
        const QJsonDocument json = QJsonDocument::fromJson(file.readAll(), &parseError);
        const QSharedPointer<AbstractDocument> document = DocumentSerializer::fromJson(json.object());
        if (parseError.error != QJsonParseError::NoError || !document) {
            if (error)
                *error = QStringLiteral("%1 is not a document").arg(file.fileName());
            return false;
        }
        // Of two files with one id, the first in name order is the one found.
        if (!m_index.contains(document->getId()))
            m_index.insert(document->getId(), m_documents.size());
        m_documents << document;
    }
    return true;
}

QSharedPointer<AbstractDocument> DocumentStore::find(const QString &id) const
{
    const auto found = m_index.constFind(id);
    return found == m_index.cend() ? QSharedPointer<AbstractDocument>() : m_documents.at(*found);
}

bool DocumentStore::add(const QSharedPointer<AbstractDocument> &document)
{
    const auto found = m_index.constFind(document->getId());
    if (found != m_index.cend()) {
        m_documents[*found] = document;
    } else {
        m_index.insert(document->getId(), m_documents.size());
        m_documents << document;
    }
    return save(document);
}

bool DocumentStore::save(const QSharedPointer<AbstractDocument> &document) const
{
    return MockFactory<SaveToFileLogic>::create()->save(document, {});
}

} // namespace till
