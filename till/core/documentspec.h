#pragma once

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

/// What the till builds documents from: positions, payments, discounts and
/// the documents themselves, as a scenario, the shell or the simulation
/// describe them. docs/scenarios.md describes their JSON form.
namespace till {

/// A goods position: one on a document at the start, or one the cashier adds.
struct PositionSpec
{
    QString code;
    QString barcode;
    QString name;
    /// Unset: the quantity is left to the host's default (1).
    std::optional<double> quantity;
    double price = 0.0;
    /// Unset: quantity × price.
    std::optional<double> sum;
    double vatRate = 0.0;
    int vatIndex = -1;
    QList<int> vatCodes;
    QList<double> vatSums;
    bool fractional = false;
    int inputType = 1;
    QList<int> getMethods;
    QString exciseMark;
    QString goodsKitBarcode;
    QString inputRawData;
    int bcodeMode = 0;
    /// Additional data by namespace ("tessaro", "orvel").
    QHash<QString, QVariantMap> data;
};

/// A payment: one on a document at the start, or one the cashier adds.
struct PaymentSpec
{
    int code = 0;
    double amount = 0.0;
    bool change = false;
    /// Further MoneyItem properties by name (cardNum, terminalId, operationId…).
    QVariantMap details;
};

/// One discount of a document: its totals as (discount mode, sum) pairs.
struct ImpactSpec
{
    QList<QPair<int, double>> totals;
};

/// A document the scenario works on, named for the scenario's actions.
struct DocumentSpec
{
    QString name;
    int type = 2;
    QString saleIdentifier;
    /// The date of the sale a return by sale reverses; unset: no sale document.
    std::optional<QDate> saleDate;
    std::optional<QDateTime> dateTime;
    QString store;
    /// The customer card presented for the document; empty: none.
    QString card;
    QVariant commonReason;
    int reasonDictionary = 2;
    double roundingSum = 0.0;
    QList<PositionSpec> positions;
    QList<PaymentSpec> payments;
    QList<ImpactSpec> impacts;
    QVariantMap properties;
    /// Values already stored by the plug-in (as after an earlier session).
    QVariantMap pluginData;
};

} // namespace till
