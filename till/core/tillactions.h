#pragma once

#include "documentspec.h"

#include <abstractdocument.h>

#include <QSharedPointer>

#include <optional>

namespace till {

class ActionLog;
class Till;

/// What a cashier does at the till, each as the host's action (or actions)
/// through the pipeline. Shared by the scenario runner and the shell.
/// Results are the pipeline's; nothing means the action has no result, or
/// could not be started (the log then says why).
class TillActions
{
public:
    TillActions(Till *till, ActionLog *log);

    /// Opens \a document on the screen and binds it to the plug-in.
    void open(const QSharedPointer<AbstractDocument> &document);
    /// Starts a return by sale that becomes \a document: the attempt (227),
    /// then the return by sale itself (8). \a orvel marks it as this plug-in's
    /// return, whose invoice the plug-in asks for.
    std::optional<int> backBySale(const QSharedPointer<AbstractDocument> &document, bool orvel);
    std::optional<int> input();
    /// Presents the customer's card for the open document.
    bool card(const QString &number);
    std::optional<int> coupon(const QString &number);
    /// Adds \a position; \a quantity and \a price are typed before it, when given.
    std::optional<int> add(const PositionSpec &position, std::optional<double> quantity, std::optional<double> price);
    /// Chooses a return reason for the document, or for the position \a positionNumber.
    std::optional<int> reason(bool forDocument, int positionNumber);
    std::optional<int> pay(const PaymentSpec &payment);
    std::optional<int> stornoAll();
    /// Closes the open document; with \a hostRefuses the host's own part of
    /// the close fails after the hooks have run.
    std::optional<int> close(bool hostRefuses = false);

private:
    /// The open document; null (and a remark in the log) when none is open.
    QSharedPointer<AbstractDocument> openDocument(const QString &what) const;

    Till *m_till;
    ActionLog *m_log;
};

} // namespace till
