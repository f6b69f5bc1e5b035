#include "jsonfile.h"

#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

namespace till {

bool JsonFile::read(const QString &path, QJsonObject *object, QString *error)
{
    QFile file(path);
    if (!file.exists()) {
        *object = QJsonObject();
        return true;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        if (error)
            *error = QStringLiteral("%1 is no JSON object: %2").arg(path, parseError.errorString());
        return false;
    }
    *object = document.object();
    return true;
}

bool JsonFile::write(const QString &path, const QJsonObject &object, QString *error)
{
    return writeBytes(path, QJsonDocument(object).toJson(QJsonDocument::Indented), error);
}

bool JsonFile::writeBytes(const QString &path, const QByteArray &content, QString *error)
{
    QSaveFile file(path);
    // commit() misses a write the disk cut short (a full disk), and would put
    // the truncated file in place of the good one: the write is checked here.
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush() && file.commit())
        return true;
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return false;
}

} // namespace till
