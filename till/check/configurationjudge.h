#pragma once

#include "configfiletext.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace till {

class CheckReport;

/// Judges the plug-in's configuration as the plug-in read it (the "settings"
/// and "sections" of its own check) and against the till's currencies: one
/// line per key with the effective value, secrets shown only as their length.
///
/// Failures: an address that does not parse, lacks a scheme or names another
/// one, holds a control character or a blank, or is absurdly long; a time-out
/// that is not positive; a receipt-number mask that is no regular expression
/// or has no group "result"; token authorisation without client id
/// or authorization header; the gateway on with an empty key, secret or stage,
/// or a value with blanks around it; a till currency missing from a payment
/// code table that maps others. Warnings: plain http to a host that is not
/// this machine, a service address ending in "/", a time-out above a minute
/// or above the transport's cap, a number or yes/no setting the plug-in cannot
/// read as one, section keys the plug-in ignores,
/// no payment or VAT code table, VAT codes that map no till code, currency
/// lists that name currencies the till does not know.
class ConfigurationJudge
{
public:
    /// \a currencies: the till's currency codes with their names; nothing
    /// when the till's dictionary is unknown (those checks are left out).
    ConfigurationJudge(const QJsonObject &pluginReport, const std::optional<QHash<int, QString>> &currencies);

    void judge(CheckReport *report) const;
    /// Values that the configuration file's format cuts at a ";": what the
    /// plug-in reads is not what was written.
    void judgeCuts(const QList<ConfigFileText::Cut> &cuts, CheckReport *report) const;

    /// The setting \a key of the plug-in's report (empty when absent).
    QJsonObject setting(const QString &key) const;
    /// Whether the address \a key is worth probing: it parses as http or
    /// https with a host, and holds nothing that no request can carry.
    bool addressUsable(const QString &key) const;
    bool gatewayOn() const;
    bool tokenAuthUsed() const;

private:
    void judgeAddress(const QString &key, CheckReport *report) const;
    void judgeSecret(const QString &key, const QString &shown, bool required, const QString &hint, CheckReport *report) const;
    void judgeTimeout(CheckReport *report) const;
    void judgeTokenAuth(CheckReport *report) const;
    void judgeGateway(CheckReport *report) const;
    void judgePlain(const QString &key, CheckReport *report) const;
    void judgeCouponMask(CheckReport *report) const;
    /// A currency's receipt-number mask and custom fields.
    void judgeCurrency(const QJsonObject &currency, CheckReport *report) const;
    void judgeSection(const QJsonObject &section, CheckReport *report) const;
    void judgePaymentCodes(const QJsonObject &section, CheckReport *report) const;
    void judgeVatCodes(const QJsonObject &section, CheckReport *report) const;
    void judgeCurrencyList(const QJsonObject &section, CheckReport *report) const;

    QJsonArray m_settings;
    QJsonArray m_sections;
    QJsonArray m_currencySettings;
    std::optional<QHash<int, QString>> m_currencies;
};

} // namespace till
