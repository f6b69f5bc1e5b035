#pragma once

#include "emulator/emulatorsettings.h"

#include <QHash>
#include <QJsonArray>
#include <QMutex>
#include <QPair>

namespace tessaro::emulator {

/// The service's view of every till: whether its shift is open, the shift's
/// number, and the till's running receipt (invoice) number. A till that was
/// not configured starts as the settings' shiftOpenByDefault says.
class ShiftBook
{
public:
    explicit ShiftBook(const EmulatorSettings &settings);

    bool isOpen(int storeNo, int tillNo) const;
    /// Opens the shift and returns its number (each opening counts one up).
    int open(int storeNo, int tillNo);
    /// Closes the shift and returns the number of the shift closed.
    int close(int storeNo, int tillNo);
    /// Sets the state directly, for tests and the admin path.
    void setOpen(int storeNo, int tillNo, bool open);
    /// The number of the till's current (or last) shift.
    int shiftNo(int storeNo, int tillNo) const;

    /// Takes the till's next invoice number and returns it in the service's
    /// raw form, 0/0/<till, 4 digits>/<number, 6 digits>.
    QString takeInvoiceId(int storeNo, int tillNo);

    /// [{"storeNo", "tillNo", "shiftOpen", "shiftNo", "nextInvoiceNo"}].
    QJsonArray toJson() const;

private:
    struct TillState {
        bool open = true;
        int shiftNo = 0;
        int nextInvoiceNo = 1;
    };
    using TillKey = QPair<int, int>;

    TillState &state(int storeNo, int tillNo);

    mutable QMutex m_mutex;
    bool m_openByDefault;
    QHash<TillKey, TillState> m_tills;
};

} // namespace tessaro::emulator
