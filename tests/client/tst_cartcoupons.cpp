#include "cartclienttest.h"
#include "cartemulatorbed.h"
#include "servicetestbed.h"

#include <support/logcapture.h>

#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using carttest::Client;

namespace {

const QString uuid = QStringLiteral("c-1");
const QString warning = QStringLiteral("Добавление купона в корзину без валидации");

// The "validationCoupon" flag that a coupon request carried.
QJsonValue validationFlag(const ScriptedHttpServer::Request &request)
{
    return ServiceTestBed::jsonBody(request).value("coupon").toObject().value("validationCoupon");
}

QMap<QString, QString> mask(const QString &pattern)
{
    return {{QStringLiteral("Tessaro:validationCouponMask"), pattern}};
}

} // namespace

class TestCartCoupons : public QObject
{
    Q_OBJECT

private slots:
    void maskTest_data();
    void maskTest();
    void addCouponBody_data();
    void addCouponBody();
    // An unmatched coupon, and any coupon with an empty mask.
    void neverValidated_data();
    void neverValidated();
    void matchedCouponFollowsTheCaller();
    void removalIsNeverValidated();
    void couponsGoThroughTheRecovery();
    void couponsOnTheService();
};

void TestCartCoupons::maskTest_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("coupon");
    QTest::addColumn<bool>("matches");
    QTest::newRow("default mask, 255 first") << "^255.*" << "2551234567890" << true;
    QTest::newRow("default mask, 255 later") << "^255.*" << "1255123" << false;
    QTest::newRow("unanchored pattern matches anywhere") << "55" << "1255123" << true;
    QTest::newRow("unanchored pattern, no match") << "77" << "1255123" << false;
    QTest::newRow("empty pattern") << "" << "2551234567890" << false;
    QTest::newRow("empty coupon") << "^255.*" << "" << false;
}

void TestCartCoupons::maskTest()
{
    QFETCH(QString, pattern);
    QFETCH(QString, coupon);
    QFETCH(bool, matches);
    TestHost host(QStringLiteral("[Tessaro]\nvalidationCouponMask=\"%1\"\n").arg(pattern));
    const tessaro::Interface client;
    QCOMPARE(client.checkValidationCouponMask(coupon), matches);
}

void TestCartCoupons::addCouponBody_data()
{
    QTest::addColumn<QString>("coupon");
    QTest::addColumn<bool>("validate");
    QTest::addColumn<bool>("validationCoupon");
    QTest::addColumn<bool>("warned");
    QTest::newRow("matching, validate") << "2551234567890" << true << true << false;
    QTest::newRow("matching, do not validate") << "2551234567890" << false << false << true;
    QTest::newRow("not matching, validate") << "1234567890" << true << false << false;
    QTest::newRow("not matching, do not validate") << "1234567890" << false << false << false;
}

void TestCartCoupons::addCouponBody()
{
    QFETCH(QString, coupon);
    QFETCH(bool, validate);
    QFETCH(bool, validationCoupon);
    QFETCH(bool, warned);
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({})));
    Client client;
    const LogCapture log;

    client.addCouponToCart(uuid, coupon, validate);
    const ScriptedHttpServer::Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/cart/c-1/update"));
    carttest::compareJson(ServiceTestBed::jsonBody(request),
                          {{"coupon", QJsonObject{{"number", coupon}, {"validationCoupon", validationCoupon}}}});
    QCOMPARE(carttest::clientLines(log), QStringList{QStringLiteral("Добавление купона '%1' в корзину 'c-1'").arg(coupon)});
    QCOMPARE(carttest::clientLines(log, QtWarningMsg), warned ? QStringList{warning} : QStringList());
}

void TestCartCoupons::neverValidated_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("coupon");
    QTest::newRow("coupon not matching the mask") << "^255.*" << "777";
    QTest::newRow("empty mask") << "" << "2550001";
    QTest::newRow("empty mask, empty coupon") << "" << "";
}

void TestCartCoupons::neverValidated()
{
    QFETCH(QString, pattern);
    QFETCH(QString, coupon);
    ServiceTestBed bed(mask(pattern));
    bed.server().setDefaultAnswer(Answer::json(200, carttest::cart({})));
    Client client;
    const LogCapture log;
    client.addCouponToCart(uuid, coupon, true);
    client.addCouponToCart(uuid, coupon, false);
    QCOMPARE(bed.server().requestCount(), 2);
    for (const ScriptedHttpServer::Request &request : bed.server().requests())
        QCOMPARE(validationFlag(request), QJsonValue(false));
    QVERIFY(carttest::clientLines(log, QtWarningMsg).isEmpty());
}

void TestCartCoupons::matchedCouponFollowsTheCaller()
{
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::json(200, carttest::cart({})));
    Client client;
    const LogCapture log;
    client.addCouponToCart(uuid, QStringLiteral("2550001"), true);
    QCOMPARE(validationFlag(bed.server().requests().at(0)), QJsonValue(true));
    QVERIFY(carttest::clientLines(log, QtWarningMsg).isEmpty());
    client.addCouponToCart(uuid, QStringLiteral("2550001"), false);
    QCOMPARE(validationFlag(bed.server().requests().at(1)), QJsonValue(false));
    QCOMPARE(carttest::clientLines(log, QtWarningMsg), QStringList{warning});
}

void TestCartCoupons::removalIsNeverValidated()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, carttest::cart({})));
    Client client;
    const LogCapture log;
    client.deleteCoupon(uuid, QStringLiteral("2551234567890"));
    const ScriptedHttpServer::Request request = bed.server().requests().first();
    QCOMPARE(request.path, QStringLiteral("/api/cart/c-1/update"));
    carttest::compareJson(ServiceTestBed::jsonBody(request),
                          {{"coupon", QJsonObject{{"number", "2551234567890"}, {"validationCoupon", false}, {"isDeleted", true}}}});
    QCOMPARE(carttest::clientLines(log), QStringList{QStringLiteral("Удаление купона '2551234567890' из корзины 'c-1'")});
}

void TestCartCoupons::couponsGoThroughTheRecovery()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::json(200, carttest::cart({})));
    bed.server().enqueue(Answer::json(200, carttest::cart({}, {{"coupons", QJsonArray{QJsonObject{{"number", "2550001"}}}}})));
    Client client;
    client.addCouponToCart(uuid, QStringLiteral("2550001"), true);
    QCOMPARE(bed.server().requestCount(), 3);
    QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().at(2)), ServiceTestBed::jsonBody(bed.server().requests().at(0)));
}

void TestCartCoupons::couponsOnTheService()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    const QString cart = client.cartCreate().uuid();

    QVERIFY(client.addCouponToCart(cart, QStringLiteral("2550000000001"), true).success());
    QCOMPARE(bed.cart(cart).coupons(), QStringList{QStringLiteral("2550000000001")});

    const tessaro::CartUpdateResponse refused = client.addCouponToCart(cart, CartEmulatorBed::invalidCoupon, true);
    QCOMPARE(refused.status(), tessaro::Response::ValidationError);
    // Sent without validation, the same coupon is taken.
    QVERIFY(client.addCouponToCart(cart, CartEmulatorBed::invalidCoupon, false).success());
    QCOMPARE(bed.cart(cart).coupons().size(), 2);

    QVERIFY(client.deleteCoupon(cart, QStringLiteral("2550000000001")).success());
    QCOMPARE(bed.cart(cart).coupons(), QStringList{CartEmulatorBed::invalidCoupon});
}

QTEST_GUILESS_MAIN(TestCartCoupons)
#include "tst_cartcoupons.moc"
