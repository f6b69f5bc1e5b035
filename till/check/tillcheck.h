#pragma once

#include "checkreport.h"

#include <QHash>
#include <QString>

#include <optional>

namespace till {

/// The installation check of a till: its configuration judged as the plug-in
/// reads it, the way to the service step by step, the plug-in's own token and
/// request, the gateway's verdict on its signature and the till's clock.
///
/// Read-only towards the till (nothing is written into its folder) and towards
/// the service (a token request, a plain GET for the service's clock and one
/// GET of "/messages/<id>" for an id no cart has). The plug-in is loaded as the
/// host loads it but never initialised; its own half of the check runs through
/// the entry point that PluginSelfCheck finds.
class TillCheck
{
public:
    struct Options
    {
        /// A till's data folder (till.ini, dictionaries.json) ...
        QString dataFolder;
        /// ... or a host configuration file; exactly one of the two is set.
        QString configFile;
        /// The till's currencies for a bare configuration file (dictionaries.json form).
        QString dictionariesFile;
        QString pluginFolder;
        /// How far the gateway lets a request's time lie from its own.
        int clockToleranceSeconds = 15 * 60;
    };

    explicit TillCheck(const Options &options);

    CheckReport run() const;

private:
    /// The configuration file and the till's currencies; false after a failure line.
    bool readTill(CheckReport *report, QString *configFile, std::optional<QHash<int, QString>> *currencies) const;

    Options m_options;
};

} // namespace till
