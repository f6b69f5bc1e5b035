#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace till {

/// A JSON object kept in a file of its own, written as a PrivateFile: only
/// its owner may read a new one, and a till stopped while writing keeps the
/// last good copy.
class JsonFile
{
public:
    /// Reads \a path into \a object; a missing file is an empty object.
    static bool read(const QString &path, QJsonObject *object, QString *error);
    static bool write(const QString &path, const QJsonObject &object, QString *error);
};

} // namespace till
