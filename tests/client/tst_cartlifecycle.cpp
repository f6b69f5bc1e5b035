#include "cartclienttest.h"
#include "cartemulatorbed.h"
#include "servicetestbed.h"

#include "responses/connectionerrorexception.h"

#include <goodsitem.h>
#include <support/logcapture.h>

#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using Request = ScriptedHttpServer::Request;
using carttest::Client;

class TestCartLifecycle : public QObject
{
    Q_OBJECT

private slots:
    void cardBarcode_data();
    void cardBarcode();
    void cartCreateSendsStoreAndTill();
    void cartCreateCodes_data();
    void cartCreateCodes();
    void cartCreateForgetsTheLastCart();
    void addCustomerSendsTheCardBarcode();
    void cartContentReadsWithoutTouchingTheLastCart();
    void getCardIsTheLoyaltyCard();
    void requestsLeaveConnectionErrors_data();
    void requestsLeaveConnectionErrors();
    void acceptedUpdateSetsThePointsLimit_data();
    void acceptedUpdateSetsThePointsLimit();
    void updateWithoutCardRecordIsAccepted();
    void errorReplyIsAcceptedToo();
    void lifecycleOnTheService();
};

void TestCartLifecycle::cardBarcode_data()
{
    QTest::addColumn<QString>("card");
    QTest::addColumn<QString>("barcode");
    QTest::newRow("17 characters") << "12345678901234567" << "12345678901234567";
    QTest::newRow("19 characters") << "1234567890123456789" << "1234567890123456789";
    QTest::newRow("18 characters") << "123456789012345678" << "67812345678";
    QTest::newRow("18 letters") << "ABCDEFGHIJKLMNOPQR" << "FGHKLMNOPQR";
    QTest::newRow("empty") << QString() << QString();
}

void TestCartLifecycle::cardBarcode()
{
    QFETCH(QString, card);
    QFETCH(QString, barcode);
    TestHost host;
    tessaro::Interface client;
    const LogCapture log;
    QCOMPARE(client.getCardBarcode(card), barcode);
    const QStringList lines = carttest::clientLines(log);
    if (card.size() == 18)
        QCOMPARE(lines, QStringList{QStringLiteral("Вместо номера карты используются номер ТКД: ") + barcode});
    else
        QVERIFY(lines.isEmpty());
}

void TestCartLifecycle::cartCreateSendsStoreAndTill()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"uuid":"c-1","status":"init","lTaNmbr":41,"invoiceID":"7/12/41"})"));
    Client client;
    const LogCapture log;

    const tessaro::CartCreateResponse reply = client.cartCreate();
    QCOMPARE(reply.uuid(), QStringLiteral("c-1"));
    QCOMPARE(reply.lTaNmbr(), QStringLiteral("41"));
    QCOMPARE(carttest::clientLines(log), QStringList{QStringLiteral("Инициализация корзины")});

    QCOMPARE(bed.server().requestCount(), 1);
    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/create"));
    QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
    QCOMPARE(request.headerCount("X-Request-ID"), 0);
    carttest::compareJson(ServiceTestBed::jsonBody(request), {{"storeNo", 7}, {"tillNo", 12}});
}

void TestCartLifecycle::cartCreateCodes_data()
{
    QTest::addColumn<QString>("shopCode");
    QTest::addColumn<QString>("cashCode");
    QTest::addColumn<int>("storeNo");
    QTest::addColumn<int>("tillNo");
    QTest::newRow("leading zeros") << "0007" << "012" << 7 << 12;
    QTest::newRow("not numbers") << "A7" << "12b" << 0 << 0;
    QTest::newRow("beyond 32 bits") << "2147483648" << "2147483647" << 0 << 2147483647;
    QTest::newRow("empty") << QString() << QString() << 0 << 0;
}

void TestCartLifecycle::cartCreateCodes()
{
    QFETCH(QString, shopCode);
    QFETCH(QString, cashCode);
    QFETCH(int, storeNo);
    QFETCH(int, tillNo);
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"uuid":"c-1","status":"init"})"));
    Registry &registry = Singleton<Session>::instance()->getRegistry();
    registry.setShopCode(shopCode);
    registry.setCashCode(cashCode);
    Client client;
    client.cartCreate();
    carttest::compareJson(ServiceTestBed::jsonBody(bed.server().requests().first()),
                          {{"storeNo", storeNo}, {"tillNo", tillNo}});
}

void TestCartLifecycle::cartCreateForgetsTheLastCart()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1)})));
    bed.server().enqueue(Answer::json(200, R"({"uuid":"c-2","status":"init"})"));
    Client client;
    client.updateCart(QStringLiteral("c-1"), {{"item", QJsonObject{{"barcode", "4600000000001"}}}});
    QVERIFY(client.lastCart.has_value());
    client.cartCreate();
    QVERIFY(!client.lastCart.has_value());
}

void TestCartLifecycle::addCustomerSendsTheCardBarcode()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"firstName":"Анна","custNo":17,"cardNo":"123456789012345678"})"));
    Client client;
    const LogCapture log;

    const tessaro::AddCustomerResponse reply = client.addCustomer(QStringLiteral("c-1"), QStringLiteral("123456789012345678"));
    QCOMPARE(reply.firstName(), QStringLiteral("Анна"));
    QCOMPARE(reply.clientNumber(), QStringLiteral("17"));
    QCOMPARE(carttest::clientLines(log),
             (QStringList{QStringLiteral("Добавление клиента '123456789012345678'"),
                          QStringLiteral("Вместо номера карты используются номер ТКД: 67812345678")}));

    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/c-1/add_customer"));
    carttest::compareJson(ServiceTestBed::jsonBody(request), {{"cardBarcode", "67812345678"}});
}

void TestCartLifecycle::cartContentReadsWithoutTouchingTheLastCart()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1)})));
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1), carttest::line(2, 3)})));
    Client client;
    const tessaro::CartUpdateResponse confirmed = client.updateCart(QStringLiteral("c-1"), {{"item", QJsonObject()}});

    const tessaro::CartUpdateResponse content = client.cartContent(QStringLiteral("c-1"));
    QCOMPARE(content.items().size(), 2);
    QCOMPARE(content.totalQuantity(), 4.0);
    QVERIFY(client.lastCart.has_value());
    QVERIFY(*client.lastCart == confirmed);

    const Request request = bed.server().requests().at(1);
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/c-1"));
    QVERIFY(request.body.isEmpty());
}

void TestCartLifecycle::getCardIsTheLoyaltyCard()
{
    TestHost host;
    tessaro::Interface client;
    QVERIFY(client.getCard().isNull());

    const QSharedPointer<DocumentCardRecord> other = carttest::documentWithCard(3);
    QVERIFY(client.getCard().isNull());

    const QSharedPointer<DocumentCardRecord> loyalty = carttest::documentWithCard(27);
    QCOMPARE(client.getCard(), loyalty);
}

void TestCartLifecycle::requestsLeaveConnectionErrors_data()
{
    QTest::addColumn<int>("operation");
    QTest::newRow("cartCreate") << 0;
    QTest::newRow("addCustomer") << 1;
    QTest::newRow("cartContent") << 2;
}

void TestCartLifecycle::requestsLeaveConnectionErrors()
{
    QFETCH(int, operation);
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::close());
    Client client;
    const QString uuid = QStringLiteral("c-1");
    switch (operation) {
    case 0:
        QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.cartCreate());
        break;
    case 1:
        QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.addCustomer(uuid, QStringLiteral("1")));
        break;
    default:
        QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.cartContent(uuid));
    }
    QVERIFY(bed.host().dialog()->messages().isEmpty());
}

void TestCartLifecycle::acceptedUpdateSetsThePointsLimit_data()
{
    QTest::addColumn<QJsonObject>("extra");
    QTest::addColumn<int>("points");
    QTest::newRow("points to redeem") << QJsonObject{{"pointsToRredeem", 120}} << 120;
    QTest::newRow("missing field") << QJsonObject() << 0;
    QTest::newRow("mistyped field") << QJsonObject{{"pointsToRredeem", "120"}} << 0;
}

void TestCartLifecycle::acceptedUpdateSetsThePointsLimit()
{
    QFETCH(QJsonObject, extra);
    QFETCH(int, points);
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1)}, extra)));
    const QSharedPointer<DocumentCardRecord> card = carttest::documentWithCard();
    card->setMaxPointsForSpend(50);
    Client client;
    client.updateCart(QStringLiteral("c-1"), {{"item", QJsonObject()}});
    QCOMPARE(card->getMaxPointsForSpend(), points);
}

// The update reached the service whether or not the document has a card:
// it is accepted, and points the customer could spend but no card can hold
// are named in the log.
void TestCartLifecycle::updateWithoutCardRecordIsAccepted()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1)}, {{"pointsToRredeem", 5}})));
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 2)}, {{"pointsToRredeem", 6}})));
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 3)})));
    Client client;
    const LogCapture log;
    // No document at all, then a document without a loyalty card.
    QCOMPARE(client.updateCart(QStringLiteral("c-1"), {{"item", QJsonObject()}}).pointsToRredeem(), 5);
    const QSharedPointer<DocumentCardRecord> other = carttest::documentWithCard(3);
    QCOMPARE(client.updateCart(QStringLiteral("c-1"), {{"item", QJsonObject()}}).pointsToRredeem(), 6);
    QCOMPARE(client.lastCart->pointsToRredeem(), 6);
    QCOMPARE(other->getMaxPointsForSpend(), 0);
    // No points, nothing to hold.
    QCOMPARE(client.updateCart(QStringLiteral("c-1"), {{"item", QJsonObject()}}).pointsToRredeem(), 0);
    QCOMPARE(carttest::clientLines(log, QtWarningMsg),
             (QStringList{QStringLiteral("Баллы к списанию (5) не записаны: в документе нет карты клиента"),
                          QStringLiteral("Баллы к списанию (6) не записаны: в документе нет карты клиента")}));
}

void TestCartLifecycle::errorReplyIsAcceptedToo()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"uuid":"c-1","status":"3V validation error","pointsToRredeem":3})"));
    const QSharedPointer<DocumentCardRecord> card = carttest::documentWithCard();
    Client client;
    const tessaro::CartUpdateResponse reply = client.updateCart(QStringLiteral("c-1"), {{"coupon", QJsonObject()}});
    QCOMPARE(reply.status(), tessaro::Response::ValidationError);
    QVERIFY(client.lastCart.has_value());
    QVERIFY(*client.lastCart == reply);
    QCOMPARE(card->getMaxPointsForSpend(), 3);
    QCOMPARE(bed.server().requestCount(), 1);
}

void TestCartLifecycle::lifecycleOnTheService()
{
    CartEmulatorBed bed;
    const QSharedPointer<DocumentCardRecord> card = carttest::documentWithCard();
    Client client;

    const tessaro::CartCreateResponse created = client.cartCreate();
    QVERIFY(created.success());
    const QString cart = created.uuid();
    QCOMPARE(bed.cart(cart).storeNo(), 7);
    QCOMPARE(bed.cart(cart).tillNo(), 12);
    QCOMPARE(created.lTaNmbr(), QString::number(bed.cart(cart).lTaNmbr()));
    QCOMPARE(created.invoiceIDModified(), QStringLiteral("000012000001"));

    // The 18-character card goes as the customer's card barcode.
    const tessaro::AddCustomerResponse customer = client.addCustomer(cart, QStringLiteral("123456789012345678"));
    QVERIFY(customer.success());
    QCOMPARE(customer.firstName(), QStringLiteral("Анна"));
    QVERIFY(!customer.creditPaymentAllowed());
    QCOMPARE(bed.cart(cart).customer().value("custNo"), QJsonValue(4711));
    const tessaro::AddCustomerResponse unknown = client.addCustomer(cart, QStringLiteral("123456789000000000"));
    QCOMPARE(unknown.status(), tessaro::Response::CustomerNotFound);
    QCOMPARE(unknown.errorMessage().id(), QStringLiteral("tessaroClientNotFoundError"));

    const auto milk = QSharedPointer<GoodsItem>::create();
    milk->setBarcode(CartEmulatorBed::milkBarcode);
    milk->setBquant(2);
    tessaro::PositionData position;
    const tessaro::CartUpdateResponse updated = client.addItemToCart(cart, milk, position, true);
    QCOMPARE(updated.pointsToRredeem(), 150);
    QCOMPARE(card->getMaxPointsForSpend(), 150);

    const tessaro::CartUpdateResponse content = client.cartContent(cart);
    QCOMPARE(content.uuid(), cart);
    QCOMPARE(content.totalQuantity(), 2.0);
    QCOMPARE(content.jsonObject().value("items"), updated.jsonObject().value("items"));
    QCOMPARE(bed.received(QStringLiteral("/update")), 1);
}

QTEST_GUILESS_MAIN(TestCartLifecycle)
#include "tst_cartlifecycle.moc"
