#include "settableclock.h"

SettableClock::SettableClock(const QDateTime &now)
    : m_now(now)
{
}
