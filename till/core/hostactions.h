#pragma once

#include <actionpipeline.h>
#include <control/action.h>
#include <econtext.h>

#include <QSharedPointer>
#include <QString>

class AbstractDocument;

namespace till {

class ActionLog;
class Cashier;
class Till;

/// The host's own implementations of the cashier's actions, which run when
/// no plug-in handler takes the action over: adding a position or a payment,
/// typing a quantity or a price, cancelling every position, the return by
/// sale, leaving to the menu, and closing the document.
class HostActions
{
public:
    HostActions(Till *till, Cashier *cashier, ActionLog *log);

    /// Registers every implementation with \a pipeline.
    void install(ActionPipeline *pipeline);

private:
    EContext::Result addPosition(const control::Action &action);
    EContext::Result inputQuantity(const control::Action &action);
    EContext::Result inputPrice(const control::Action &action);
    EContext::Result addPayment(const control::Action &action);
    EContext::Result stornoAll(const control::Action &action);
    EContext::Result backBySale(const control::Action &action);
    EContext::Result selectBackReason(const control::Action &action);
    EContext::Result exitToMenu(const control::Action &action);
    EContext::Result closeDocument(const control::Action &action);
    /// Records the closed \a document's payments in the shift and writes it
    /// out, both or neither; what failed, or an empty text.
    QString storeClosed(const QSharedPointer<AbstractDocument> &document);

    Till *m_till;
    Cashier *m_cashier;
    ActionLog *m_log;
};

} // namespace till
