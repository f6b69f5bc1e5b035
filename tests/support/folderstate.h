#pragma once

#include <QString>
#include <QStringList>

/// Every file and folder under \a path with its size and modification time,
/// sorted: two states differ when anything in the folder changed.
QStringList folderState(const QString &path);
