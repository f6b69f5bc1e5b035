#include "hostobjects.h"

#include <QByteArray>
#include <QMutex>

#include <map>
#include <utility>

std::shared_ptr<void> &HostObjects::slot(Kind kind, const char *typeName)
{
    static QMutex mutex;
    static std::map<std::pair<int, QByteArray>, std::shared_ptr<void>> objects;
    QMutexLocker lock(&mutex);
    return objects[{kind, QByteArray(typeName)}];
}
