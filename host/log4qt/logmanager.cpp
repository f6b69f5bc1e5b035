#include "logmanager.h"

#include <QHash>
#include <QMutex>

#include <memory>

namespace Log4Qt {

Logger *LogManager::logger(const QString &name)
{
    static QMutex mutex;
    static QHash<QString, std::shared_ptr<Logger>> loggers;
    QMutexLocker lock(&mutex);
    auto &slot = loggers[name];
    if (!slot)
        slot = std::make_shared<Logger>(name);
    return slot.get();
}

} // namespace Log4Qt
