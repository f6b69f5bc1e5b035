#include "savetofilelogic.h"

#include "abstractdocument.h"
#include "config.h"
#include "documentserializer.h"
#include "singleton.h"

#include "secrets/privatefile.h"

#include <QDir>
#include <QJsonDocument>

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
    // A document holds the service token in its plug-in data: only the till's
    // user may read it. A till killed while saving, or a full disk, keeps the
    // last good copy.
    const QByteArray json = QJsonDocument(DocumentSerializer::toJson(*document)).toJson(QJsonDocument::Indented);
    return PrivateFile::write(fileName(folder, document->getId()), json, nullptr);
}

QString SaveToFileLogic::fileName(const QString &folder, const QString &documentId)
{
    return QDir(folder).filePath(documentId + QStringLiteral(".json"));
}
