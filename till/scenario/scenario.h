#pragma once

#include "documentspec.h"
#include "tillsettings.h"

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
