#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace till {

/// A JSON object kept in a file of its own. Writing replaces the file only
/// once the new content is complete, so a till stopped while writing keeps
/// the last good copy.
class JsonFile
{
public:
    /// Reads \a path into \a object; a missing file is an empty object.
    static bool read(const QString &path, QJsonObject *object, QString *error);
    static bool write(const QString &path, const QJsonObject &object, QString *error);
    /// Writes \a content to \a path the same way (the till's INI and dictionary files).
    static bool writeBytes(const QString &path, const QByteArray &content, QString *error);
};

} // namespace till
