#include "hostobjects.h"

#include <QByteArray>
#include <QMutex>

#include <map>
#include <utility>
#include <vector>

namespace {

using Slots = std::map<std::pair<int, QByteArray>, std::shared_ptr<void>>;

QMutex &slotsMutex()
{
    static QMutex mutex;
    return mutex;
}

Slots &allSlots()
{
    static Slots objects;
    return objects;
}

} // namespace

std::shared_ptr<void> &HostObjects::slot(Kind kind, const char *typeName)
{
    QMutexLocker lock(&slotsMutex());
    return allSlots()[{kind, QByteArray(typeName)}];
}

void HostObjects::resetAll()
{
    // The objects are destroyed outside the lock: a destructor may itself
    // reach for a host object.
    std::vector<std::shared_ptr<void>> objects;
    {
        QMutexLocker lock(&slotsMutex());
        for (auto &entry : allSlots())
            objects.push_back(std::move(entry.second));
    }
    objects.clear();
}
