#include "jsonfile.h"

#include "secrets/privatefile.h"

#include <QFile>
#include <QJsonDocument>

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
    return PrivateFile::write(path, QJsonDocument(object).toJson(QJsonDocument::Indented), error);
}

} // namespace till
