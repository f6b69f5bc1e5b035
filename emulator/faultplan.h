#pragma once

#include "emulator/fault.h"

#include <QList>
#include <QMutex>

#include <optional>

namespace tessaro::emulator {

/// The faults still to strike, in the order they were added. The server thread
/// takes from it on each request while tests or the admin path change it.
class FaultPlan
{
public:
    void add(const Fault &fault);
    /// Replaces the whole plan.
    void set(const QList<Fault> &faults);
    void clear();
    /// The faults still pending, with their remaining counts.
    QList<Fault> faults() const;

    /// The first fault meant for this request, used up by one strike; a fault
    /// whose count runs out leaves the plan. Nothing when no fault applies.
    std::optional<Fault> take(const QByteArray &method, const QString &path);

private:
    mutable QMutex m_mutex;
    QList<Fault> m_faults;
};

} // namespace tessaro::emulator
