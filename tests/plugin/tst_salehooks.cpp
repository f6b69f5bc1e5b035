// The hooks inside an open document: input, coupons, position add, storno all.

#include "plugintestcase.h"

#include <actionpipeline.h>
#include <actionqueuecontroller.h>
#include <control/args/core.h>
#include <dictionariesdao.h>
#include <edocumenttype.h>
#include <quantity.h>
#include <session.h>
#include <singleton.h>

#include <QTest>

namespace {

ModifiersContainer &sessionModifiers()
{
    return Singleton<Session>::instance()->getModifiers();
}

ActionQueueController *actionQueue()
{
    return Singleton<ActionQueueController>::instance();
}

QSharedPointer<GoodsItem> position(bool fractional)
{
    auto item = QSharedPointer<GoodsItem>::create();
    item->setTmcUnit(QSharedPointer<TmcUnit>::create(fractional));
    item->setBquant(2.5);
    return item;
}

control::Action addPosition(const QSharedPointer<GoodsItem> &item)
{
    const control::Action action(control::AddPosition, {});
    control::args::Core(action).setPosition(item);
    return action;
}

QList<int> ranTypes()
{
    QList<int> types;
    for (const auto &action : actionQueue()->ranActions())
        types << action.getType();
    return types;
}

} // namespace

class TestSaleHooks : public PluginTestCase
{
    Q_OBJECT

private slots:
    void saleWithCardNeedsNothingMore();
    void withoutCardCouponsAndGoodsAreRefused_data();
    void withoutCardCouponsAndGoodsAreRefused();
    void couponWithCardIsAllowed();
    void quantityQuestion_data();
    void quantityQuestion();
    void quantityInput_data();
    void quantityInput();
    void price_data();
    void price();
    void givenPriceIsKept();
    void positionAddWithoutPositionIsRefused_data();
    void positionAddWithoutPositionIsRefused();
    void positionWithoutUnitCountsAsPieces();
    void returnReasonRefusalStopsPositionAdd();
    void inputOnReturnWithKnownInvoice();
    void inputOnReturnAsksForInvoice_data();
    void inputOnReturnAsksForInvoice();
    void inputOnOtherDocumentsHasNothingToDo();
    void stornoAllOfReturnLeavesForMenu_data();
    void stornoAllOfReturnLeavesForMenu();

private:
    // Binds a return document that already knows its invoice.
    void bindReturn();
};

void TestSaleHooks::bindReturn()
{
    m_plugin->setDocument(m_host->returnWithInvoice());
    actionQueue()->clearRecords();
}

void TestSaleHooks::saleWithCardNeedsNothingMore()
{
    m_plugin->setDocument(m_host->document(EDocumentType::Sale));
    QTest::ignoreMessage(QtDebugMsg, "Дополнительная обработка не требуется");
    QCOMPARE(m_plugin->beforePositionAdd(addPosition(position(false))), EContext::Continue);
    QVERIFY(actionQueue()->ranActions().isEmpty());
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

// The card is looked at before the document type, for every type.
void TestSaleHooks::withoutCardCouponsAndGoodsAreRefused_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("sale") << int(EDocumentType::Sale);
    QTest::newRow("return") << int(EDocumentType::Back);
    QTest::newRow("return by sale") << int(EDocumentType::BackBySale);
}

void TestSaleHooks::withoutCardCouponsAndGoodsAreRefused()
{
    QFETCH(int, type);
    m_plugin->setDocument(type == EDocumentType::Back ? m_host->returnWithInvoice(false) : m_host->document(type, false));
    m_host->dialog()->clear();

    QCOMPARE(m_plugin->addCoupon(control::Action(control::AddCoupon, {})), EContext::Stop);
    QCOMPARE(m_plugin->beforePositionAdd(addPosition(position(false))), EContext::Stop);
    const auto shown = m_host->dialog()->messages();
    QCOMPARE(shown.size(), 2);
    QCOMPARE(shown.at(0).message, tr::Tr(QStringLiteral("tessaroNoCardCouponError"),
                                         QStringLiteral("Запрещено добавлять купоны, если в чеке нет карты")));
    QCOMPARE(shown.at(1).message, tr::Tr(QStringLiteral("tessaroNoCardError"),
                                         QStringLiteral("Запрещено добавлять товары, если в чеке нет карты")));
    for (const auto &message : shown) {
        QCOMPARE(message.kind, 1);
        QCOMPARE(message.timeout, 0);
    }
    QVERIFY(actionQueue()->ranActions().isEmpty());
}

void TestSaleHooks::couponWithCardIsAllowed()
{
    m_plugin->setDocument(m_host->document(EDocumentType::Sale));
    QCOMPARE(m_plugin->addCoupon(control::Action(control::AddCoupon, {})), EContext::Continue);
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

// A quantity of exactly one piece counts as not given; weighed goods keep it.
void TestSaleHooks::quantityQuestion_data()
{
    QTest::addColumn<QVariant>("given");
    QTest::addColumn<bool>("fractional");
    QTest::addColumn<bool>("asked");
    QTest::newRow("1.0 of weighed goods") << QVariant::fromValue(Quantity(1.0)) << true << false;
    QTest::newRow("1.0 of pieces") << QVariant::fromValue(Quantity(1.0)) << false << true;
    QTest::newRow("2.0 of pieces") << QVariant::fromValue(Quantity(2.0)) << false << false;
    QTest::newRow("0.75 of weighed goods") << QVariant::fromValue(Quantity(0.75)) << true << false;
    QTest::newRow("none of weighed goods") << QVariant() << true << true;
}

void TestSaleHooks::quantityQuestion()
{
    QFETCH(QVariant, given);
    QFETCH(bool, fractional);
    QFETCH(bool, asked);
    bindReturn();
    if (given.isValid())
        sessionModifiers().setValue(modifiers::Quantity, given);
    sessionModifiers().setValue(modifiers::Price, 10.0);
    const auto item = position(fractional);
    actionQueue()->setRunner([item](const control::Action &action) {
        if (action.getType() == control::InputQuantity && control::args::Core(action).getPosition() == item)
            sessionModifiers().setValue(modifiers::Quantity, QVariant::fromValue(Quantity(3.0)));
        return EContext::Continue;
    });
    QCOMPARE(m_plugin->beforePositionAdd(addPosition(item)), EContext::Continue);
    QCOMPARE(ranTypes(), asked ? QList<int>{control::InputQuantity} : QList<int>());
    // Without a question the position keeps what the host gave it.
    QCOMPARE(item->getQuantity(), asked ? 3.0 : 2.5);
}

void TestSaleHooks::quantityInput_data()
{
    QTest::addColumn<int>("inputResult");
    QTest::addColumn<double>("entered");
    QTest::addColumn<int>("result");
    QTest::addColumn<double>("quantity");
    QTest::newRow("entered") << int(EContext::Continue) << 0.5 << int(EContext::Continue) << 0.5;
    QTest::newRow("threshold") << int(EContext::Continue) << 0.0005 << int(EContext::Continue) << 0.0005;
    QTest::newRow("below threshold") << int(EContext::Continue) << 0.0004 << int(EContext::Stop) << 2.5;
    QTest::newRow("negative counts by size") << int(EContext::Continue) << -2.0 << int(EContext::Continue) << -2.0;
    QTest::newRow("cancelled") << int(EContext::Stop) << 4.0 << int(EContext::Stop) << 2.5;
    QTest::newRow("NaN is refused") << int(EContext::Continue) << qQNaN() << int(EContext::Stop) << 2.5;
    QTest::newRow("infinity is refused") << int(EContext::Continue) << -qInf() << int(EContext::Stop) << 2.5;
}

void TestSaleHooks::quantityInput()
{
    QFETCH(int, inputResult);
    QFETCH(double, entered);
    QFETCH(int, result);
    QFETCH(double, quantity);
    bindReturn();
    sessionModifiers().setValue(modifiers::Price, 10.0);
    actionQueue()->setRunner([=](const control::Action &) {
        sessionModifiers().setValue(modifiers::Quantity, QVariant::fromValue(Quantity(entered)));
        return EContext::Result(inputResult);
    });
    const auto item = position(true);
    QCOMPARE(m_plugin->beforePositionAdd(addPosition(item)), EContext::Result(result));
    QCOMPARE(ranTypes(), QList<int>{control::InputQuantity});
    QCOMPARE(item->getQuantity(), quantity);
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

void TestSaleHooks::price_data()
{
    QTest::addColumn<QVariant>("entered");
    QTest::addColumn<int>("result");
    QTest::addColumn<double>("price");
    QTest::newRow("entered") << QVariant(120.5) << int(EContext::Continue) << 120.5;
    QTest::newRow("threshold") << QVariant(0.005) << int(EContext::Continue) << 0.005;
    QTest::newRow("0.004 is refused") << QVariant(0.004) << int(EContext::Stop) << 0.0;
    QTest::newRow("nothing entered") << QVariant() << int(EContext::Stop) << 0.0;
    QTest::newRow("not a number") << QVariant(QStringLiteral("abc")) << int(EContext::Stop) << 0.0;
    QTest::newRow("NaN") << QVariant(qQNaN()) << int(EContext::Stop) << 0.0;
    QTest::newRow("infinity") << QVariant(qInf()) << int(EContext::Stop) << 0.0;
}

void TestSaleHooks::price()
{
    QFETCH(QVariant, entered);
    QFETCH(int, result);
    QFETCH(double, price);
    bindReturn();
    sessionModifiers().setValue(modifiers::Quantity, QVariant::fromValue(Quantity(2.0)));
    QList<bool> skipChoiceReason;
    actionQueue()->setRunner([&](const control::Action &action) {
        skipChoiceReason << action.value(QStringLiteral("skipChoiceReason")).toBool();
        if (entered.isValid())
            sessionModifiers().setValue(modifiers::Price, entered);
        return EContext::Continue;
    });
    const control::Action action = addPosition(position(false));
    QCOMPARE(m_plugin->beforePositionAdd(action), EContext::Result(result));
    QCOMPARE(ranTypes(), QList<int>{control::InputPrice});
    QCOMPARE(skipChoiceReason, QList<bool>{true});
    QVERIFY(action.value(QStringLiteral("skipChoiceReason")).toBool());
    QCOMPARE(control::args::Core(action).getPosition()->getPrice(), price);
}

// A return whose reason table is empty asks for no reason, and so reaches the
// position at once: an action that carries none is refused, not followed.
void TestSaleHooks::positionAddWithoutPositionIsRefused_data()
{
    QTest::addColumn<QVariant>("quantity");
    QTest::addColumn<QVariant>("price");
    QTest::newRow("nothing typed") << QVariant() << QVariant();
    QTest::newRow("one piece typed") << QVariant::fromValue(Quantity(1.0)) << QVariant();
    QTest::newRow("quantity and price typed") << QVariant::fromValue(Quantity(2.0)) << QVariant(10.0);
}

void TestSaleHooks::positionAddWithoutPositionIsRefused()
{
    QFETCH(QVariant, quantity);
    QFETCH(QVariant, price);
    bindReturn();
    QVERIFY(Singleton<DictionariesDao>::instance()->getBackReasons(2).isEmpty());
    if (quantity.isValid())
        sessionModifiers().setValue(modifiers::Quantity, quantity);
    if (price.isValid())
        sessionModifiers().setValue(modifiers::Price, price);
    QTest::ignoreMessage(QtCriticalMsg, "Действие 201 без позиции отклонено");
    QCOMPARE(m_plugin->beforePositionAdd(control::Action(control::AddPosition, {})), EContext::Stop);
    QVERIFY(actionQueue()->ranActions().isEmpty());
}

void TestSaleHooks::positionWithoutUnitCountsAsPieces()
{
    bindReturn();
    sessionModifiers().setValue(modifiers::Quantity, QVariant::fromValue(Quantity(1.0)));
    sessionModifiers().setValue(modifiers::Price, 10.0);
    auto item = QSharedPointer<GoodsItem>::create();
    item->setTmcUnit({});
    QCOMPARE(m_plugin->beforePositionAdd(addPosition(item)), EContext::Continue);
    QCOMPARE(ranTypes(), QList<int>{control::InputQuantity});
}

void TestSaleHooks::givenPriceIsKept()
{
    bindReturn();
    sessionModifiers().setValue(modifiers::Quantity, QVariant::fromValue(Quantity(2.0)));
    sessionModifiers().setValue(modifiers::Price, 99.0);
    const control::Action action = addPosition(position(false));
    QCOMPARE(m_plugin->beforePositionAdd(action), EContext::Continue);
    QVERIFY(actionQueue()->ranActions().isEmpty());
    QVERIFY(!action.contains(QStringLiteral("skipChoiceReason")));
}

// A reason choice that stops (no goods position to choose for) stops the add.
void TestSaleHooks::returnReasonRefusalStopsPositionAdd()
{
    bindReturn();
    Singleton<DictionariesDao>::instance()->setBackReasons(2, {{1, QStringLiteral("Брак")}});
    QCOMPARE(m_plugin->beforePositionAdd(control::Action(control::AddPosition, {})), EContext::Stop);
    QCOMPARE(m_host->dialog()->messageIds(), QStringList{QStringLiteral("selectedPositionIsNotAProduct")});
    QVERIFY(actionQueue()->ranActions().isEmpty());
}

void TestSaleHooks::inputOnReturnWithKnownInvoice()
{
    bindReturn();
    QCOMPARE(m_plugin->beforeInput(control::Action(control::Input, {})), EContext::NotHandled);
    QVERIFY(m_host->backDialog()->shown().isEmpty());
}

void TestSaleHooks::inputOnReturnAsksForInvoice_data()
{
    QTest::addColumn<QVariantMap>("answer");
    QTest::addColumn<int>("result");
    QTest::newRow("invoice entered") << ScriptedBackDialog::invoice("12", "345", "7", "2024-02-01") << int(EContext::Continue);
    QTest::newRow("invoice number missing") << ScriptedBackDialog::invoice("12", "", "7", "2024-02-01") << int(EContext::Stop);
    QTest::newRow("cancelled") << QVariantMap() << int(EContext::Stop);
}

void TestSaleHooks::inputOnReturnAsksForInvoice()
{
    QFETCH(QVariantMap, answer);
    QFETCH(int, result);
    const auto document = m_host->document(EDocumentType::Back);
    m_plugin->setDocument(document);  // the cashier cancels the question of the binding
    m_host->backDialog()->enqueueAnswer(answer);

    QCOMPARE(m_plugin->beforeInput(control::Action(control::Input, {})), EContext::Result(result));
    QCOMPARE(m_host->backDialog()->shown().size(), 2);
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceIDRaw")).toString(),
             result == EContext::Continue ? QStringLiteral("0/0/0012/000345") : QString());
}

void TestSaleHooks::inputOnOtherDocumentsHasNothingToDo()
{
    m_plugin->setDocument(m_host->backBySale(QStringLiteral("000012000345")));
    QCOMPARE(m_plugin->beforeInput(control::Action(control::Input, {})), EContext::NotHandled);
    m_plugin->setDocument(m_host->document(EDocumentType::Sale));
    QCOMPARE(m_plugin->beforeInput(control::Action(control::Input, {})), EContext::NotHandled);
    QVERIFY(m_host->backDialog()->shown().isEmpty());
}

void TestSaleHooks::stornoAllOfReturnLeavesForMenu_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("leaves");
    QTest::newRow("return by sale") << int(EDocumentType::BackBySale) << true;
    QTest::newRow("return") << int(EDocumentType::Back) << true;
    QTest::newRow("sale") << int(EDocumentType::Sale) << false;
}

// Storno of all positions, run through the host's pipeline as the till runs it.
void TestSaleHooks::stornoAllOfReturnLeavesForMenu()
{
    QFETCH(int, type);
    QFETCH(bool, leaves);
    if (type == EDocumentType::BackBySale)
        m_plugin->setDocument(m_host->backBySale(QStringLiteral("000100122024000012000345")));
    else if (type == EDocumentType::Back)
        bindReturn();
    else
        m_plugin->setDocument(m_host->document(type));
    ActionPipeline pipeline;
    pipeline.addPlugin(m_plugin.get());
    pipeline.setHostAction(control::StornoAll, [](const control::Action &) { return EContext::Continue; });

    QCOMPARE(pipeline.run(control::Action(control::StornoAll, {})), EContext::Continue);
    const auto queued = actionQueue()->queuedActions();
    QCOMPARE(queued.size(), leaves ? 1 : 0);
    if (leaves) {
        QCOMPARE(queued.first().getType(), control::ExitToMenu);
        QCOMPARE(queued.first().value(QStringLiteral("shutdown")), QVariant(false));
    }
}

QTEST_GUILESS_MAIN(TestSaleHooks)
#include "tst_salehooks.moc"
