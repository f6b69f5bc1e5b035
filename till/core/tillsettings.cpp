#include "tillsettings.h"

namespace till {

TillSettings TillSettings::overriddenBy(const TillSettings &other) const
{
    TillSettings merged = *this;
    if (!other.store.isEmpty())
        merged.store = other.store;
    if (!other.till.isEmpty())
        merged.till = other.till;
    if (other.shift)
        merged.shift = other.shift;
    if (other.cashierId) {
        merged.cashierId = other.cashierId;
        merged.cashierCode = other.cashierCode;
        merged.cashierName = other.cashierName;
    }
    for (auto it = other.config.cbegin(); it != other.config.cend(); ++it)
        merged.config.insert(it.key(), it.value());
    if (other.backReasons)
        merged.backReasons = other.backReasons;
    if (other.currencies)
        merged.currencies = other.currencies;
    if (other.fiscalRegistrationNumber)
        merged.fiscalRegistrationNumber = other.fiscalRegistrationNumber;
    if (!other.fiscalDriveSerial.isEmpty())
        merged.fiscalDriveSerial = other.fiscalDriveSerial;
    return merged;
}

} // namespace till
