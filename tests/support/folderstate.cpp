#include "folderstate.h"

#include <QDateTime>
#include <QDirIterator>

QStringList folderState(const QString &path)
{
    QStringList state;
    QDirIterator it(path, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        state << QStringLiteral("%1 %2 %3").arg(it.filePath()).arg(it.fileInfo().size()).arg(it.fileInfo().lastModified().toMSecsSinceEpoch());
    }
    state.sort();
    return state;
}
