#include "savetofilelogic.h"

#include "abstractdocument.h"
#include "config.h"
#include "documentserializer.h"
#include "singleton.h"

#include <QDir>
#include <QJsonDocument>
#include <QSaveFile>

SaveToFileLogic::~SaveToFileLogic() = default;

bool SaveToFileLogic::save(const QSharedPointer<AbstractDocument> &document, const QStringList &)
{
    if (!document)
        return false;
    const QString folder = Singleton<Config>::instance()->getString(QStringLiteral("Host:documentsDir"));
    if (folder.isEmpty())
        return true;
    if (!QDir().mkpath(folder))
        return false;
    // QSaveFile replaces the old file only once the new one is complete, so a
    // till killed while saving keeps the last good copy.
    QSaveFile file(fileName(folder, document->getId()));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray json = QJsonDocument(DocumentSerializer::toJson(*document)).toJson(QJsonDocument::Indented);
    // commit() misses a write the disk cut short (a full disk), and would put
    // the truncated file in place of the good one: the write is checked here.
    if (file.write(json) != json.size() || !file.flush()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

QString SaveToFileLogic::fileName(const QString &folder, const QString &documentId)
{
    return QDir(folder).filePath(documentId + QStringLiteral(".json"));
}
