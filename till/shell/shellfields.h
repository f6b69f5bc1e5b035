#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

namespace till {

/// The field=value words of the shell's add and pay commands, turned into
/// the JSON a scenario gives for a position or a payment, so that the
/// scenario parser checks them and builds the very PositionSpec and
/// PaymentSpec a scenario file would:
///
///     add 100200 2 150 barcode=4600000000017 vat=1 rate=20 vatsum=50
///     pay 2 230 rrn=412345678901 terminal=T1 operation=OP-17
///
/// A position takes every key of a scenario's position but its code (which
/// the command's first word gives), lists written with commas
/// (vatCodes=1,2), additional data as data.NAMESPACE.KEY=VALUE, and three
/// short forms: vat=CODE (the till's VAT code, at VAT index 0 unless vatIndex
/// says another), rate=PERCENT (vatRate) and vatsum=AMOUNT (vatSums).
/// A payment takes change=true and the payment details (cardNum, terminalId,
/// operationId, rrn…), with terminal= and operation= for short.
class ShellFields
{
public:
    /// {"code": code, ...} for ScenarioParser::parsePosition; nothing when a
    /// word is no field=value or names no field (\a error says which).
    static std::optional<QJsonObject> position(const QString &code, const QStringList &words, QString *error);
    /// {"code", "amount", "change", "details"} for ScenarioParser::parsePayment.
    static std::optional<QJsonObject> payment(const QString &code, const QString &amount, const QStringList &words, QString *error);

    /// The fields each command takes, for the shell's help.
    static QStringList positionFields();
    static QStringList paymentFields();
};

} // namespace till
