#include "cartclienttest.h"
#include "cartemulatorbed.h"
#include "servicetestbed.h"

#include "responses/connectionerrorexception.h"

#include <basicexception.h>
#include <goodsitem.h>
#include <support/logcapture.h>
#include <tmc.h>

#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using carttest::Client;
using tessaro::Interface;
using tessaro::PositionData;

namespace {

const QString uuid = QStringLiteral("c-1");
const QString groupSeparator = QString(QChar(29));

// A scanned goods item whose article is found by barcode.
QSharedPointer<GoodsItem> goods(const QString &barcode = QStringLiteral("4600000000012"))
{
    const auto item = QSharedPointer<GoodsItem>::create();
    item->setBarcode(barcode);
    item->setCode(QStringLiteral("1001"));
    item->setBquant(2);
    item->setInputType(GoodsItem::Scanner);
    item->setTmc(QSharedPointer<Tmc>::create(QSet<int>{Tmc::ByBarcode}));
    return item;
}

// A goods item whose article is entered by its code, typed in by hand.
QSharedPointer<GoodsItem> byCode()
{
    const QSharedPointer<GoodsItem> item = goods();
    item->setTmc(QSharedPointer<Tmc>::create(QSet<int>{Tmc::ByCode}));
    item->setBcodeMode(1);
    return item;
}

// EAN reasons section entries, code to text.
QMap<QString, QString> reasons(const QMap<int, QString> &texts)
{
    QMap<QString, QString> settings;
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        settings.insert(QStringLiteral("Tessaro.EanReasons:%1").arg(it.key()), it.value());
    return settings;
}

// Adds \a item through a scripted service and returns the body it sent.
QJsonObject sentBody(ServiceTestBed &bed, const QSharedPointer<GoodsItem> &item, PositionData &position,
                     bool checkBlock = false)
{
    bed.server().setDefaultAnswer(Answer::json(200, carttest::cart({carttest::line(1, 2)})));
    Client client;
    client.addItemToCart(uuid, item, position, checkBlock);
    return ServiceTestBed::jsonBody(bed.server().requests().last());
}

QJsonObject sentItem(ServiceTestBed &bed, const QSharedPointer<GoodsItem> &item)
{
    PositionData position;
    return sentBody(bed, item, position).value("item").toObject();
}

} // namespace

class TestCartItems : public QObject
{
    Q_OBJECT

private slots:
    void everyFieldOfAnItem();
    void scannedItemGoesByBarcode();
    void exciseEanIsSentAsBarcodeWithReason();
    void itemGoesByCode_data();
    void itemGoesByCode();
    void eanReasonByConfiguration_data();
    void eanReasonByConfiguration();
    void choiceListsTheReasonsByCode();
    void inputTypeFiveWithoutOnlineReasonSendsNone();
    void settledReasonIsKeptAndReused();
    void reasonSettledBeforeIsSentWithoutAsking_data();
    void reasonSettledBeforeIsSentWithoutAsking();
    void cancelledChoiceSendsNothing();
    void scannerInput_data();
    void scannerInput();
    void traceability_data();
    void traceability();
    void blockedItemAuthorisation();
    void couponOfTheGoodsItem_data();
    void couponOfTheGoodsItem();
    void quantityOverwrite_data();
    void quantityOverwrite();
    void priceOverwrite_data();
    void priceOverwrite();
    void priceOverwriteIsSentOnceAndKeepsTheLastCart();
    void itemsOnTheService();
};

void TestCartItems::everyFieldOfAnItem()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("true")}});
    const QSharedPointer<GoodsItem> item = goods();
    item->setBcodeMode(1);
    item->setInputRawData(QStringLiteral("0104600000000012215abc") + groupSeparator + QStringLiteral("93dGVz"));
    item->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("ean"), QStringLiteral("4601234567893"));
    item->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("coupon"), QStringLiteral("2550001"));
    item->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("traceability"),
                            QVariantMap{{"cdn", "CDN-1"}, {"serialNumber", "S-9"}, {"gtin", "04600000000012"}});
    PositionData position;
    position.blockActorCode = QStringLiteral("1005");
    const LogCapture log;

    const QJsonObject body = sentBody(bed, item, position, true);
    carttest::compareJson(body, {{"item", QJsonObject{{"checkBlock", true},
                                                      {"blockedItemAutorizationOperatorID", "1005"},
                                                      {"barcode", "4601234567893"},
                                                      {"eanReasonCode", 9},
                                                      {"quantity", 2},
                                                      {"scanerInput", "0104600000000012215abc[1d]93dGVz"},
                                                      {"traceability", QJsonObject{{"cdn", "CDN-1"}, {"serialNumber", "S-9"}}}}},
                                 {"coupon", QJsonObject{{"number", "2550001"}, {"validationCoupon", true}}}});
    QCOMPARE(carttest::clientLines(log),
             (QStringList{QStringLiteral("Добавление позиции в корзину 'c-1'"),
                          QStringLiteral("Для добавления позиции используется EAN от Excise: '4601234567893'")}));
    QCOMPARE(position.eanReason, 9);
    QCOMPARE(bed.server().requests().last().path, QStringLiteral("/api/cart/c-1/update"));
}

void TestCartItems::scannedItemGoesByBarcode()
{
    ServiceTestBed bed;
    const QSharedPointer<GoodsItem> item = goods();
    item->setBcodeMode(1);
    PositionData position;
    const QJsonObject body = sentBody(bed, item, position);
    carttest::compareJson(body, {{"item", QJsonObject{{"checkBlock", false},
                                                      {"barcode", "4600000000012"},
                                                      {"quantity", 2},
                                                      {"scanerInput", "4600000000012"}}}});
    QCOMPARE(position.eanReason, -1);
    QVERIFY(bed.host().dialog()->choices().isEmpty());
}

void TestCartItems::exciseEanIsSentAsBarcodeWithReason()
{
    ServiceTestBed bed(reasons({{4, QStringLiteral("Нет штрихкода")}}));
    const QSharedPointer<GoodsItem> item = byCode();
    item->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("ean"), QStringLiteral("4601234567893"));
    const QJsonObject sent = sentItem(bed, item);
    QCOMPARE(sent.value("barcode"), QJsonValue("4601234567893"));
    QVERIFY(!sent.contains("subsysNo"));
    QCOMPARE(sent.value("eanReasonCode"), QJsonValue(4));
}

void TestCartItems::itemGoesByCode_data()
{
    QTest::addColumn<QSet<int>>("getMethods");
    QTest::addColumn<int>("inputType");
    QTest::addColumn<bool>("byArticleCode");
    QTest::newRow("article entered by code") << QSet<int>{Tmc::ByCode} << int(GoodsItem::Scanner) << true;
    QTest::newRow("input type 5") << QSet<int>{Tmc::ByBarcode} << int(GoodsItem::ByCode) << true;
    QTest::newRow("both") << QSet<int>{Tmc::ByBarcode, Tmc::ByCode} << int(GoodsItem::ByCode) << true;
    QTest::newRow("neither") << QSet<int>{Tmc::ByBarcode} << int(GoodsItem::Keyboard) << false;
}

void TestCartItems::itemGoesByCode()
{
    QFETCH(QSet<int>, getMethods);
    QFETCH(int, inputType);
    QFETCH(bool, byArticleCode);
    ServiceTestBed bed({{QStringLiteral("Tessaro:onlineCheckEanReasonCode"), QStringLiteral("6")}});
    const QSharedPointer<GoodsItem> item = goods();
    item->setTmc(QSharedPointer<Tmc>::create(getMethods));
    item->setInputType(inputType);
    item->setBcodeMode(1);
    const LogCapture log;
    const QJsonObject sent = sentItem(bed, item);
    QCOMPARE(sent.contains("subsysNo"), byArticleCode);
    QCOMPARE(sent.contains("barcode"), !byArticleCode);
    QCOMPARE(sent.contains("eanReasonCode"), byArticleCode);
    if (byArticleCode) {
        QCOMPARE(sent.value("subsysNo"), QJsonValue("1001"));
        QCOMPARE(sent.value("eanReasonCode"), QJsonValue(inputType == GoodsItem::ByCode ? 6 : 9));
    }
    QCOMPARE(carttest::clientLines(log).contains(QStringLiteral("Для добавления позиции используется код товара")),
             byArticleCode);
}

void TestCartItems::eanReasonByConfiguration_data()
{
    QTest::addColumn<int>("bcodeMode");
    QTest::addColumn<QVariantMap>("configured");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("expected");
    QTest::addColumn<bool>("asked");
    QTest::newRow("none configured") << 1 << QVariantMap() << -1 << 9 << false;
    QTest::newRow("one configured") << 1 << QVariantMap{{"4", "Нет штрихкода"}} << -1 << 4 << false;
    QTest::newRow("two configured, the second chosen")
        << 1 << QVariantMap{{"12", "Штрихкод не читается"}, {"3", "Нет штрихкода"}} << 1 << 12 << true;
    QTest::newRow("another barcode mode") << 0 << QVariantMap{{"4", "Нет штрихкода"}} << -1 << -1 << false;
}

void TestCartItems::eanReasonByConfiguration()
{
    QFETCH(int, bcodeMode);
    QFETCH(QVariantMap, configured);
    QFETCH(int, answer);
    QFETCH(int, expected);
    QFETCH(bool, asked);
    QMap<int, QString> texts;
    for (auto it = configured.cbegin(); it != configured.cend(); ++it)
        texts.insert(it.key().toInt(), it.value().toString());
    ServiceTestBed bed(reasons(texts));
    bed.host().dialog()->enqueueChoice(answer);
    const QSharedPointer<GoodsItem> item = byCode();
    item->setBcodeMode(bcodeMode);
    PositionData position;

    const QJsonObject sent = sentBody(bed, item, position).value("item").toObject();
    QCOMPARE(sent.value("eanReasonCode").toInt(-1), expected);
    QCOMPARE(sent.contains("eanReasonCode"), expected >= 0);
    QCOMPARE(position.eanReason, expected);
    QCOMPARE(bed.host().dialog()->choices().size(), asked ? 1 : 0);
}

void TestCartItems::choiceListsTheReasonsByCode()
{
    ServiceTestBed bed(reasons({{12, QStringLiteral("Штрихкод не читается")}, {3, QStringLiteral("Нет штрихкода")},
                                {7, QStringLiteral("Товар без этикетки")}}));
    bed.host().dialog()->enqueueChoice(0);
    TestHost &host = bed.host();
    const Interface client;
    QCOMPARE(client.getEanReasonCode(), 3);
    const ScriptedDialog::Choice choice = host.dialog()->choices().first();
    QCOMPARE(choice.title.id(), QStringLiteral("tessaroEanReasonChoice"));
    QCOMPARE(choice.title.text(), QStringLiteral("Выбор причины добавления товара по коду"));
    QCOMPARE(choice.items, (QStringList{QStringLiteral("Нет штрихкода"), QStringLiteral("Товар без этикетки"),
                                        QStringLiteral("Штрихкод не читается")}));
}

void TestCartItems::inputTypeFiveWithoutOnlineReasonSendsNone()
{
    ServiceTestBed bed;
    const QSharedPointer<GoodsItem> item = goods();
    item->setInputType(GoodsItem::ByCode);
    item->setBcodeMode(1);
    PositionData position;
    position.eanReason = 4;
    const QJsonObject sent = sentBody(bed, item, position).value("item").toObject();
    QCOMPARE(sent.value("subsysNo"), QJsonValue("1001"));
    QVERIFY(!sent.contains("eanReasonCode"));
    QCOMPARE(position.eanReason, 4);
    QCOMPARE(Interface().getOnlineCheckEanReasonCode(), -1);
}

void TestCartItems::settledReasonIsKeptAndReused()
{
    ServiceTestBed bed(reasons({{3, QStringLiteral("Нет штрихкода")}, {12, QStringLiteral("Штрихкод не читается")}}));
    bed.host().dialog()->enqueueChoice(1);
    bed.server().setDefaultAnswer(Answer::json(200, carttest::cart({carttest::line(1, 2)})));
    Client client;
    PositionData position;
    client.addItemToCart(uuid, byCode(), position, false);
    QCOMPARE(position.eanReason, 12);
    // The next request for the same position: no question, the same reason.
    client.addItemToCart(uuid, byCode(), position, false);
    QCOMPARE(bed.host().dialog()->choices().size(), 1);
    for (const ScriptedHttpServer::Request &request : bed.server().requests())
        QCOMPARE(ServiceTestBed::jsonBody(request).value("item").toObject().value("eanReasonCode"), QJsonValue(12));
}

void TestCartItems::reasonSettledBeforeIsSentWithoutAsking_data()
{
    QTest::addColumn<int>("settled");
    // 0 is a reason like any other: only a negative one is none.
    QTest::newRow("reason 0") << 0;
    QTest::newRow("reason 1") << 1;
    QTest::newRow("reason 12") << 12;
}

void TestCartItems::reasonSettledBeforeIsSentWithoutAsking()
{
    QFETCH(int, settled);
    ServiceTestBed bed(reasons({{3, QStringLiteral("Нет штрихкода")}, {12, QStringLiteral("Штрихкод не читается")}}));
    PositionData position;
    position.eanReason = settled;
    QJsonObject sent;
    try {
        sent = sentBody(bed, byCode(), position).value("item").toObject();
    } catch (const BasicException &) {
        QFAIL("the settled reason was not taken: the cashier was asked, and no answer was scripted");
    }
    QCOMPARE(sent.value("eanReasonCode"), QJsonValue(settled));
    QCOMPARE(position.eanReason, settled);
    QVERIFY(bed.host().dialog()->choices().isEmpty());
}

void TestCartItems::cancelledChoiceSendsNothing()
{
    ServiceTestBed bed(reasons({{3, QStringLiteral("Нет штрихкода")}, {12, QStringLiteral("Штрихкод не читается")}}));
    Client client;
    PositionData position;
    try {
        client.addItemToCart(uuid, byCode(), position, false);
        QFAIL("a cancelled choice must end the addition");
    } catch (const BasicException &cancelled) {
        QVERIFY(cancelled.tr().isEmpty());
    }
    QCOMPARE(bed.server().requestCount(), 0);
    QCOMPARE(position.eanReason, -1);
}

void TestCartItems::scannerInput_data()
{
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("exciseMark");
    QTest::addColumn<QString>("expected");
    const QString gs = groupSeparator;
    QTest::newRow("raw input with separators") << "01046" + gs + "21abc" + gs << "mark" << "01046[1d]21abc[1d]";
    QTest::newRow("excise mark when no raw input") << QString() << "22N" + gs + "00" << "22N[1d]00";
    QTest::newRow("barcode when neither") << QString() << QString() << "4600000000012";
}

void TestCartItems::scannerInput()
{
    QFETCH(QString, raw);
    QFETCH(QString, exciseMark);
    QFETCH(QString, expected);
    ServiceTestBed bed;
    const QSharedPointer<GoodsItem> item = goods();
    item->setInputRawData(raw);
    item->setExciseMark(exciseMark);
    QCOMPARE(sentItem(bed, item).value("scanerInput"), QJsonValue(expected));
}

void TestCartItems::traceability_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QJsonValue>("expected");
    QTest::newRow("nothing stored") << QVariant() << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("all fields empty") << QVariant(orvel::Traceability().toMap()) << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("only cdnOrig and gtin") << QVariant(QVariantMap{{"cdnOrig", "0123"}, {"gtin", "0460"}})
                                           << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("every field sent")
        << QVariant(QVariantMap{{"cdn", "a"}, {"fz1162Field", "b"}, {"alcoMarkField", "c"}, {"barcodeField", "d"},
                                {"serialNumber", "e"}, {"lotNumber", "f"}, {"cdnOrig", "g"}, {"gtin", "h"}})
        << QJsonValue(QJsonObject{{"cdn", "a"}, {"fz1162Field", "b"}, {"alcoMarkField", "c"}, {"barcodeField", "d"},
                                  {"serialNumber", "e"}, {"lotNumber", "f"}});
    orvel::Traceability record;
    record.lotNumber = QStringLiteral("L-3");
    QTest::newRow("a record, not a map") << QVariant::fromValue(record) << QJsonValue(QJsonObject{{"lotNumber", "L-3"}});
}

void TestCartItems::traceability()
{
    QFETCH(QVariant, stored);
    QFETCH(QJsonValue, expected);
    ServiceTestBed bed;
    const QSharedPointer<GoodsItem> item = goods();
    if (stored.isValid())
        item->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("traceability"), stored);
    const QJsonObject sent = sentItem(bed, item);
    QCOMPARE(sent.value("traceability"), expected);
}

void TestCartItems::blockedItemAuthorisation()
{
    ServiceTestBed bed;
    PositionData position;
    QVERIFY(!sentBody(bed, goods(), position).value("item").toObject().contains("blockedItemAutorizationOperatorID"));
    position.blockActorCode = QStringLiteral("2001");
    QCOMPARE(sentBody(bed, goods(), position).value("item").toObject().value("blockedItemAutorizationOperatorID"),
             QJsonValue("2001"));
}

void TestCartItems::couponOfTheGoodsItem_data()
{
    QTest::addColumn<QString>("validationSetting");
    QTest::addColumn<QString>("coupon");
    QTest::addColumn<QJsonObject>("expected");
    QTest::newRow("no coupon") << "true" << QString() << QJsonObject();
    QTest::newRow("validation unset") << QString() << "2550001" << QJsonObject{{"number", "2550001"}, {"validationCoupon", false}};
    QTest::newRow("validation on") << "true" << "2550001" << QJsonObject{{"number", "2550001"}, {"validationCoupon", true}};
}

void TestCartItems::couponOfTheGoodsItem()
{
    QFETCH(QString, validationSetting);
    QFETCH(QString, coupon);
    QFETCH(QJsonObject, expected);
    QMap<QString, QString> settings;
    if (!validationSetting.isEmpty())
        settings.insert(QStringLiteral("Tessaro:validationCoupon"), validationSetting);
    ServiceTestBed bed(settings);
    const QSharedPointer<GoodsItem> item = goods();
    if (!coupon.isEmpty())
        item->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("coupon"), coupon);
    QCOMPARE(Interface().getCoupon(item), expected);
    PositionData position;
    const QJsonObject body = sentBody(bed, item, position);
    QCOMPARE(body.contains("coupon"), !expected.isEmpty());
    if (!expected.isEmpty())
        QCOMPARE(body.value("coupon"), QJsonValue(expected));
}

void TestCartItems::quantityOverwrite_data()
{
    QTest::addColumn<int>("sequenceNumber");
    QTest::addColumn<double>("quantity");
    QTest::addColumn<int>("deleteReason");
    QTest::addColumn<QString>("logLine");
    QTest::addColumn<QJsonObject>("expected");
    QTest::newRow("new quantity") << 3 << 2.5 << 0 << "Установка количества 2.500 в позицию '3'"
                                  << QJsonObject{{"sequenceNumber", 3}, {"quantity", 2.5}};
    QTest::newRow("smallest quantity") << 1 << 0.0005 << 0 << "Установка количества 0.001 в позицию '1'"
                                       << QJsonObject{{"sequenceNumber", 1}, {"quantity", 0.0005}};
    QTest::newRow("below, a removal") << 4 << 0.0004 << 0 << "Удаление позиции '4' из корзины"
                                      << QJsonObject{{"sequenceNumber", 4}, {"quantity", 0.0004}};
    QTest::newRow("removal with reason") << 4 << 0.0 << 2 << "Удаление позиции '4' из корзины"
                                         << QJsonObject{{"sequenceNumber", 4}, {"quantity", 0}, {"deleteReason", 2}};
}

void TestCartItems::quantityOverwrite()
{
    QFETCH(int, sequenceNumber);
    QFETCH(double, quantity);
    QFETCH(int, deleteReason);
    QFETCH(QString, logLine);
    QFETCH(QJsonObject, expected);
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::json(200, carttest::cart({})));
    Client client;
    const LogCapture log;
    client.quantityOverwrite(uuid, sequenceNumber, quantity, Interface::DeleteReason(deleteReason));
    QCOMPARE(carttest::clientLines(log), QStringList{logLine});
    const ScriptedHttpServer::Request request = bed.server().requests().first();
    QCOMPARE(request.path, QStringLiteral("/api/cart/c-1/update"));
    carttest::compareJson(ServiceTestBed::jsonBody(request), {{"quantityOverwrite", expected}});
}

void TestCartItems::priceOverwrite_data()
{
    QTest::addColumn<double>("quantity");
    QTest::addColumn<QJsonObject>("expected");
    const QJsonObject common{{"sequenceNumber", 2}, {"priceGross", 79.9}, {"reasonCode", 5}, {"operatorID", 1005}};
    QJsonObject withQuantity = common;
    withQuantity.insert("qty", 2);
    QTest::newRow("no quantity") << 0.0 << common;
    QTest::newRow("at the limit") << 0.0005 << common;
    QTest::newRow("two") << 2.0 << withQuantity;
}

void TestCartItems::priceOverwrite()
{
    QFETCH(double, quantity);
    QFETCH(QJsonObject, expected);
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(2, 2, 159.8)})));
    Client client;
    const tessaro::CartUpdateResponse reply =
        client.priceOverwrite(uuid, 2, 79.9, 5, Singleton<Session>::instance()->getCurrentUser(), quantity);
    QCOMPARE(reply.items().first().getPriceForItem(), 79.9);
    const ScriptedHttpServer::Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/c-1/update"));
    carttest::compareJson(ServiceTestBed::jsonBody(request), {{"priceOverwrite", expected}});
    const QList<tr::Tr> progress = bed.host().dialog()->progress();
    QCOMPARE(progress.size(), 1);
    QCOMPARE(progress.first().id(), QStringLiteral("tessaroProgress"));
    QCOMPARE(progress.first().text(), QStringLiteral("Обращение к сервису Tessaro"));
}

void TestCartItems::priceOverwriteIsSentOnceAndKeepsTheLastCart()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1)})));
    bed.server().enqueue(Answer::json(200, carttest::cart({carttest::line(1, 1, 5)})));
    bed.server().enqueue(Answer::close());
    Client client;
    const tessaro::CartUpdateResponse confirmed = client.quantityOverwrite(uuid, 1, 1, Interface::NoDeleteReason);
    client.priceOverwrite(uuid, 1, 5, 1, Singleton<Session>::instance()->getCurrentUser(), 1);
    QVERIFY(*client.lastCart == confirmed);

    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException,
                             client.priceOverwrite(uuid, 1, 4, 1, QSharedPointer<User>(), 1));
    QCOMPARE(bed.server().requestCount(), 3);
    QVERIFY(*client.lastCart == confirmed);
}

void TestCartItems::itemsOnTheService()
{
    CartEmulatorBed bed;
    Interface client;
    const QString cart = client.cartCreate().uuid();

    PositionData milk;
    const QSharedPointer<GoodsItem> scannedMilk = goods(CartEmulatorBed::milkBarcode);
    const tessaro::CartUpdateResponse first = client.addItemToCart(cart, scannedMilk, milk, true);
    QVERIFY(first.success());
    QCOMPARE(first.items().first().name(), QStringLiteral("Молоко 1 л"));
    QCOMPARE(first.items().first().getPriceForItem(), 89.9);

    PositionData bread;
    const QSharedPointer<GoodsItem> typedBread = byCode();
    typedBread->setCode(CartEmulatorBed::breadCode);
    const tessaro::CartUpdateResponse second = client.addItemToCart(cart, typedBread, bread, false);
    QCOMPARE(second.items().size(), 2);
    QCOMPARE(bread.eanReason, 9);
    QCOMPARE(bed.cart(cart).lines().at(1).subsysNo, CartEmulatorBed::breadCode);
    QCOMPARE(bed.cart(cart).lines().at(1).eanReasonCode, 9);

    const tessaro::CartUpdateResponse cheaper =
        client.priceOverwrite(cart, 1, 79.9, 3, Singleton<Session>::instance()->getCurrentUser(), 0);
    QVERIFY(cheaper.success());
    QCOMPARE(cheaper.items().first().getPriceForItem(), 79.9);
    QCOMPARE(cheaper.items().first().totalDiscountGross(), 20.0);

    const tessaro::CartUpdateResponse refused = client.quantityOverwrite(cart, 2, 0, Interface::NoDeleteReason);
    QCOMPARE(refused.errorMessage().id(), QStringLiteral("tessaroMissedDeleteReason"));
    QCOMPARE(bed.cart(cart).lines().size(), 2);

    const tessaro::CartUpdateResponse removed = client.quantityOverwrite(cart, 2, 0, Interface::DeleteReason(1));
    QVERIFY(removed.success());
    QCOMPARE(removed.items().size(), 1);
    QCOMPARE(bed.cart(cart).lines().size(), 1);
}

QTEST_GUILESS_MAIN(TestCartItems)
#include "tst_cartitems.moc"
