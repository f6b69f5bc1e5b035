#include "emulator/clock.h"

#include <QMutexLocker>

namespace tessaro::emulator {

QDateTime Clock::now() const
{
    const QMutexLocker locker(&m_mutex);
    const QDateTime base = m_fixed.isValid() ? m_fixed : QDateTime::currentDateTimeUtc();
    return base.addMSecs(m_offsetMs);
}

void Clock::setNow(const QDateTime &time)
{
    const QMutexLocker locker(&m_mutex);
    m_fixed = time.toUTC();
    m_offsetMs = 0;
}

void Clock::advance(qint64 seconds)
{
    const QMutexLocker locker(&m_mutex);
    m_offsetMs += seconds * 1000;
}

void Clock::reset()
{
    const QMutexLocker locker(&m_mutex);
    m_fixed = QDateTime();
    m_offsetMs = 0;
}

} // namespace tessaro::emulator
