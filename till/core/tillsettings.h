#pragma once

#include <QList>
#include <QMap>
#include <QString>

#include <optional>

namespace till {

/// A till's settings: the data folder's (till.ini and dictionaries.json), with
/// those a scenario asks for on top.
struct TillSettings
{
    QString store;
    QString till;
    std::optional<int> shift;
    std::optional<int> cashierId;
    QString cashierCode;
    QString cashierName;
    /// Configuration keys ("Tessaro:url", "Tessaro.ForbiddenMixedValuts:1") to values.
    QMap<QString, QString> config;
    struct Reason
    {
        int kind = 2;
        int code = 0;
        QString name;
    };
    /// Set: replaces the data folder's return reasons.
    std::optional<QList<Reason>> backReasons;
    struct Currency
    {
        int code = 0;
        QString name;
        int type = 1;
    };
    /// Set: replaces the data folder's currencies.
    std::optional<QList<Currency>> currencies;
    std::optional<qint64> fiscalRegistrationNumber;
    QString fiscalDriveSerial;

    /// These settings with every value that \a other sets taken from \a other.
    TillSettings overriddenBy(const TillSettings &other) const;
};

} // namespace till
