#pragma once

#include <currenttime.h>

namespace till {

/// The host's clock in the simulation: always the simulation's fixed time,
/// which the emulator's clock shows too, so no decision depends on the hour.
class SimulatedClock : public CurrentTime
{
public:
    QDateTime now() const override;
};

} // namespace till
