// The eleven service paths over loopback HTTP: answers in the shape the
// client reads, and the state each request changes.
#include "servicesession.h"

#include "emulator/emulator.h"

#include <QJsonArray>
#include <QTest>

#include <memory>

using tessaro::emulator::Cart;
using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;

namespace {

const QString milkBarcode = QStringLiteral("4600000000012");
const QString knownCard = QStringLiteral("67812345678");

QJsonObject till(int storeNo = 1, int tillNo = 2)
{
    return {{QStringLiteral("storeNo"), storeNo}, {QStringLiteral("tillNo"), tillNo}};
}

QJsonObject with(QJsonObject object, const QJsonObject &more)
{
    for (auto it = more.begin(); it != more.end(); ++it)
        object.insert(it.key(), it.value());
    return object;
}

QJsonObject itemBody(const QString &barcode, double quantity)
{
    return {{QStringLiteral("item"), QJsonObject{
        {QStringLiteral("checkBlock"), true},
        {QStringLiteral("barcode"), barcode},
        {QStringLiteral("quantity"), quantity},
        {QStringLiteral("scanerInput"), barcode},
    }}};
}

QJsonObject adviceNote(int storeNo = 1, int tillNo = 2)
{
    return {
        {QStringLiteral("header"), QJsonObject{
            {QStringLiteral("transactionType"), 2},
            {QStringLiteral("tillNo"), tillNo},
            {QStringLiteral("store"), storeNo},
            {QStringLiteral("customer"), QJsonObject{{QStringLiteral("customerNumber"), knownCard}}},
            {QStringLiteral("originalInvoice"), QJsonObject{
                {QStringLiteral("date"), QStringLiteral("20240131")},
                {QStringLiteral("storeNo"), storeNo},
                {QStringLiteral("tillNo"), tillNo},
                {QStringLiteral("invoiceNo"), QStringLiteral("000345")},
            }},
            {QStringLiteral("payments"), QJsonArray{QJsonObject{{QStringLiteral("code"), QStringLiteral("1")},
                                                                {QStringLiteral("amount"), 89.9}}}},
        }},
        {QStringLiteral("items"), QJsonArray{QJsonObject{
            {QStringLiteral("sequenceNumber"), QStringLiteral("1")},
            {QStringLiteral("subsysNo"), QStringLiteral("1001")},
            {QStringLiteral("quantity"), 1},
            {QStringLiteral("returnReason"), 3},
            {QStringLiteral("totalDiscountedGross"), 89.9},
        }}},
    };
}

QJsonObject paidBody()
{
    return {
        {QStringLiteral("status"), QStringLiteral("PAID")},
        {QStringLiteral("payment"), QJsonArray{QJsonObject{{QStringLiteral("paymentCode"), 1},
                                                           {QStringLiteral("paymentAmount"), 89.9}}}},
        {QStringLiteral("fiscalReceiptNumber"), QStringLiteral("777")},
    };
}

QString messageOf(const CurlResult &result)
{
    return result.object().value(QStringLiteral("message")).toString();
}

} // namespace

class TestEmulatorService : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void shiftStartsOpenByDefault();
    void closeAndReopenShift();
    void configuredTillStartsClosed();
    void closedShiftRefusesServiceCalls_data();
    void closedShiftRefusesServiceCalls();
    void tillMandatoryFields_data();
    void tillMandatoryFields();
    void depositRepeatedWithSameRequestId();
    void depositNeedsKnownTypeCode();

    void cartCreateAnswersIdentifiers();
    void cartCreateNeedsTill();
    void itemFromCatalogue();
    void itemOutsideCatalogueUsesDefaultPrice();
    void itemMandatoryFields();
    void itemWithTraceabilityAndCoupon();
    void cartReadBackByGetAndPost();
    void quantityOverwrite();
    void removalWithoutDeleteReasonRefused();
    void removalWithDeleteReason();
    void overwriteOfUnknownPosition();
    void priceOverwrite();
    void couponAddAndRemove();
    void invalidCouponFailsValidation();
    void customerAnswers_data();
    void customerAnswers();
    void customerPointsLimitedByCart();
    void customerPointsOfACartBeyondTheIntRange();
    void paidCartTakesNoMoreChanges();
    void cartStatusChecks_data();
    void cartStatusChecks();
    void cancelledCart();
    void unknownCart_data();
    void unknownCart();

    void adviceNoteGetsReturnInvoiceNumber();
    void adviceNoteNumberingFollowsTill();
    void adviceNoteMandatoryFields_data();
    void adviceNoteMandatoryFields();

    void payloadAnswers();
    void messagesAreTopLevelArray();

    void pathAndMethodChecks_data();
    void pathAndMethodChecks();

private:
    std::unique_ptr<Emulator> m_emulator;
    std::unique_ptr<ServiceSession> m_session;

    QString createCart();
};

void TestEmulatorService::init()
{
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.authMode = EmulatorSettings::AuthMode::None;
    settings.tills.append({12, 3, false, 345});
    settings.customers.insert(knownCard, QJsonObject{
        {QStringLiteral("firstName"), QStringLiteral("Anna")},
        {QStringLiteral("lastName"), QStringLiteral("Petrova")},
        {QStringLiteral("custNo"), 4711},
        {QStringLiteral("points"), 150},
    });
    settings.articles.append({milkBarcode, QStringLiteral("1001"), QStringLiteral("1001"), QStringLiteral("Milk"), 89.9});
    settings.invalidCoupons = QStringList{QStringLiteral("2559999")};
    settings.messages.insert(QStringLiteral("info"), {QStringLiteral("Hello"), QStringLiteral("Second")});
    settings.payloads.insert(QStringLiteral("p1"), QJsonObject{{QStringLiteral("receipt"), QStringLiteral("x")}});
    m_emulator = std::make_unique<Emulator>(settings);
    QVERIFY(m_emulator->startInThread() != 0);
    m_session = std::make_unique<ServiceSession>(*m_emulator);
}

void TestEmulatorService::cleanup()
{
    m_session.reset();
    m_emulator.reset();
}

QString TestEmulatorService::createCart()
{
    return m_session->post(QStringLiteral("/cart/create"), till()).object().value(QStringLiteral("uuid")).toString();
}

void TestEmulatorService::shiftStartsOpenByDefault()
{
    const CurlResult result = m_session->post(QStringLiteral("/till/open"),
                                              with(till(), {{QStringLiteral("operatorID"), QStringLiteral("7")}}));
    QCOMPARE(result.status, 409L);
    QCOMPARE(result.object(), QJsonObject({{QStringLiteral("status"), QStringLiteral("The shift is already opened")}}));
}

void TestEmulatorService::closeAndReopenShift()
{
    const QJsonObject close = with(till(), {{QStringLiteral("payments"), QJsonArray()}});
    const CurlResult closed = m_session->post(QStringLiteral("/till/close"), close);
    QCOMPARE(closed.status, 200L);
    QCOMPARE(closed.object().value(QStringLiteral("shiftNo")).toInt(), 1);
    QVERIFY(!m_emulator->state().shifts.isOpen(1, 2));

    const CurlResult again = m_session->post(QStringLiteral("/till/close"), close);
    QCOMPARE(again.object().value(QStringLiteral("status")).toString(), QStringLiteral("The shift is already closed"));

    const CurlResult opened = m_session->post(QStringLiteral("/till/open"),
                                              with(till(), {{QStringLiteral("operatorID"), QStringLiteral("7")}}));
    QCOMPARE(opened.status, 200L);
    QCOMPARE(opened.object().value(QStringLiteral("shiftNo")).toInt(), 2);
    QVERIFY(m_emulator->state().shifts.isOpen(1, 2));
}

void TestEmulatorService::configuredTillStartsClosed()
{
    const CurlResult refused = m_session->post(QStringLiteral("/cart/create"), till(12, 3));
    QCOMPARE(refused.object().value(QStringLiteral("status")).toString(), QStringLiteral("The shift is closed"));
    QCOMPARE(m_session->post(QStringLiteral("/till/open"),
                             with(till(12, 3), {{QStringLiteral("operatorID"), QStringLiteral("7")}})).status, 200L);
    QCOMPARE(m_session->post(QStringLiteral("/cart/create"), till(12, 3)).status, 200L);
}

void TestEmulatorService::closedShiftRefusesServiceCalls_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonObject>("body");
    QTest::newRow("cart create") << QStringLiteral("/cart/create") << till();
    QTest::newRow("advice note") << QStringLiteral("/advicenote") << adviceNote();
    QTest::newRow("deposit") << QStringLiteral("/till/deposit")
                             << with(till(), {{QStringLiteral("operatorID"), QStringLiteral("7")},
                                              {QStringLiteral("typeCode"), 2},
                                              {QStringLiteral("amount"), 100}});
    QTest::newRow("cart update") << QStringLiteral("/cart/%1/update") << itemBody(milkBarcode, 1);
    QTest::newRow("cart status") << QStringLiteral("/cart/%1/cart_status") << paidBody();
    QTest::newRow("add customer") << QStringLiteral("/cart/%1/add_customer")
                                  << QJsonObject{{QStringLiteral("cardBarcode"), knownCard}};
}

void TestEmulatorService::closedShiftRefusesServiceCalls()
{
    QFETCH(QString, path);
    QFETCH(QJsonObject, body);
    const QString uuid = createCart();
    m_emulator->state().shifts.setOpen(1, 2, false);
    const CurlResult result = m_session->post(path.arg(uuid), body);
    QCOMPARE(result.status, 409L);
    QCOMPARE(result.object(), QJsonObject({{QStringLiteral("status"), QStringLiteral("The shift is closed")}}));
    QCOMPARE(m_emulator->state().carts.carts().size(), 1);
    QVERIFY(m_emulator->state().adviceNotes.notes().isEmpty());
    QVERIFY(m_emulator->state().deposits.deposits().isEmpty());
    QCOMPARE(m_emulator->state().carts.find(uuid)->status(), QStringLiteral("init"));
}

void TestEmulatorService::tillMandatoryFields_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QJsonObject>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("open without operator") << QStringLiteral("/till/open") << till()
                                           << QStringLiteral("Missed mandatory fields: operatorID\n");
    QTest::newRow("open without till") << QStringLiteral("/till/open")
                                       << QJsonObject{{QStringLiteral("operatorID"), QStringLiteral("7")}}
                                       << QStringLiteral("Missed mandatory fields: storeNo, tillNo\n");
    QTest::newRow("close without payments") << QStringLiteral("/till/close") << till()
                                            << QStringLiteral("Missed mandatory fields: payments\n");
    QTest::newRow("close with incomplete payment")
        << QStringLiteral("/till/close")
        << with(till(), {{QStringLiteral("payments"), QJsonArray{QJsonObject{{QStringLiteral("paymentCode"), 1}}}}})
        << QStringLiteral("Missed mandatory fields: payments[0].paymentCount, payments[0].paymentAmount\n");
    QTest::newRow("deposit without amount")
        << QStringLiteral("/till/deposit")
        << with(till(), {{QStringLiteral("operatorID"), QStringLiteral("7")}, {QStringLiteral("typeCode"), 1}})
        << QStringLiteral("Missed mandatory fields: amount\n");
}

void TestEmulatorService::tillMandatoryFields()
{
    QFETCH(QString, path);
    QFETCH(QJsonObject, body);
    QFETCH(QString, message);
    const CurlResult result = m_session->post(path, body);
    QCOMPARE(result.status, 400L);
    QCOMPARE(messageOf(result), message);
}

void TestEmulatorService::depositRepeatedWithSameRequestId()
{
    const QJsonObject body = with(till(), {{QStringLiteral("operatorID"), QStringLiteral("7")},
                                           {QStringLiteral("typeCode"), 2},
                                           {QStringLiteral("amount"), 100.5}});
    const CurlResult first = m_session->post(QStringLiteral("/till/deposit"), body, {"X-Request-ID: r-1"});
    const CurlResult repeated = m_session->post(QStringLiteral("/till/deposit"), body, {"X-Request-ID: r-1"});
    QCOMPARE(first.status, 200L);
    QCOMPARE(repeated.object(), first.object());
    QCOMPARE(first.object().value(QStringLiteral("requestId")).toString(), QStringLiteral("r-1"));
    QCOMPARE(m_emulator->state().deposits.deposits().size(), 1);

    const CurlResult other = m_session->post(QStringLiteral("/till/deposit"), body, {"X-Request-ID: r-2"});
    QCOMPARE(other.object().value(QStringLiteral("depositId")).toInt(), 2);
    QCOMPARE(m_emulator->state().deposits.deposits().size(), 2);
}

void TestEmulatorService::depositNeedsKnownTypeCode()
{
    const CurlResult result = m_session->post(
        QStringLiteral("/till/deposit"), with(till(), {{QStringLiteral("operatorID"), QStringLiteral("7")},
                                                       {QStringLiteral("typeCode"), 3},
                                                       {QStringLiteral("amount"), 1}}));
    QCOMPARE(result.status, 400L);
    QCOMPARE(messageOf(result), QStringLiteral("Invalid data type"));
}

void TestEmulatorService::cartCreateAnswersIdentifiers()
{
    const CurlResult first = m_session->post(QStringLiteral("/cart/create"), till());
    QCOMPARE(first.status, 200L);
    const QJsonObject answer = first.object();
    QVERIFY(!answer.value(QStringLiteral("uuid")).toString().isEmpty());
    QCOMPARE(answer.value(QStringLiteral("lTaNmbr")).toInt(), 1);
    QCOMPARE(answer.value(QStringLiteral("invoiceID")).toString(), QStringLiteral("0/0/0002/000001"));
    QCOMPARE(answer.value(QStringLiteral("status")).toString(), QStringLiteral("init"));
    QCOMPARE(answer.value(QStringLiteral("items")).toArray(), QJsonArray());

    const QJsonObject second = m_session->post(QStringLiteral("/cart/create"), till()).object();
    QCOMPARE(second.value(QStringLiteral("lTaNmbr")).toInt(), 2);
    QCOMPARE(second.value(QStringLiteral("invoiceID")).toString(), QStringLiteral("0/0/0002/000002"));
    QCOMPARE(m_emulator->state().carts.carts().size(), 2);
}

void TestEmulatorService::cartCreateNeedsTill()
{
    const CurlResult result = m_session->post(QStringLiteral("/cart/create"), QJsonObject());
    QCOMPARE(result.status, 400L);
    QCOMPARE(messageOf(result), QStringLiteral("Missed mandatory fields: storeNo, tillNo\n"));
}

void TestEmulatorService::itemFromCatalogue()
{
    const QString uuid = createCart();
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 2));
    QCOMPARE(result.status, 200L);
    const QJsonObject cart = result.object();
    QCOMPARE(cart.value(QStringLiteral("status")).toString(), QStringLiteral("collecting"));
    QCOMPARE(cart.value(QStringLiteral("totalItems")).toInt(), 1);
    QCOMPARE(cart.value(QStringLiteral("pointsToRredeem")).toInt(), 0);
    const QJsonObject item = cart.value(QStringLiteral("items")).toArray().first().toObject();
    QCOMPARE(item.value(QStringLiteral("sequenceNumber")).toInt(), 1);
    QCOMPARE(item.value(QStringLiteral("artNo")).toString(), QStringLiteral("1001"));
    QCOMPARE(item.value(QStringLiteral("artName")).toString(), QStringLiteral("Milk"));
    QCOMPARE(item.value(QStringLiteral("quantity")).toDouble(), 2.0);
    const QJsonObject prices = item.value(QStringLiteral("prices")).toObject();
    QCOMPARE(prices.value(QStringLiteral("totalPriceGross")).toDouble(), 179.8);
    QCOMPARE(prices.value(QStringLiteral("totalDiscountGross")).toDouble(), 0.0);
    QCOMPARE(cart.value(QStringLiteral("messages")).toArray().first().toObject().value(QStringLiteral("text")).toString(),
             QStringLiteral("Position 1 added: Milk"));

    const QJsonObject second = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid),
                                               itemBody(milkBarcode, 1)).object();
    QCOMPARE(second.value(QStringLiteral("items")).toArray().at(1).toObject().value(QStringLiteral("sequenceNumber")).toInt(), 2);
    QCOMPARE(m_emulator->state().carts.find(uuid)->lines().size(), 2);
}

void TestEmulatorService::itemOutsideCatalogueUsesDefaultPrice()
{
    const QString uuid = createCart();
    QJsonObject body{{QStringLiteral("item"), QJsonObject{
        {QStringLiteral("checkBlock"), false},
        {QStringLiteral("subsysNo"), QStringLiteral("555")},
        {QStringLiteral("eanReasonCode"), 9},
        {QStringLiteral("quantity"), 1.5},
        {QStringLiteral("scanerInput"), QStringLiteral("555")},
    }}};
    const QJsonObject item = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), body)
                                 .object().value(QStringLiteral("items")).toArray().first().toObject();
    QCOMPARE(item.value(QStringLiteral("artNo")).toString(), QStringLiteral("555"));
    QCOMPARE(item.value(QStringLiteral("eanReasonCode")).toInt(), 9);
    QCOMPARE(item.value(QStringLiteral("prices")).toObject().value(QStringLiteral("totalPriceGross")).toDouble(), 150.0);
}

void TestEmulatorService::itemMandatoryFields()
{
    const QString uuid = createCart();
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid),
                                              {{QStringLiteral("item"), QJsonObject()}});
    QCOMPARE(result.status, 400L);
    QCOMPARE(messageOf(result), QStringLiteral("Missed mandatory fields: item.checkBlock, item.quantity, "
                                               "item.scanerInput, item.barcode\n"));
    QVERIFY(m_emulator->state().carts.find(uuid)->lines().isEmpty());
}

void TestEmulatorService::itemWithTraceabilityAndCoupon()
{
    const QString uuid = createCart();
    QJsonObject body = itemBody(milkBarcode, 1);
    QJsonObject item = body.value(QStringLiteral("item")).toObject();
    item.insert(QStringLiteral("traceability"), QJsonObject{{QStringLiteral("cdn"), QStringLiteral("CDN-1")},
                                                            {QStringLiteral("lotNumber"), QStringLiteral("L7")}});
    body.insert(QStringLiteral("item"), item);
    body.insert(QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), QStringLiteral("2551234")},
                                                      {QStringLiteral("validationCoupon"), true}});
    const QJsonObject line = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), body)
                                 .object().value(QStringLiteral("items")).toArray().first().toObject();
    const QJsonArray traceability = line.value(QStringLiteral("traceability")).toArray();
    QCOMPARE(traceability.size(), 1);
    QCOMPARE(traceability.first().toObject().value(QStringLiteral("cdn")).toString(), QStringLiteral("CDN-1"));
    QCOMPARE(line.value(QStringLiteral("dnr")).toArray(),
             (QJsonArray{QJsonObject{{QStringLiteral("couponNo"), QStringLiteral("2551234")}}}));
}

void TestEmulatorService::cartReadBackByGetAndPost()
{
    const QString uuid = createCart();
    const QJsonObject updated = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid),
                                                itemBody(milkBarcode, 1)).object();
    const CurlResult got = m_session->get(QStringLiteral("/cart/%1").arg(uuid));
    QCOMPARE(got.status, 200L);
    QCOMPARE(got.object().value(QStringLiteral("items")), updated.value(QStringLiteral("items")));
    // The client repeats a request after a token error as a POST, whatever it was.
    const CurlResult posted = m_session->post(QStringLiteral("/cart/%1").arg(uuid), QJsonObject());
    QCOMPARE(posted.status, 200L);
    QCOMPARE(posted.object(), got.object());
}

void TestEmulatorService::quantityOverwrite()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    const CurlResult result = m_session->post(
        QStringLiteral("/cart/%1/update").arg(uuid),
        {{QStringLiteral("quantityOverwrite"), QJsonObject{{QStringLiteral("sequenceNumber"), 1},
                                                           {QStringLiteral("quantity"), 3}}}});
    QCOMPARE(result.status, 200L);
    const QJsonObject item = result.object().value(QStringLiteral("items")).toArray().first().toObject();
    QCOMPARE(item.value(QStringLiteral("quantity")).toDouble(), 3.0);
    QCOMPARE(item.value(QStringLiteral("prices")).toObject().value(QStringLiteral("totalPriceGross")).toDouble(), 269.7);
}

void TestEmulatorService::removalWithoutDeleteReasonRefused()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    const CurlResult result = m_session->post(
        QStringLiteral("/cart/%1/update").arg(uuid),
        {{QStringLiteral("quantityOverwrite"), QJsonObject{{QStringLiteral("sequenceNumber"), 1},
                                                           {QStringLiteral("quantity"), 0}}}});
    QCOMPARE(result.status, 400L);
    QCOMPARE(result.object(), QJsonObject({{QStringLiteral("message"),
                                            QStringLiteral("Missed mandatory fields: quantityOverwrite.deleteReason\n")}}));
    QCOMPARE(m_emulator->state().carts.find(uuid)->lines().size(), 1);
}

void TestEmulatorService::removalWithDeleteReason()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    const CurlResult result = m_session->post(
        QStringLiteral("/cart/%1/update").arg(uuid),
        {{QStringLiteral("quantityOverwrite"), QJsonObject{{QStringLiteral("sequenceNumber"), 1},
                                                           {QStringLiteral("quantity"), 0},
                                                           {QStringLiteral("deleteReason"), 2}}}});
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.object().value(QStringLiteral("items")).toArray(), QJsonArray());
    QCOMPARE(result.object().value(QStringLiteral("totalItems")).toInt(), 0);
}

void TestEmulatorService::overwriteOfUnknownPosition()
{
    const QString uuid = createCart();
    const CurlResult result = m_session->post(
        QStringLiteral("/cart/%1/update").arg(uuid),
        {{QStringLiteral("quantityOverwrite"), QJsonObject{{QStringLiteral("sequenceNumber"), 9},
                                                           {QStringLiteral("quantity"), 1}}}});
    QCOMPARE(result.status, 404L);
    QCOMPARE(messageOf(result), QStringLiteral("Position 9 wasn't found in the cart"));
}

void TestEmulatorService::priceOverwrite()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 2));
    const QJsonObject change{{QStringLiteral("priceOverwrite"), QJsonObject{
        {QStringLiteral("sequenceNumber"), 1},
        {QStringLiteral("priceGross"), 80.0},
        {QStringLiteral("reasonCode"), 4},
        {QStringLiteral("operatorID"), 12},
        {QStringLiteral("qty"), 2},
    }}};
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), change);
    QCOMPARE(result.status, 200L);
    const QJsonObject prices = result.object().value(QStringLiteral("items")).toArray().first().toObject()
                                   .value(QStringLiteral("prices")).toObject();
    QCOMPARE(prices.value(QStringLiteral("totalPriceGross")).toDouble(), 160.0);
    QCOMPARE(prices.value(QStringLiteral("totalDiscountGross")).toDouble(), 19.8);

    const CurlResult incomplete = m_session->post(
        QStringLiteral("/cart/%1/update").arg(uuid),
        {{QStringLiteral("priceOverwrite"), QJsonObject{{QStringLiteral("sequenceNumber"), 1}}}});
    QCOMPARE(messageOf(incomplete), QStringLiteral("Missed mandatory fields: priceOverwrite.priceGross, "
                                                   "priceOverwrite.reasonCode, priceOverwrite.operatorID\n"));
}

void TestEmulatorService::couponAddAndRemove()
{
    const QString uuid = createCart();
    const QString update = QStringLiteral("/cart/%1/update").arg(uuid);
    const QJsonObject coupon{{QStringLiteral("number"), QStringLiteral("2551234")},
                             {QStringLiteral("validationCoupon"), true}};
    const QJsonObject added = m_session->post(update, {{QStringLiteral("coupon"), coupon}}).object();
    QCOMPARE(added.value(QStringLiteral("coupons")).toArray(),
             (QJsonArray{QJsonObject{{QStringLiteral("number"), QStringLiteral("2551234")}}}));

    const QJsonObject twice = m_session->post(update, {{QStringLiteral("coupon"), coupon}}).object();
    QCOMPARE(twice.value(QStringLiteral("coupons")).toArray().size(), 1);
    QCOMPARE(twice.value(QStringLiteral("messages")).toArray().first().toObject().value(QStringLiteral("text")).toString(),
             QStringLiteral("Coupon 2551234 is already in the cart"));

    QJsonObject removal = coupon;
    removal.insert(QStringLiteral("validationCoupon"), false);
    removal.insert(QStringLiteral("isDeleted"), true);
    const CurlResult removed = m_session->post(update, {{QStringLiteral("coupon"), removal}});
    QCOMPARE(removed.status, 200L);
    QCOMPARE(removed.object().value(QStringLiteral("coupons")).toArray(), QJsonArray());
    QVERIFY(m_emulator->state().carts.find(uuid)->coupons().isEmpty());

    const CurlResult missing = m_session->post(update, {{QStringLiteral("coupon"), removal}});
    QCOMPARE(missing.status, 404L);
}

void TestEmulatorService::invalidCouponFailsValidation()
{
    const QString uuid = createCart();
    const QString update = QStringLiteral("/cart/%1/update").arg(uuid);
    const CurlResult validated = m_session->post(
        update, {{QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), QStringLiteral("2559999")},
                                                        {QStringLiteral("validationCoupon"), true}}}});
    QCOMPARE(validated.object().value(QStringLiteral("status")).toString(), QStringLiteral("3V validation error"));
    QVERIFY(m_emulator->state().carts.find(uuid)->coupons().isEmpty());

    const CurlResult unvalidated = m_session->post(
        update, {{QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), QStringLiteral("2559999")},
                                                        {QStringLiteral("validationCoupon"), false}}}});
    QCOMPARE(unvalidated.object().value(QStringLiteral("status")).toString(), QStringLiteral("collecting"));
    QCOMPARE(m_emulator->state().carts.find(uuid)->coupons(), QStringList{QStringLiteral("2559999")});
}

void TestEmulatorService::customerAnswers_data()
{
    QTest::addColumn<QJsonObject>("body");
    QTest::addColumn<long>("status");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown") << QJsonObject{{QStringLiteral("cardBarcode"), QStringLiteral("11111111111")}} << 404L
                             << QStringLiteral("Customer wasn't found in CustomerAPI");
    QTest::newRow("pattern") << QJsonObject{{QStringLiteral("cardBarcode"), QStringLiteral("12AB")}} << 400L
                             << QStringLiteral("cardBarcode doesn't match pattern");
    QTest::newRow("missing") << QJsonObject() << 400L << QStringLiteral("Missed mandatory fields: cardBarcode\n");
    QTest::newRow("known") << QJsonObject{{QStringLiteral("cardBarcode"), knownCard}} << 200L << QString();
}

void TestEmulatorService::customerAnswers()
{
    QFETCH(QJsonObject, body);
    QFETCH(long, status);
    QFETCH(QString, message);
    const QString uuid = createCart();
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/add_customer").arg(uuid), body);
    QCOMPARE(result.status, status);
    QCOMPARE(messageOf(result), message);
    const bool bound = !m_emulator->state().carts.find(uuid)->customer().isEmpty();
    QCOMPARE(bound, status == 200);
    if (status == 200) {
        QCOMPARE(result.object().value(QStringLiteral("firstName")).toString(), QStringLiteral("Anna"));
        QCOMPARE(result.object().value(QStringLiteral("custNo")).toInt(), 4711);
        QCOMPARE(result.object().value(QStringLiteral("cardNo")).toString(), knownCard);
    }
}

void TestEmulatorService::customerPointsLimitedByCart()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/add_customer").arg(uuid), {{QStringLiteral("cardBarcode"), knownCard}});
    const QJsonObject one = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1)).object();
    QCOMPARE(one.value(QStringLiteral("pointsToRredeem")).toInt(), 89);
    const QJsonObject two = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1)).object();
    QCOMPARE(two.value(QStringLiteral("pointsToRredeem")).toInt(), 150);
    QCOMPARE(two.value(QStringLiteral("customer")).toObject().value(QStringLiteral("lastName")).toString(),
             QStringLiteral("Petrova"));
}

void TestEmulatorService::customerPointsOfACartBeyondTheIntRange()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/add_customer").arg(uuid), {{QStringLiteral("cardBarcode"), knownCard}});
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1e12));
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.object().value(QStringLiteral("pointsToRredeem")).toInt(), 150);
}

void TestEmulatorService::paidCartTakesNoMoreChanges()
{
    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    const CurlResult paid = m_session->post(QStringLiteral("/cart/%1/cart_status").arg(uuid), paidBody());
    QCOMPARE(paid.status, 200L);
    QCOMPARE(paid.object().value(QStringLiteral("status")).toString(), QStringLiteral("PAID"));
    QCOMPARE(m_emulator->state().carts.find(uuid)->statusBody(), paidBody());

    const CurlResult late = m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    QCOMPARE(late.status, 409L);
    QCOMPARE(late.object().value(QStringLiteral("statusCode")).toInt(), 3002);
    QCOMPARE(m_emulator->state().carts.find(uuid)->lines().size(), 1);
}

void TestEmulatorService::cartStatusChecks_data()
{
    QTest::addColumn<QJsonObject>("body");
    QTest::addColumn<QString>("message");
    QTest::newRow("no status") << QJsonObject() << QStringLiteral("Missed mandatory fields: status\n");
    QTest::newRow("unknown status") << QJsonObject{{QStringLiteral("status"), QStringLiteral("LOST")}}
                                    << QStringLiteral("Invalid data type");
    QTest::newRow("PAID without payment") << QJsonObject{{QStringLiteral("status"), QStringLiteral("PAID")}}
                                          << QStringLiteral("Missed mandatory fields: payment, fiscalReceiptNumber\n");
    QJsonObject incomplete = paidBody();
    incomplete.insert(QStringLiteral("payment"), QJsonArray{QJsonObject{{QStringLiteral("paymentCode"), 1}}});
    QTest::newRow("payment without amount") << incomplete
                                            << QStringLiteral("Missed mandatory fields: payment[0].paymentAmount\n");
}

void TestEmulatorService::cartStatusChecks()
{
    QFETCH(QJsonObject, body);
    QFETCH(QString, message);
    const QString uuid = createCart();
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/cart_status").arg(uuid), body);
    QCOMPARE(result.status, 400L);
    QCOMPARE(messageOf(result), message);
    QCOMPARE(m_emulator->state().carts.find(uuid)->status(), QStringLiteral("init"));
}

void TestEmulatorService::cancelledCart()
{
    const QString uuid = createCart();
    const CurlResult result = m_session->post(QStringLiteral("/cart/%1/cart_status").arg(uuid),
                                              {{QStringLiteral("status"), QStringLiteral("CANCELLED")}});
    QCOMPARE(result.status, 200L);
    QCOMPARE(m_emulator->state().carts.find(uuid)->status(), QStringLiteral("CANCELLED"));
    QVERIFY(m_emulator->state().carts.find(uuid)->isClosed());
}

void TestEmulatorService::unknownCart_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("content") << QStringLiteral("/cart/nope");
    QTest::newRow("update") << QStringLiteral("/cart/nope/update");
    QTest::newRow("status") << QStringLiteral("/cart/nope/cart_status");
    QTest::newRow("customer") << QStringLiteral("/cart/nope/add_customer");
}

void TestEmulatorService::unknownCart()
{
    QFETCH(QString, path);
    const CurlResult result = m_session->post(path, itemBody(milkBarcode, 1));
    QCOMPARE(result.status, 404L);
    QCOMPARE(messageOf(result), QStringLiteral("Cart wasn't found"));
}

void TestEmulatorService::adviceNoteGetsReturnInvoiceNumber()
{
    const CurlResult first = m_session->post(QStringLiteral("/advicenote"), adviceNote());
    QCOMPARE(first.status, 200L);
    const QJsonObject answer = first.object();
    QCOMPARE(answer.value(QStringLiteral("Key4")).toString(), QStringLiteral("0/0/0002/000001"));
    QCOMPARE(answer.value(QStringLiteral("invoiceID")).toString(), QStringLiteral("000002000001"));
    QVERIFY(!answer.value(QStringLiteral("uuid")).toString().isEmpty());

    const CurlResult second = m_session->post(QStringLiteral("/advicenote"), adviceNote());
    QCOMPARE(second.object().value(QStringLiteral("Key4")).toString(), QStringLiteral("0/0/0002/000002"));
    const auto notes = m_emulator->state().adviceNotes.notes();
    QCOMPARE(notes.size(), 2);
    QCOMPARE(notes.first().body, adviceNote());
    QCOMPARE(notes.first().uuid, answer.value(QStringLiteral("uuid")).toString());
}

void TestEmulatorService::adviceNoteNumberingFollowsTill()
{
    m_emulator->state().shifts.setOpen(12, 3, true);
    const CurlResult result = m_session->post(QStringLiteral("/advicenote"), adviceNote(12, 3));
    QCOMPARE(result.object().value(QStringLiteral("Key4")).toString(), QStringLiteral("0/0/0003/000345"));
}

void TestEmulatorService::adviceNoteMandatoryFields_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("missing");
    QTest::newRow("transactionType") << QStringLiteral("header.transactionType") << QStringLiteral("header.transactionType");
    QTest::newRow("tillNo") << QStringLiteral("header.tillNo") << QStringLiteral("header.tillNo");
    QTest::newRow("store") << QStringLiteral("header.store") << QStringLiteral("header.store");
    QTest::newRow("originalInvoice") << QStringLiteral("header.originalInvoice") << QStringLiteral("header.originalInvoice");
    QTest::newRow("items") << QStringLiteral("items") << QStringLiteral("items");
    QTest::newRow("item's returnReason") << QStringLiteral("items.returnReason") << QStringLiteral("items[0].returnReason");
    QTest::newRow("header") << QStringLiteral("header")
                            << QStringLiteral("header.transactionType, header.tillNo, header.store, header.originalInvoice");
}

void TestEmulatorService::adviceNoteMandatoryFields()
{
    QFETCH(QString, path);
    QFETCH(QString, missing);
    QJsonObject body = adviceNote();
    const QStringList keys = path.split(QLatin1Char('.'));
    if (keys.size() == 1) {
        body.remove(keys.first());
    } else if (keys.first() == QLatin1String("header")) {
        QJsonObject header = body.value(QStringLiteral("header")).toObject();
        header.remove(keys.last());
        body.insert(QStringLiteral("header"), header);
    } else {
        QJsonObject item = body.value(QStringLiteral("items")).toArray().first().toObject();
        item.remove(keys.last());
        body.insert(QStringLiteral("items"), QJsonArray{item});
    }
    const CurlResult result = m_session->post(QStringLiteral("/advicenote"), body);
    QCOMPARE(result.status, 400L);
    QCOMPARE(messageOf(result), QStringLiteral("Missed mandatory fields: %1\n").arg(missing));
    QVERIFY(m_emulator->state().adviceNotes.notes().isEmpty());
}

void TestEmulatorService::payloadAnswers()
{
    const CurlResult configured = m_session->get(QStringLiteral("/payload/p1"));
    QCOMPARE(configured.object(), QJsonObject({{QStringLiteral("receipt"), QStringLiteral("x")}}));

    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    m_session->post(QStringLiteral("/cart/%1/cart_status").arg(uuid), paidBody());
    const QJsonObject payload = m_session->get(QStringLiteral("/payload/%1").arg(uuid)).object();
    QCOMPARE(payload.value(QStringLiteral("uuid")).toString(), uuid);
    QCOMPARE(payload.value(QStringLiteral("status")).toString(), QStringLiteral("PAID"));
    QCOMPARE(payload.value(QStringLiteral("payment")), paidBody().value(QStringLiteral("payment")));
    QCOMPARE(payload.value(QStringLiteral("fiscalReceiptNumber")).toString(), QStringLiteral("777"));

    const CurlResult unknown = m_session->get(QStringLiteral("/payload/none"));
    QCOMPARE(unknown.status, 404L);
    QCOMPARE(messageOf(unknown), QStringLiteral("Payload wasn't found"));
}

void TestEmulatorService::messagesAreTopLevelArray()
{
    const CurlResult configured = m_session->get(QStringLiteral("/messages/info"));
    QCOMPARE(configured.status, 200L);
    QCOMPARE(configured.array(), QJsonArray({QJsonObject{{QStringLiteral("message"), QStringLiteral("Hello")}},
                                            QJsonObject{{QStringLiteral("message"), QStringLiteral("Second")}}}));
    QCOMPARE(m_session->get(QStringLiteral("/messages/none")).body, QByteArray("[]"));

    const QString uuid = createCart();
    m_session->post(QStringLiteral("/cart/%1/update").arg(uuid), itemBody(milkBarcode, 1));
    QCOMPARE(m_session->post(QStringLiteral("/messages/%1").arg(uuid), QJsonObject()).array(),
             (QJsonArray{QJsonObject{{QStringLiteral("message"), QStringLiteral("Position 1 added: Milk")}}}));
}

void TestEmulatorService::pathAndMethodChecks_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("contentType");
    QTest::addColumn<long>("status");
    QTest::addColumn<QString>("message");
    const QByteArray json = "Content-Type: application/json";
    QTest::newRow("unknown path") << QByteArray("POST") << QStringLiteral("/api/nothing") << QByteArray("{}") << json
                                  << 404L << QStringLiteral("Not found");
    QTest::newRow("outside base path") << QByteArray("POST") << QStringLiteral("/advicenote") << QByteArray("{}")
                                       << json << 404L << QStringLiteral("Not found");
    QTest::newRow("GET on a POST path") << QByteArray("GET") << QStringLiteral("/api/advicenote") << QByteArray()
                                        << json << 405L << QStringLiteral("Method GET not allowed");
    QTest::newRow("GET cart/create") << QByteArray("GET") << QStringLiteral("/api/cart/create") << QByteArray()
                                     << json << 405L << QStringLiteral("Method GET not allowed");
    QTest::newRow("not JSON content") << QByteArray("POST") << QStringLiteral("/api/cart/create") << QByteArray("{}")
                                      << QByteArray("Content-Type: text/plain") << 415L
                                      << QStringLiteral("Content-Type must be application/json");
    QTest::newRow("not a JSON object") << QByteArray("POST") << QStringLiteral("/api/cart/create")
                                       << QByteArray("[1,2]") << json << 400L << QStringLiteral("Invalid data type");
    QTest::newRow("broken JSON") << QByteArray("POST") << QStringLiteral("/api/cart/create")
                                 << QByteArray("{\"storeNo\":") << json << 400L << QStringLiteral("Invalid data type");
}

void TestEmulatorService::pathAndMethodChecks()
{
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, contentType);
    QFETCH(long, status);
    QFETCH(QString, message);
    QUrl url = m_emulator->baseUrl();
    url.setPath(path);
    const CurlResult result = m_session->client().send(method, url, body, {contentType});
    QCOMPARE(result.status, status);
    QCOMPARE(messageOf(result), message);
    QVERIFY(m_emulator->state().carts.carts().isEmpty());
}

QTEST_GUILESS_MAIN(TestEmulatorService)
#include "tst_emulatorservice.moc"
