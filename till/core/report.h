#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

/// What a till run shows: per action, the hooks that ran, the dialogs, the
/// requests, and at the end the documents. Values only; ReportWriter prints them.
namespace till {

/// One step of the host's action pipeline.
struct HookStep
{
    /// "before", "handler", "host" or "after".
    QString kind;
    int actionType = 0;
    /// The trigger's identifier as the plug-in registered it; 0 for handlers and the host.
    int triggerId = 0;
    int priority = 0;
    int result = 0;
};

/// One dialog shown to the cashier, and the answer given.
struct DialogRecord
{
    /// "message", "error", "choice", "form", "quantity", "price" or "progress".
    QString kind;
    /// The message id (for forms, the form's title id).
    QString id;
    QString text;
    /// The items of a choice or the fields of a form.
    QStringList items;
    /// The cashier's answer: an index, a map of fields, a number; null when cancelled.
    QJsonValue answer;
};

/// One HTTP exchange of the plug-in with the service.
struct RequestRecord
{
    QString method;
    QString url;
    QString path;
    int httpCode = 0;
    int errorCode = 0;
    bool networkError = false;
    QString errorText;
    QJsonValue requestBody;
    QJsonValue responseBody;
};

/// Everything that happened during one action of a run.
struct ActionRecord
{
    int index = 0;
    QString type;
    /// What the action was, for a person ("add 4600000000017 ×2").
    QString title;
    std::optional<int> result;
    QList<HookStep> steps;
    QList<DialogRecord> dialogs;
    QList<RequestRecord> requests;
    /// The till's own remarks (a refused action, a restart).
    QStringList notes;
    /// Expectations that failed, and script problems.
    QStringList failures;

    /// The record's JSON form, secrets and card numbers masked.
    QJsonObject toJson() const;
    static ActionRecord fromJson(const QJsonObject &json);
};

struct Report
{
    QString scenario;
    QString file;
    QString dataFolder;
    QString plugin;
    QString service;
    int actionCount = 0;
    QList<ActionRecord> actions;
    /// Final state of each document, by scenario name.
    QMap<QString, QJsonObject> documents;
    /// Failures of the scenario's own expectations and of the run as a whole.
    QStringList failures;

    /// Every failure, of the actions and of the scenario.
    QStringList allFailures() const;
    bool passed() const { return allFailures().isEmpty(); }
    /// The report's JSON form, secrets and card numbers masked.
    QJsonObject toJson() const;
};

} // namespace till
