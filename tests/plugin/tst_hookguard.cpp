// The guard around every hook: a host operation that throws inside a hook is
// shown to the cashier and refuses the action; the exception never reaches
// the host's pipeline.

#include "plugintestcase.h"

#include <actionhandler.h>
#include <actionqueuecontroller.h>
#include <basicexception.h>
#include <control/args/core.h>
#include <dictionariesdao.h>
#include <documentcardrecord.h>
#include <documentlogic.h>
#include <edocumenttype.h>
#include <goodsitem.h>
#include <mockfactory.h>
#include <moneyitem.h>
#include <savetofilelogic.h>
#include <singleton.h>

#include <QTest>

namespace {

const tr::Tr failure(QStringLiteral("hostFailure"), QStringLiteral("Сбой кассы"));

[[noreturn]] void fail()
{
    throw BasicException(failure);
}

// The host parts that fail in the rows below.
enum class Failing {
    Dialog,          ///< the first message or choice shown
    BackDialog,      ///< the invoice input
    ActionQueue,     ///< an action run at once
    QueuedAction,    ///< an action put on the queue
    DocumentLogic,   ///< the choice of the common return reason
    SaveToFile,      ///< saving the document
    Document,        ///< the document's type test
};

class FailingDialog : public ScriptedDialog
{
public:
    bool armed = false;

    void showMessage(const tr::Tr &message, int kind, int timeout) override
    {
        disarmOrFail();
        ScriptedDialog::showMessage(message, kind, timeout);
    }
    int showChoice(const tr::Tr &title, const QStringList &items) override
    {
        disarmOrFail();
        return ScriptedDialog::showChoice(title, items);
    }

private:
    void disarmOrFail()
    {
        if (armed) {
            armed = false;
            fail();
        }
    }
};

class FailingBackDialog : public tessaro::BackDialog
{
public:
    QVariantMap inputInvoiceInfo(const InputMultiTextParams &) override { fail(); }
};

class FailingQueue : public ActionQueueController
{
public:
    void addAction(const control::Action &, bool) override { fail(); }
};

class FailingDocumentLogic : public DocumentLogic
{
public:
    bool chooseCommonBackReason(const QSharedPointer<AbstractDocument> &, const QStringList &) override { fail(); }
};

class FailingSaveToFileLogic : public SaveToFileLogic
{
public:
    bool save(const QSharedPointer<AbstractDocument> &, const QStringList &) override { fail(); }
};

// A return document whose type test fails once armed.
class FailingDocument : public AbstractDocument
{
public:
    FailingDocument()
        : AbstractDocument(EDocumentType::Back)
    {
    }
    bool armed = false;

    bool hasType(const QList<int> &types) const override
    {
        if (armed)
            fail();
        return AbstractDocument::hasType(types);
    }
};

} // namespace

Q_DECLARE_METATYPE(Failing)

class TestHookGuard : public PluginTestCase
{
    Q_OBJECT

protected:
    QString configuration() const override { return QStringLiteral("[Tessaro.ForbiddenMixedValuts]\n1=2\n"); }

private slots:
    void hostFailureIsShownAndRefuses_data();
    void hostFailureIsShownAndRefuses();

private:
    // The function the host keeps for the hook on \a type (a handler when \a handler).
    ActionTrigger::Function registered(int type, int order, bool handler) const;
    // Binds a return document of till 12, invoice 345 with a card; \a document when given.
    QSharedPointer<AbstractDocument> bindReturn(const QSharedPointer<AbstractDocument> &document = {});
};

ActionTrigger::Function TestHookGuard::registered(int type, int order, bool handler) const
{
    if (handler) {
        for (const ActionHandler &each : m_plugin->handlers()) {
            if (each.actionType() == type)
                return [each](const control::Action &action) { return each(action); };
        }
        return {};
    }
    for (const BasicPlugin::Registration &each : m_plugin->triggers()) {
        if (each.trigger.actionType() == type && each.trigger.order() == order)
            return [each](const control::Action &action) { return each.trigger(action); };
    }
    return {};
}

QSharedPointer<AbstractDocument> TestHookGuard::bindReturn(const QSharedPointer<AbstractDocument> &given)
{
    const QSharedPointer<AbstractDocument> document = given ? given : m_host->returnWithInvoice();
    if (given) {
        document->setDocumentProperty(QStringLiteral("invoiceInfo"),
                                      QVariantMap{{QStringLiteral("cashCode"), QStringLiteral("12")},
                                                  {QStringLiteral("invoiceNumber"), QStringLiteral("345")}});
        document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(m_plugin->getSystemType(), QStringLiteral("1")));
    }
    m_plugin->setDocument(document);
    return document;
}

void TestHookGuard::hostFailureIsShownAndRefuses_data()
{
    QTest::addColumn<int>("actionType");
    QTest::addColumn<int>("order");
    QTest::addColumn<bool>("handler");
    QTest::addColumn<Failing>("failing");
    const int before = ActionTrigger::Before;
    const int after = ActionTrigger::After;
    QTest::newRow("beforeInput") << int(control::Input) << before << false << Failing::BackDialog;
    QTest::newRow("addCoupon") << int(control::AddCoupon) << before << false << Failing::Dialog;
    QTest::newRow("beforePositionAdd") << int(control::AddPosition) << before << false << Failing::ActionQueue;
    QTest::newRow("beforeAttemptToDocumentClose") << int(control::AttemptToDocumentClose) << before << false
                                                  << Failing::SaveToFile;
    QTest::newRow("beforeAttemptToBackBySale") << int(control::AttemptToBackBySale) << before << false
                                               << Failing::DocumentLogic;
    QTest::newRow("checkPaymentRestrictions") << int(control::AddPayment) << before << false << Failing::Dialog;
    QTest::newRow("beforeStornoAll") << int(control::StornoAll) << before << false << Failing::Document;
    QTest::newRow("afterStornoAll") << int(control::StornoAll) << after << false << Failing::QueuedAction;
    QTest::newRow("beforeBackBySale") << int(control::BackBySale) << before << false << Failing::BackDialog;
    QTest::newRow("selectBackReason") << int(control::SelectBackReason) << 0 << true << Failing::Dialog;
}

void TestHookGuard::hostFailureIsShownAndRefuses()
{
    QFETCH(int, actionType);
    QFETCH(int, order);
    QFETCH(bool, handler);
    QFETCH(Failing, failing);
    const auto dialog = QSharedPointer<FailingDialog>::create();
    MockFactory<Dialog>::setInstance(dialog);
    Singleton<DictionariesDao>::instance()->setBackReasons(
        2, {{3, QStringLiteral("Брак")}, {5, QStringLiteral("Не подошел размер")}});
    const control::Action action(control::EActionType(actionType), {});
    // The host keeps the documents it binds.
    QSharedPointer<AbstractDocument> kept;

    // Each hook is brought to the host operation that fails.
    switch (failing) {
    case Failing::Dialog:
        if (actionType == control::AddCoupon) {
            m_plugin->setDocument(m_host->document(EDocumentType::Sale, false));
        } else if (actionType == control::AddPayment) {
            const auto paid = QSharedPointer<MoneyItem>::create();
            paid->setValCode(1);
            bindReturn()->addMoneyItem(paid);
            action.insert(QStringLiteral("valutCode"), QStringLiteral("2"));
        } else {
            bindReturn();
            control::args::Core(action).setPosition(QSharedPointer<GoodsItem>::create());
        }
        dialog->armed = true;
        break;
    case Failing::BackDialog:
        m_plugin->setDocument(actionType == control::Input ? m_host->document(EDocumentType::Back) : bindReturn());
        action.insert(QStringLiteral("orvel"), true);
        MockFactory<tessaro::BackDialog>::setInstance(QSharedPointer<FailingBackDialog>::create());
        break;
    case Failing::ActionQueue:
        bindReturn();
        Singleton<DictionariesDao>::instance()->setBackReasons(2, {{3, QStringLiteral("Брак")}});
        control::args::Core(action).setPosition(QSharedPointer<GoodsItem>::create());
        Singleton<ActionQueueController>::instance()->setRunner([](const control::Action &) -> EContext::Result { fail(); });
        break;
    case Failing::QueuedAction:
        bindReturn();
        registered(control::StornoAll, ActionTrigger::Before, false)(action);
        Singleton<ActionQueueController>::setInstance(new FailingQueue);
        break;
    case Failing::DocumentLogic:
        action.insert(QStringLiteral("document"), QVariant::fromValue(bindReturn()));
        MockFactory<DocumentLogic>::setInstance(QSharedPointer<FailingDocumentLogic>::create());
        break;
    case Failing::SaveToFile: {
        const auto sale = m_host->document(EDocumentType::Sale);
        m_plugin->setDocument(sale);
        // A kept answer that needs no request.
        sale->setPluginData(m_plugin->getSystemType(), QStringLiteral("adviceNoteResponse"),
                            QVariantMap{{QStringLiteral("response"), QVariantMap{{QStringLiteral("Key4"), QStringLiteral("1")}}}});
        MockFactory<SaveToFileLogic>::setInstance(QSharedPointer<FailingSaveToFileLogic>::create());
        break;
    }
    case Failing::Document: {
        const auto document = QSharedPointer<FailingDocument>::create();
        kept = bindReturn(document);
        document->armed = true;
        break;
    }
    }

    const ActionTrigger::Function hook = registered(actionType, order, handler);
    QVERIFY(hook);
    EContext::Result result = EContext::Continue;
    try {
        result = hook(action);
    } catch (const BasicException &) {
        QFAIL("the host operation's exception reached the host");
    }

    QCOMPARE(result, EContext::Stop);
    QCOMPARE(dialog->messageIds(), QStringList{failure.id()});
    QCOMPARE(dialog->messages().first().message.text(), failure.text());
}

QTEST_GUILESS_MAIN(TestHookGuard)
#include "tst_hookguard.moc"
