#include "emulator/faultplan.h"

#include <QMutexLocker>

namespace tessaro::emulator {

void FaultPlan::add(const Fault &fault)
{
    const QMutexLocker locker(&m_mutex);
    m_faults.append(fault);
}

void FaultPlan::set(const QList<Fault> &faults)
{
    const QMutexLocker locker(&m_mutex);
    m_faults = faults;
}

void FaultPlan::clear()
{
    set({});
}

QList<Fault> FaultPlan::faults() const
{
    const QMutexLocker locker(&m_mutex);
    return m_faults;
}

std::optional<Fault> FaultPlan::take(const QByteArray &method, const QString &path)
{
    const QMutexLocker locker(&m_mutex);
    for (auto it = m_faults.begin(); it != m_faults.end(); ++it) {
        if (!it->matches(method, path))
            continue;
        if (it->skip > 0) {
            --it->skip;
            continue;
        }
        const Fault struck = *it;
        if (it->count > 0 && --it->count == 0)
            m_faults.erase(it);
        return struck;
    }
    return std::nullopt;
}

} // namespace tessaro::emulator
