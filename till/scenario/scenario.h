#pragma once

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

/// The parts of a till scenario, as ScenarioParser reads them from JSON.
/// docs/scenarios.md describes the file format these values come from.
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

/// One answer of the cashier to a dialog, taken in order as dialogs come.
struct CashierAnswer
{
    enum Kind { Choice, Form, Quantity, Price };

    Kind kind = Choice;
    /// The cashier cancels the dialog.
    bool cancel = false;
    /// Choice by position in the list, from 0 (-1 when chosen by text).
    int index = -1;
    /// Choice by the text of the item.
    QString item;
    /// Form answers, field name to the text typed.
    QVariantMap fields;
    /// Quantity or price typed.
    double number = 0.0;
    /// Where the answer stands in the file ("answers[2]").
    QString path;
};

/// The state of one document that an expectation checks.
struct PositionCheck
{
    int posnum = 0;
    /// Field name (quantity, price, code…) to expected value.
    QJsonObject fields;
    /// Namespace to (key to expected value) of the position's additional data.
    QJsonObject data;
};

struct DocumentCheck
{
    QJsonObject pluginData;
    QJsonObject properties;
    QList<PositionCheck> positions;
    std::optional<bool> closed;
    std::optional<int> payments;
    std::optional<int> positionCount;
    QJsonValue commonReason = QJsonValue::Undefined;
};

/// What the scenario expects after an action, or after the whole run.
struct Expectation
{
    /// The pipeline's result of the action.
    std::optional<int> result;
    /// The ids of every dialog shown, in order.
    std::optional<QStringList> dialogs;
    /// Number of requests to a path (a path matches when the request's path ends with it).
    QMap<QString, int> requests;
    /// The action's document.
    std::optional<DocumentCheck> document;
    /// Documents by scenario name.
    QMap<QString, DocumentCheck> documents;
    /// Shift storage records of the current shift, name to expected value.
    QJsonObject storage;
    /// Payment totals of the current shift, currency code to amount.
    QMap<int, double> paymentTotals;

    bool isEmpty() const
    {
        return !result && !dialogs && requests.isEmpty() && !document && documents.isEmpty() && storage.isEmpty()
            && paymentTotals.isEmpty();
    }
};

/// One step of the scenario: a cashier action or a till event.
struct ScenarioAction
{
    enum Type {
        Bind,
        BackBySale,
        Input,
        Card,
        Coupon,
        Add,
        Reason,
        Pay,
        StornoAll,
        Close,
        Restart,
    };

    Type type = Bind;
    QString document;
    /// Return by sale: whether the action is this plug-in's return (asks for the invoice).
    bool orvel = false;
    /// Card or coupon number.
    QString number;
    PositionSpec position;
    /// Quantity and price modifiers typed before the position.
    std::optional<double> quantity;
    std::optional<double> price;
    /// Reason: for the whole document, or for the position positionNumber.
    bool reasonForDocument = false;
    int positionNumber = 0;
    PaymentSpec payment;
    /// Close: the host's own part of the close fails after the hooks (as when
    /// the receipt printer fails), so the document stays open.
    bool hostRefuses = false;
    QString note;
    Expectation expect;
    /// Where the action stands in the file ("actions[3]").
    QString path;

    /// The scenario name of the action type ("stornoAll").
    static QString typeName(Type type);
    /// All type names, in enumeration order.
    static QStringList typeNames();
    /// Whether the action runs through the host's action pipeline (and so has a result).
    bool hasResult() const;
};

/// The till's settings a scenario asks for, on top of the data folder's.
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

struct Scenario
{
    QString name;
    QString description;
    TillSettings till;
    QList<DocumentSpec> documents;
    QList<CashierAnswer> answers;
    QList<ScenarioAction> actions;
    /// Checked once every action has run.
    Expectation expect;

    /// The document described named \a name, or null.
    const DocumentSpec *document(const QString &name) const;
};

} // namespace till
