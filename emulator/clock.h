#pragma once

#include <QDateTime>
#include <QMutex>

namespace tessaro::emulator {

/// The emulator's idea of "now". Token expiry, the gateway's date check and the
/// journal's time stamps all read it, so a test fixes or advances it instead of
/// sleeping. Thread-safe: the server thread reads it while a test moves it.
class Clock
{
public:
    /// The current time in UTC: the fixed time when one is set, the system
    /// time otherwise, moved by every advance made so far.
    QDateTime now() const;

    /// Stops the clock at a time; later advances still move it.
    void setNow(const QDateTime &time);
    /// Moves the clock forward, or back for a negative count.
    void advance(qint64 seconds);
    /// Back to the running system time.
    void reset();

private:
    mutable QMutex m_mutex;
    QDateTime m_fixed;
    qint64 m_offsetMs = 0;
};

} // namespace tessaro::emulator
