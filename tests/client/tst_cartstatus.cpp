#include "cartclienttest.h"
#include "cartemulatorbed.h"
#include "servicetestbed.h"

#include "responses/connectionerrorexception.h"

#include <frcollection.h>
#include <mockfactory.h>
#include <moneyitem.h>
#include <simpleformatter.h>
#include <support/logcapture.h>

#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using carttest::Client;
using tessaro::Interface;

namespace {

const QString uuid = QStringLiteral("c-1");

// The host's currency codes used here: 1 cash, 3 bank card, 4 gift card.
enum Currency { CashCurrency = 1, CardCurrency = 3, GiftCurrency = 4 };

QSharedPointer<MoneyItem> cash(double amount, const QString &operationId = QString())
{
    const auto item = QSharedPointer<MoneyItem>::create();
    item->setValCode(CashCurrency);
    item->setValName(QStringLiteral("Наличные"));
    item->setValutType(MoneyItem::Cash);
    item->setAmount(amount);
    item->setOperationId(operationId);
    return item;
}

QSharedPointer<MoneyItem> card(double amount)
{
    const auto item = QSharedPointer<MoneyItem>::create();
    item->setValCode(CardCurrency);
    item->setValName(QStringLiteral("Банковская карта"));
    item->setValutType(MoneyItem::BankCard);
    item->setAmount(amount);
    item->setCardNum(QStringLiteral("427601******1234"));
    item->setCardType(QStringLiteral("VISA"));
    item->setTerminalId(QStringLiteral("T0000042"));
    item->setAuthorizationCode(QStringLiteral("A1B2C3"));
    item->setOperationId(QStringLiteral("RRN-000123"));
    item->setRrn(QStringLiteral("000123"));
    return item;
}

// Makes a current document with \a payments, its own rounding \a rounding and
// rounding discounts \a roundingDiscounts (discount mode 11), and returns it.
QSharedPointer<AbstractDocument> receipt(const QList<QSharedPointer<MoneyItem>> &payments, double rounding = 0.0,
                                         const QList<double> &roundingDiscounts = {})
{
    const auto document = QSharedPointer<AbstractDocument>::create();
    for (const QSharedPointer<MoneyItem> &payment : payments)
        document->addMoneyItem(payment);
    document->setRoundingSum(rounding);
    QList<DocumentImpactDetail> details{DocumentImpactDetail(3, 7.0)};
    for (double discount : roundingDiscounts)
        details << DocumentImpactDetail(11, discount);
    document->addImpact(QSharedPointer<DocumentImpact>::create(details));
    Singleton<Session>::instance()->setCurrentDocument(document);
    return document;
}

QJsonArray payments(const QJsonObject &body)
{
    return body.value("payment").toArray();
}

// A formatter that records what it is asked and answers "<template>|<name>|<source's valCode>".
class RecordingFormatter : public SimpleFormatter
{
public:
    QString format(const QString &templateText, const QString &name, const QObject *source) const override
    {
        sources << source;
        return QStringLiteral("%1|%2|%3").arg(templateText, name, source->property("valCode").toString());
    }
    mutable QList<const QObject *> sources;
};

} // namespace

class TestCartStatus : public QObject
{
    Q_OBJECT

private slots:
    void paidBodyInFull();
    void cashIsFoldedIntoOneLine();
    void changeIsItsOwnNegativeLine();
    void rounding_data();
    void rounding();
    void noCashNoCashLine();
    void emptyTerminalIsZeros();
    void panCardIdentifier_data();
    void panCardIdentifier();
    void discardedFieldsAreLeftOut();
    void operationIdAsCardNumberOrApprovalCode();
    void processOperationId_data();
    void processOperationId();
    void customFieldsThroughTheFormatter();
    void statusRequests();
    void statusRequestsAreSentOnce();
    void statusOnTheService();
};

void TestCartStatus::paidBodyInFull()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro.PaymentCodes:20"), QStringLiteral("3")},
                        {QStringLiteral("Tessaro.PaymentCodes:10"), QStringLiteral("1")},
                        {QStringLiteral("Tessaro.ReceiptNumber.3:symbolsToRemove"), QStringLiteral("-")},
                        {QStringLiteral("Tessaro.ReceiptNumber.3:mask"), QStringLiteral("RRN(?<result>[0-9]+)")},
                        {QStringLiteral("Tessaro.CustomFields.3:slip"), QStringLiteral("{rrn}/{name}")},
                        {QStringLiteral("Tessaro.slip.3:symbolsToRemove"), QStringLiteral("/")}});
    Singleton<FrCollection>::instance()->setRegistrationNumber(9999078900012345);
    receipt({card(120.5), cash(30.0, QStringLiteral("K-1"))}, 0.02);

    carttest::compareJson(Interface().generatePayloadCartStatusPaid(),
                          {{"status", "PAID"},
                           {"fiscalReceiptNumber", "9999078900012345"},
                           {"payment", QJsonArray{QJsonObject{{"paymentCode", 20},
                                                              {"paymentAmount", 120.5},
                                                              {"cardNumber", "427601******1234"},
                                                              {"cardType", "VISA"},
                                                              {"terminalId", "T0000042"},
                                                              {"EFTApprovalCode", "A1B2C3"},
                                                              {"receiptNumber", "000123"},
                                                              {"mediaDesc", "Банковская карта"},
                                                              {"PANCardIdentifier", "427601"},
                                                              {"slip", "000123slip"}},
                                                  QJsonObject{{"paymentCode", 10},
                                                              {"paymentAmount", 30},
                                                              {"terminalId", "0000000000"},
                                                              {"receiptNumber", "K-1"},
                                                              {"mediaDesc", "Наличные"},
                                                              {"PANCardIdentifier", ""},
                                                              {"paymentRoundingAmount", 0.02}}}}});
}

void TestCartStatus::cashIsFoldedIntoOneLine()
{
    TestHost host;
    const QSharedPointer<MoneyItem> second = cash(50.004, QStringLiteral("second"));
    second->setTerminalId(QStringLiteral("T2"));
    receipt({cash(100, QStringLiteral("first")), card(10), second});
    const QJsonArray lines = payments(Interface().generatePayloadCartStatusPaid());
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0).toObject().value("paymentCode"), QJsonValue(CardCurrency));
    const QJsonObject cashLine = lines.at(1).toObject();
    QCOMPARE(cashLine.value("paymentAmount"), QJsonValue(150.0));
    QCOMPARE(cashLine.value("receiptNumber"), QJsonValue("second"));
    QCOMPARE(cashLine.value("terminalId"), QJsonValue("T2"));
}

void TestCartStatus::changeIsItsOwnNegativeLine()
{
    TestHost host;
    const QSharedPointer<MoneyItem> change = cash(20, QStringLiteral("change"));
    change->setChange(true);
    receipt({cash(100, QStringLiteral("paid")), change});
    const QJsonArray lines = payments(Interface().generatePayloadCartStatusPaid());
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0).toObject().value("paymentAmount"), QJsonValue(-20.0));
    QCOMPARE(lines.at(0).toObject().value("receiptNumber"), QJsonValue("change"));
    QCOMPARE(lines.at(1).toObject().value("paymentAmount"), QJsonValue(100.0));
}

void TestCartStatus::rounding_data()
{
    QTest::addColumn<double>("ownRounding");
    QTest::addColumn<QList<double>>("discounts");
    QTest::addColumn<QJsonValue>("expected");
    QTest::newRow("exactly 0.005") << 0.005 << QList<double>() << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("0.006") << 0.006 << QList<double>() << QJsonValue(0.01);
    QTest::newRow("discounts of mode 11 and own rounding") << 0.01 << QList<double>{0.02, 0.015} << QJsonValue(0.05);
    QTest::newRow("negative") << -0.04 << QList<double>() << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("none") << 0.0 << QList<double>() << QJsonValue(QJsonValue::Undefined);
}

void TestCartStatus::rounding()
{
    QFETCH(double, ownRounding);
    QFETCH(QList<double>, discounts);
    QFETCH(QJsonValue, expected);
    TestHost host;
    receipt({cash(99.99)}, ownRounding, discounts);
    const QJsonArray lines = payments(Interface().generatePayloadCartStatusPaid());
    QCOMPARE(lines.last().toObject().value("paymentRoundingAmount"), expected);
}

void TestCartStatus::noCashNoCashLine()
{
    TestHost host;
    receipt({card(10), card(20)}, 0.04, {0.03});
    const QJsonArray lines = payments(Interface().generatePayloadCartStatusPaid());
    QCOMPARE(lines.size(), 2);
    for (const QJsonValue &line : lines)
        QVERIFY(!line.toObject().contains("paymentRoundingAmount"));
    QCOMPARE(lines.at(1).toObject().value("paymentAmount"), QJsonValue(20));
}

void TestCartStatus::emptyTerminalIsZeros()
{
    TestHost host;
    const QSharedPointer<MoneyItem> payment = card(10);
    payment->setTerminalId(QString());
    receipt({payment});
    QCOMPARE(payments(Interface().generatePayloadCartStatusPaid()).first().toObject().value("terminalId"),
             QJsonValue("0000000000"));
}

void TestCartStatus::panCardIdentifier_data()
{
    QTest::addColumn<QString>("cardNumber");
    QTest::addColumn<QString>("expected");
    QTest::newRow("masked first six") << "******1234" << "";
    QTest::newRow("six digits first") << "427601******1234" << "427601";
    QTest::newRow("partly masked") << "42****123456" << "42****";
    QTest::newRow("short") << "1234" << "1234";
    QTest::newRow("none") << "" << "";
}

void TestCartStatus::panCardIdentifier()
{
    QFETCH(QString, cardNumber);
    QFETCH(QString, expected);
    TestHost host;
    const QSharedPointer<MoneyItem> payment = card(10);
    payment->setCardNum(cardNumber);
    receipt({payment});
    const QJsonObject line = payments(Interface().generatePayloadCartStatusPaid()).first().toObject();
    QCOMPARE(line.value("PANCardIdentifier"), QJsonValue(expected));
    QCOMPARE(line.contains("cardNumber"), !cardNumber.isEmpty());
}

void TestCartStatus::discardedFieldsAreLeftOut()
{
    TestHost host(QStringLiteral("[Tessaro.DiscardPaymentFields]\n3=\"terminalId,mediaDesc,slip\"\n"
                                 "[Tessaro.CustomFields.3]\nslip=\"{rrn}\"\nbatch=\"{terminalId}\"\n"));
    receipt({card(10), cash(5)});
    const QJsonArray lines = payments(Interface().generatePayloadCartStatusPaid());
    const QJsonObject cardLine = lines.at(0).toObject();
    QVERIFY(!cardLine.contains("terminalId"));
    QVERIFY(!cardLine.contains("mediaDesc"));
    QVERIFY(!cardLine.contains("slip"));
    QCOMPARE(cardLine.value("batch"), QJsonValue("T0000042"));
    QCOMPARE(lines.at(1).toObject().value("terminalId"), QJsonValue("0000000000"));
}

void TestCartStatus::operationIdAsCardNumberOrApprovalCode()
{
    TestHost host(QStringLiteral("[Tessaro]\noperationIdAsCardNumber=\"3,7\"\noperationIdAsEFTApprovalCode=\"3\"\n"));
    const QSharedPointer<MoneyItem> noApproval = card(5);
    noApproval->setValCode(GiftCurrency);
    noApproval->setAuthorizationCode(QString());
    receipt({card(10), noApproval});
    const QJsonArray lines = payments(Interface().generatePayloadCartStatusPaid());
    const QJsonObject cardLine = lines.at(0).toObject();
    QCOMPARE(cardLine.value("cardNumber"), QJsonValue("RRN-000123"));
    QCOMPARE(cardLine.value("EFTApprovalCode"), QJsonValue("RRN-000123"));
    QVERIFY(!cardLine.contains("receiptNumber"));
    QCOMPARE(cardLine.value("PANCardIdentifier"), QJsonValue("427601"));
    const QJsonObject giftLine = lines.at(1).toObject();
    QCOMPARE(giftLine.value("cardNumber"), QJsonValue("427601******1234"));
    QCOMPARE(giftLine.value("receiptNumber"), QJsonValue("RRN-000123"));
    QVERIFY(!giftLine.contains("EFTApprovalCode"));
}

void TestCartStatus::processOperationId_data()
{
    QTest::addColumn<QString>("settings");
    QTest::addColumn<QString>("operationId");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing configured") << "" << "RRN-000123" << "RRN-000123";
    QTest::newRow("characters removed") << "symbolsToRemove=\"-N\"" << "RRN-000123" << "RR000123";
    QTest::newRow("removal is case-sensitive") << "symbolsToRemove=\"rn\"" << "RRN-1" << "RRN-1";
    QTest::newRow("mask takes the result group") << "mask=\"RRN-(?<result>[0-9]{3})[0-9]*\"" << "RRN-000123" << "000";
    QTest::newRow("mask must match the whole id") << "mask=\"RRN-(?<result>[0-9]{3})\"" << "RRN-000123" << "RRN-000123";
    QTest::newRow("removal before the mask") << "symbolsToRemove=\"-\"\nmask=\"RRN(?<result>.*)\"" << "RRN-000123" << "000123";
    QTest::newRow("mask without a result group") << "mask=\"[A-Z0-9-]+\"" << "RRN-000123" << "";
}

void TestCartStatus::processOperationId()
{
    QFETCH(QString, settings);
    QFETCH(QString, operationId);
    QFETCH(QString, expected);
    TestHost host(QStringLiteral("[Tessaro.ReceiptNumber.3]\n") + settings + QLatin1Char('\n'));
    const QSharedPointer<MoneyItem> payment = card(1);
    payment->setOperationId(operationId);
    QCOMPARE(Interface().processOperationId(payment), expected);
}

void TestCartStatus::customFieldsThroughTheFormatter()
{
    TestHost host(QStringLiteral("[Tessaro.CustomFields.3]\nzeta=\"z-{rrn}\"\nalpha=\"a{x}a\"\n"
                                 "[Tessaro.zeta.3]\nsymbolsToRemove=\"|3\"\n"
                                 "[Tessaro.alpha.4]\nsymbolsToRemove=\"a\"\n"));
    const auto formatter = QSharedPointer<RecordingFormatter>::create();
    MockFactory<SimpleFormatter>::setInstance(formatter);
    const QSharedPointer<MoneyItem> payment = card(1);

    const QMap<QString, QString> fields = Interface().getCustomFields(payment);
    QCOMPARE(fields.keys(), (QStringList{QStringLiteral("alpha"), QStringLiteral("zeta")}));
    QCOMPARE(fields.value(QStringLiteral("alpha")), QStringLiteral("a{x}a|alpha|3"));
    QCOMPARE(fields.value(QStringLiteral("zeta")), QStringLiteral("z-{rrn}zeta"));
    QCOMPARE(formatter->sources.size(), 2);
    QCOMPARE(formatter->sources.first(), payment.data());

    payment->setValCode(GiftCurrency);
    QVERIFY(Interface().getCustomFields(payment).isEmpty());
}

void TestCartStatus::statusRequests()
{
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::json(200, R"({"uuid":"c-1","status":"PAID"})"));
    receipt({cash(10)});
    Client client;
    const LogCapture log;

    const tessaro::CartStatusResponse paid = client.setCartStatusPaid(uuid);
    QCOMPARE(paid.statusString(), QStringLiteral("PAID"));
    client.setCartStatusCancelled(uuid);
    QCOMPARE(carttest::clientLines(log), (QStringList{QStringLiteral("Изменение статуса корзины 'c-1' на PAID"),
                                                      QStringLiteral("Изменение статуса корзины 'c-1' на CANCELLED")}));
    const QList<ScriptedHttpServer::Request> requests = bed.server().requests();
    QCOMPARE(requests.size(), 2);
    for (const ScriptedHttpServer::Request &request : requests) {
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.path, QStringLiteral("/api/cart/c-1/cart_status"));
    }
    QCOMPARE(ServiceTestBed::jsonBody(requests.at(0)), Interface().generatePayloadCartStatusPaid());
    carttest::compareJson(ServiceTestBed::jsonBody(requests.at(1)), {{"status", "CANCELLED"}});
}

void TestCartStatus::statusRequestsAreSentOnce()
{
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::close());
    receipt({cash(10)});
    Client client;
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.setCartStatusPaid(uuid));
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.setCartStatusCancelled(uuid));
    QCOMPARE(bed.server().requestCount(), 2);
    QVERIFY(bed.host().dialog()->messages().isEmpty());
}

void TestCartStatus::statusOnTheService()
{
    CartEmulatorBed bed(QStringLiteral("[Tessaro.PaymentCodes]\n10=\"1\"\n"));
    Singleton<FrCollection>::instance()->setRegistrationNumber(777);
    receipt({cash(89.9)});
    Interface client;
    const QString paidCart = client.cartCreate().uuid();
    const tessaro::CartStatusResponse paid = client.setCartStatusPaid(paidCart);
    QVERIFY(paid.success());
    QCOMPARE(bed.cart(paidCart).status(), QStringLiteral("PAID"));
    QCOMPARE(bed.cart(paidCart).statusBody().value("fiscalReceiptNumber"), QJsonValue("777"));
    QCOMPARE(bed.cart(paidCart).statusBody().value("payment").toArray().first().toObject().value("paymentCode"),
             QJsonValue(10));

    const QString cancelledCart = client.cartCreate().uuid();
    QVERIFY(client.setCartStatusCancelled(cancelledCart).success());
    QCOMPARE(bed.cart(cancelledCart).status(), QStringLiteral("CANCELLED"));
}

QTEST_GUILESS_MAIN(TestCartStatus)
#include "tst_cartstatus.moc"
