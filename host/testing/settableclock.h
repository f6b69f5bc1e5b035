#pragma once

#include "../currenttime.h"

/// A clock for tests: it says what it was set to.
class SettableClock : public CurrentTime
{
public:
    explicit SettableClock(const QDateTime &now = QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC));

    QDateTime now() const override { return m_now; }
    void setNow(const QDateTime &now) { m_now = now; }
    void advance(qint64 seconds) { m_now = m_now.addSecs(seconds); }

private:
    QDateTime m_now;
};
