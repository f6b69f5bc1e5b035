#pragma once

#include "plugin/backplugin.h"

namespace tessaro {

/// The plug-in object as an installation check builds it: never initialised
/// and never handed to a host, only its currency lists read by the plug-in's
/// own readers, so that the check sees them exactly as init() would.
class CheckPlugin : public BackPlugin
{
public:
    /// Reads both currency lists from the host configuration with the
    /// plug-in's own readers (not an override a derived class may bring).
    CheckPlugin();

    QMap<int, QSet<int>> forbiddenMixedCurrencies() const { return forbiddenMixedValuts; }
    QMap<int, QSet<int>> additionalBackBySaleCurrencies() const { return additionalBackBySaleValuts; }
};

} // namespace tessaro
