#pragma once

#include "emulator/advicenotebook.h"
#include "emulator/cartstore.h"
#include "emulator/depositbook.h"
#include "emulator/shiftbook.h"

#include <QJsonObject>

namespace tessaro::emulator {

/// What the service remembers between requests. Each part guards itself, so
/// tests may read it while the server thread changes it.
class ServiceState
{
public:
    explicit ServiceState(const EmulatorSettings &settings);

    /// {"tills", "carts", "adviceNotes", "deposits"}.
    QJsonObject toJson() const;

    ShiftBook shifts;
    CartStore carts;
    AdviceNoteBook adviceNotes;
    DepositBook deposits;
};

} // namespace tessaro::emulator
