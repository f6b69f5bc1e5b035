#pragma once

#include <QByteArray>
#include <QString>

/// A file that may hold secrets: a till's settings (the token endpoint's
/// credentials), the host's configuration and documents (the service token
/// is kept on a return document), reports and progress files.
/// A new one is created readable and writable by its owner alone; one that
/// exists keeps its mode. Writing replaces the file only once the new
/// content is complete, so a till stopped while writing keeps the last good
/// copy.
class PrivateFile
{
public:
    static bool write(const QString &path, const QByteArray &content, QString *error);
    /// Adds \a content at the end of \a path (created owner-only when missing)
    /// and waits until it is on the disk. A till stopped while appending leaves
    /// the content before it whole; the end may hold part of \a content.
    static bool append(const QString &path, const QByteArray &content, QString *error);
};
