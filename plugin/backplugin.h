#pragma once

#include "returns/invoiceinfo.h"

#include <actiontrigger.h>
#include <basicplugin.h>
// moc is not shown the loyalty system's interface declaration: BackPlugin
// answers qt_metacast by the base's class name, "BasicLoyaltySystem" (moc casts
// to every base by its name), and must not answer its interface id, which
// listing it in Q_INTERFACES would add. Seeing the declaration, moc would warn
// that qobject_cast to it does not work, which is what is meant.
#ifndef Q_MOC_RUN
#include <basicloyaltysystem.h>
#endif
#include <control/action.h>
#include <econtext.h>

#include <QMap>
#include <QObject>
#include <QSet>
#include <QSharedPointer>

class BasicException;
class BackBySaleDocument;

namespace Log4Qt {
class Logger;
}

namespace tessaro {

class Interface;

/// The plug-in object: a loyalty system of the host that carries returns
/// against the Tessaro service.
///
/// The host creates the one object through the plug-in entry
/// (qt_plugin_instance), reaches its plug-in interface through
/// qt_metacast("norvik.AbstractPlugin") and calls init(). From then on the
/// host binds every document with setDocument() and runs the hooks that
/// init() registered, each synchronously on its main thread:
///
/// | context | action | order  | priority | hook                              |
/// |---------|--------|--------|----------|-----------------------------------|
/// | 6       | 192    | before | 1        | beforeInput                       |
/// | 6       | 198    | before | 3        | addCoupon                         |
/// | 6       | 201    | before | 1        | beforePositionAdd                 |
/// | 255     | 211    | before | 3        | beforeAttemptToDocumentClose      |
/// | 6       | 227    | before | 3        | beforeAttemptToBackBySale         |
/// | 7       | 4      | before | 1        | checkPaymentRestrictions          |
/// | 6       | 131    | before | 3        | beforeStornoAll                   |
/// | 6       | 131    | after  | 2        | afterStornoAll                    |
/// | 255     | 8      | before | 3        | beforeBackBySale                  |
///
/// and the handler selectBackReason for action 7 in context 6. The last
/// three triggers only fire while a return document is bound.
///
/// Hooks return 0 to stop the action (after telling the cashier why), 2 to
/// let it go on and 3 when they have nothing to do. A BasicException thrown
/// inside a hook never reaches the host: it is shown and the action refused. Everything the plug-in
/// produces for a document is kept on that document, so a document reopened
/// after a restart carries on where it stopped.
///
/// The hooks are bound through the virtual table: a class derived from this
/// one that overrides a hook has its own version run.
class BackPlugin : public QObject, public BasicLoyaltySystem
{
    Q_OBJECT
    // The file is generated: empty unless the build puts the version there.
    Q_PLUGIN_METADATA(IID "TessaroBack")
    // Only the plug-in interface goes by its id: the host reaches the loyalty
    // system by the base's class name, "BasicLoyaltySystem", and no other name
    // may answer.
    Q_INTERFACES(BasicPlugin)

public:
    BackPlugin();
    ~BackPlugin() override;

    /// Creates the service client, registers the hooks and the invoice view,
    /// and reads the currency lists. May be called again; each call replaces
    /// the service client and registers the hooks anew.
    void init() override;
    /// Does nothing: the service knows no loyalty cards.
    bool identifyByCard(QSharedPointer<DocumentCardRecord> &card, ECardNumberType type) override;
    /// Does nothing: the return is reported to the service at document close.
    bool commit(const QSharedPointer<AbstractDocument> &document) override;
    /// Takes the cashier back to the main menu.
    bool cancel() override;
    /// Does nothing.
    bool rollback(const QSharedPointer<AbstractDocument> &document) override;
    /// Gives the service client the token kept on the bound document.
    bool restoreLoyaltySystem() override;
    /// Binds \a document. For a return it switches every hook on, restores the
    /// service token kept on the document and makes sure the document names
    /// the sale it reverses; for any other document it switches the storno-all
    /// and return-by-sale hooks off.
    void setDocument(const QSharedPointer<AbstractDocument> &document) override;

    /// Refuses goods while the document has no customer card; in a return,
    /// asks for the return reason, the quantity and the price of the position.
    virtual EContext::Result beforePositionAdd(const control::Action &action);
    /// The handler of the return-reason action: lets the cashier choose the
    /// document's common reason ("target" = "document") or a position's own.
    virtual EContext::Result selectBackReason(const control::Action &action);
    /// Reports a return to the service before the document closes: sends
    /// its advice note (unless the answer kept on the document already
    /// answers it unchanged), keeps the return invoice number and the answer
    /// on the document and saves it. A closed shift at the service is opened
    /// once and the advice note sent again; any other failure is shown and
    /// refuses the close.
    virtual EContext::Result beforeAttemptToDocumentClose(const control::Action &action);
    /// Requires a common return reason on the action's document.
    virtual EContext::Result beforeAttemptToBackBySale(const control::Action &action);
    /// Refuses a payment whose currency must not be mixed with one already paid.
    virtual EContext::Result checkPaymentRestrictions(const control::Action &action);
    /// Shows the cashier message of \a e, when it has one.
    virtual void showError(const BasicException &e) const;
    /// Remembers whether the document is a return, for afterStornoAll().
    virtual EContext::Result beforeStornoAll(const control::Action &action);
    /// Leaves a return whose positions were all cancelled for the main menu.
    virtual EContext::Result afterStornoAll(const control::Action &action);
    /// Asks once per action for the sale a return by sale reverses, and puts
    /// its identifier into the action.
    virtual EContext::Result beforeBackBySale(const control::Action &action);
    /// Tells the cashier when the table of return reasons is empty.
    virtual void checkBackReasons() const;
    /// Does nothing.
    bool registerLoyaltySystem() override;
    /// Opens the till at the service and keeps the answer as the shift record
    /// "tillOpen". Throws ShiftOpenException when the host refuses to open a
    /// shift, and what the service client throws.
    virtual void shiftOpen();
    /// Asks the cashier for the original invoice; on cancel leaves for the
    /// main menu and returns the empty value.
    virtual InvoiceInfo inputInvoiceInfo();
    /// Keeps \a info on the bound document ("invoiceInfo",
    /// "originalInvoiceIDRaw", "originalInvoiceID").
    virtual void storeInvoiceInfo(const InvoiceInfo &info) const;
    /// The invoice kept on the bound document, or the empty value.
    virtual InvoiceInfo getInvoiceInfo() const;
    /// Puts the action that leaves for the main menu on the host's queue,
    /// unless the main menu is current.
    virtual void exitToMenu() const;
    /// Reads the currencies that must not be mixed in one document's payments.
    virtual void readForbiddenMixedValuts();
    /// Reads the further currencies that a return by sale admits.
    virtual void readAdditionalBackBySaleValuts();
    /// The currencies that must not be mixed, as last read.
    QMap<int, QSet<int>> forbiddenMixedCurrencies() const { return forbiddenMixedValuts; }
    /// The further currencies of a return by sale, as last read.
    QMap<int, QSet<int>> additionalBackBySaleCurrencies() const { return additionalBackBySaleValuts; }

    /// Makes a return document ask for its original invoice before any input.
    EContext::Result beforeInput(const control::Action &action);
    /// Refuses coupons while the document has no customer card.
    EContext::Result addCoupon(const control::Action &action);

protected:
    /// The service client; null until init().
    QSharedPointer<Interface> interface;
    /// The triggers that setDocument() switches off for ordinary documents.
    QSet<int> triggerIds;
    /// Set by beforeStornoAll() when the document is a return.
    bool exitAfterStornoAll = false;
    /// Currency code to the currencies it must not be paid together with (symmetric).
    QMap<int, QSet<int>> forbiddenMixedValuts;
    /// Currency code of a sale to the further currencies its return by sale may use.
    QMap<int, QSet<int>> additionalBackBySaleValuts;
    /// The invoice the cashier entered last.
    InvoiceInfo invoiceInfo;
    /// The logger "tessaroback".
    Log4Qt::Logger *logger;

private:
    using Hook = EContext::Result (BackPlugin::*)(const control::Action &);
    /// A call of \a hook on this object, as the host's pipeline runs it:
    /// through guarded().
    ActionTrigger::Function call(Hook hook);
    /// Runs \a hook with \a action. Host operations inside a hook (dialogs,
    /// the action queue, the document) may throw; neither a BasicException nor
    /// any other std::exception (std::bad_alloc included) reaches the host's
    /// pipeline: it is shown ("tessaroUnexpectedError" for the latter, which is
    /// also logged) and the action refused (0).
    EContext::Result guarded(Hook hook, const control::Action &action);
    /// Gives the service client the token kept on the bound document; before
    /// init() there is no client to give it to.
    void restoreToken();
    /// Keeps the sale a return by sale reverses on \a document; false when
    /// its sale identifier cannot be one.
    bool bindBackBySale(const BackBySaleDocument &document) const;
    /// One attempt of beforeAttemptToDocumentClose(): the advice note of the
    /// bound return, its answer checked and kept on the document, the
    /// document saved. Throws what the client and the answer's check throw.
    void settleReturn();
};

} // namespace tessaro
