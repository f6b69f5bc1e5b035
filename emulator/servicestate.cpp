#include "emulator/servicestate.h"

namespace tessaro::emulator {

ServiceState::ServiceState(const EmulatorSettings &settings)
    : shifts(settings)
{
}

QJsonObject ServiceState::toJson() const
{
    return {
        {QStringLiteral("tills"), shifts.toJson()},
        {QStringLiteral("carts"), carts.toJson()},
        {QStringLiteral("adviceNotes"), adviceNotes.toJson()},
        {QStringLiteral("deposits"), deposits.toJson()},
    };
}

} // namespace tessaro::emulator
