// The plug-in object: construction, init, its loyalty-system slots and showError.

#include "hooktable.h"
#include "plugintesthost.h"
#include "testableplugin.h"

#include "client/interface.h"
#include "returns/backview.h"

#include <actionpipeline.h>
#include <actionqueuecontroller.h>
#include <basicexception.h>
#include <contextmanager.h>
#include <edocumenttype.h>
#include <log4qt/logger.h>
#include <qml/qmlbasedgui.h>
#include <singleton.h>

#include <QTest>

namespace {

// Records which of the plug-in's virtual members the host's calls reach.
class RecordingPlugin : public TestablePlugin
{
public:
    EContext::Result beforePositionAdd(const control::Action &) override { return record("beforePositionAdd"); }
    EContext::Result selectBackReason(const control::Action &) override { return record("selectBackReason"); }
    EContext::Result beforeAttemptToDocumentClose(const control::Action &) override { return record("beforeAttemptToDocumentClose"); }
    EContext::Result beforeAttemptToBackBySale(const control::Action &) override { return record("beforeAttemptToBackBySale"); }
    EContext::Result checkPaymentRestrictions(const control::Action &) override { return record("checkPaymentRestrictions"); }
    EContext::Result beforeStornoAll(const control::Action &) override { return record("beforeStornoAll"); }
    EContext::Result afterStornoAll(const control::Action &) override { return record("afterStornoAll"); }
    EContext::Result beforeBackBySale(const control::Action &) override { return record("beforeBackBySale"); }
    void readForbiddenMixedValuts() override { record("readForbiddenMixedValuts"); }
    void readAdditionalBackBySaleValuts() override { record("readAdditionalBackBySaleValuts"); }

    QStringList calls;

private:
    EContext::Result record(const char *member)
    {
        calls << QString::fromLatin1(member);
        return EContext::Continue;
    }
};

} // namespace

class TestBackPlugin : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void constructionLeavesEverythingEmpty();
    void hooksReachTheirMembers_data();
    void hooksReachTheirMembers();
    void handlerReachesSelectBackReason();
    void initReadsCurrencyListsThenInitialisesLoyaltySystem();
    void initAddsInvoiceView();
    void secondInitReplacesClientAndRegistersAgain();
    void stornoAllHooksRunOnEitherSide();
    void loyaltySlotsDoNothing();
    void cancelLeavesForMenu();
    void restoreLoyaltySystemTakesTokenOfDocument_data();
    void restoreLoyaltySystemTakesTokenOfDocument();
    void showErrorShowsMessageOfException();
    void showErrorIgnoresExceptionWithoutMessage();

private:
    std::unique_ptr<PluginTestHost> m_host;
};

void TestBackPlugin::init()
{
    m_host = std::make_unique<PluginTestHost>();
}

void TestBackPlugin::cleanup()
{
    m_host.reset();
}

void TestBackPlugin::constructionLeavesEverythingEmpty()
{
    TestablePlugin plugin;
    QCOMPARE(plugin.getSystemType(), 27);
    QCOMPARE(plugin.feature(), QStringLiteral("tessaro"));
    QVERIFY(plugin.isFeatureMatched(QStringLiteral("tessaro")));
    QVERIFY(plugin.hasOption(LoyaltySystemOption::ProcessesReturns));
    QCOMPARE(plugin.logger->name(), QStringLiteral("tessaroback"));
    QVERIFY(plugin.interface.isNull());
    QVERIFY(plugin.triggerIds.isEmpty());
    QVERIFY(!plugin.exitAfterStornoAll);
    QVERIFY(plugin.forbiddenMixedValuts.isEmpty());
    QVERIFY(plugin.additionalBackBySaleValuts.isEmpty());
    QVERIFY(plugin.invoiceInfo.cashCode.isEmpty());
    QVERIFY(plugin.invoiceInfo.invoiceDate.isNull());
    QVERIFY(plugin.triggers().isEmpty());
    QVERIFY(plugin.parent() == nullptr);
    // A meta-object of its own, but no signals, slots or properties of its own.
    const QMetaObject *meta = plugin.metaObject();
    QCOMPARE(meta->className(), "tessaro::BackPlugin");
    QCOMPARE(meta->methodCount(), QObject::staticMetaObject.methodCount());
    QCOMPARE(meta->propertyCount(), QObject::staticMetaObject.propertyCount());
}

// Every trigger calls its member through the virtual table, so an override in
// a derived class is what runs; beforeInput and addCoupon are called directly.
void TestBackPlugin::hooksReachTheirMembers_data()
{
    addHookTable();
}

void TestBackPlugin::hooksReachTheirMembers()
{
    QFETCH(int, row);
    QFETCH(QString, member);
    RecordingPlugin plugin;
    plugin.init();
    plugin.calls.clear();
    plugin.setDocument(m_host->document(EDocumentType::Sale, false));

    const EContext::Result result = plugin.triggers().at(row - 1).trigger(control::Action());
    if (member == QLatin1String("beforeInput")) {
        QCOMPARE(result, EContext::NotHandled);
        QVERIFY(plugin.calls.isEmpty());
    } else if (member == QLatin1String("addCoupon")) {
        QCOMPARE(result, EContext::Stop);
        QCOMPARE(m_host->dialog()->messageIds(), QStringList{QStringLiteral("tessaroNoCardCouponError")});
        QVERIFY(plugin.calls.isEmpty());
    } else {
        QCOMPARE(plugin.calls, QStringList{member});
    }
}

void TestBackPlugin::handlerReachesSelectBackReason()
{
    RecordingPlugin plugin;
    plugin.init();
    plugin.calls.clear();
    plugin.handlers().first()(control::Action());
    QCOMPARE(plugin.calls, QStringList{QStringLiteral("selectBackReason")});
}

void TestBackPlugin::initReadsCurrencyListsThenInitialisesLoyaltySystem()
{
    RecordingPlugin plugin;
    QVERIFY(!plugin.isInitialized());
    plugin.init();
    QCOMPARE(plugin.calls, (QStringList{QStringLiteral("readForbiddenMixedValuts"), QStringLiteral("readAdditionalBackBySaleValuts")}));
    QVERIFY(plugin.isInitialized());
    QVERIFY(plugin.interface);
}

void TestBackPlugin::initAddsInvoiceView()
{
    TestablePlugin plugin;
    plugin.init();
    const auto views = Singleton<qml::QmlBasedGui>::instance()->views();
    QCOMPARE(views.size(), 1);
    QVERIFY(views.first().dynamicCast<tessaro::BackView>());
    QCOMPARE(int(views.first()->getCode()), 78);
}

void TestBackPlugin::secondInitReplacesClientAndRegistersAgain()
{
    TestablePlugin plugin;
    plugin.init();
    const QWeakPointer<tessaro::Interface> first = plugin.interface;
    const QSet<int> firstIds = plugin.triggerIds;
    plugin.init();
    QVERIFY(first.isNull());
    QVERIFY(plugin.interface);
    QCOMPARE(plugin.triggers().size(), 18);
    QCOMPARE(plugin.handlers().size(), 2);
    QCOMPARE(plugin.triggerIds.size(), 6);
    QVERIFY(plugin.triggerIds.contains(firstIds));
}

void TestBackPlugin::stornoAllHooksRunOnEitherSide()
{
    TestablePlugin plugin;
    plugin.init();
    plugin.setDocument(m_host->backBySale(QStringLiteral("000100122024000012000345")));
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);

    ActionPipeline pipeline;
    pipeline.addPlugin(&plugin);
    QList<ActionPipeline::Step> steps;
    pipeline.setObserver([&steps](const ActionPipeline::Step &step) { steps << step; });
    bool flagWhileStorno = false;
    pipeline.setHostAction(control::StornoAll, [&](const control::Action &) {
        flagWhileStorno = plugin.exitAfterStornoAll;
        return EContext::Continue;
    });

    QCOMPARE(pipeline.run(control::Action(control::StornoAll, {})), EContext::Continue);
    QCOMPARE(steps.size(), 3);
    QCOMPARE(steps.at(0).kind, ActionPipeline::Step::BeforeTrigger);
    QCOMPARE(steps.at(0).priority, 3);
    QCOMPARE(steps.at(1).kind, ActionPipeline::Step::HostImplementation);
    QCOMPARE(steps.at(2).kind, ActionPipeline::Step::AfterTrigger);
    QCOMPARE(steps.at(2).priority, 2);
    QVERIFY(flagWhileStorno);
}

void TestBackPlugin::loyaltySlotsDoNothing()
{
    TestablePlugin plugin;
    plugin.init();
    const auto document = m_host->document(EDocumentType::Sale);
    QSharedPointer<DocumentCardRecord> card = document->getCardRecords().first();
    QVERIFY(plugin.identifyByCard(card, ECardNumberType::Scanned));
    QVERIFY(plugin.commit(document));
    QVERIFY(plugin.rollback(document));
    QVERIFY(plugin.registerLoyaltySystem());
    QVERIFY(Singleton<ActionQueueController>::instance()->queuedActions().isEmpty());
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

void TestBackPlugin::cancelLeavesForMenu()
{
    TestablePlugin plugin;
    plugin.init();
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);
    QVERIFY(plugin.cancel());
    const auto queued = Singleton<ActionQueueController>::instance()->queuedActions();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(queued.first().getType(), control::ExitToMenu);
}

void TestBackPlugin::restoreLoyaltySystemTakesTokenOfDocument_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QString>("token");
    QTest::newRow("token kept") << QVariant(QStringLiteral("abc.def")) << QStringLiteral("abc.def");
    QTest::newRow("none kept") << QVariant() << QString();
}

void TestBackPlugin::restoreLoyaltySystemTakesTokenOfDocument()
{
    QFETCH(QVariant, stored);
    QFETCH(QString, token);
    TestablePlugin plugin;
    plugin.init();
    plugin.interface->setToken(QStringLiteral("earlier"));
    const auto document = m_host->document(EDocumentType::Sale);
    plugin.setDocument(document);
    if (stored.isValid())
        plugin.setPluginData(QStringLiteral("token"), stored);
    QVERIFY(plugin.restoreLoyaltySystem());
    QCOMPARE(plugin.interface->currentToken(), token);
}

void TestBackPlugin::showErrorShowsMessageOfException()
{
    TestablePlugin plugin;
    const tr::Tr message(QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена закрыта"));
    plugin.showError(BasicException(message));
    const auto shown = m_host->dialog()->messages();
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().message, message);
    QCOMPARE(shown.first().kind, 0);
    QCOMPARE(shown.first().timeout, 0);
}

void TestBackPlugin::showErrorIgnoresExceptionWithoutMessage()
{
    TestablePlugin plugin;
    plugin.showError(BasicException(tr::Tr()));
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

QTEST_GUILESS_MAIN(TestBackPlugin)
#include "tst_backplugin.moc"
