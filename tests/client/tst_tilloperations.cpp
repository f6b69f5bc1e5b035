#include "servicetestbed.h"

#include "client/interface.h"
#include "responses/shiftclosedexception.h"

#include <cashdrawer.h>
#include <documentsdao.h>
#include <frcollection.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>
#include <support/logcapture.h>
#include <user.h>
#include <valutcollection.h>

#include <QHostInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using Request = ScriptedHttpServer::Request;

namespace {

QSharedPointer<User> cashier()
{
    return Singleton<Session>::instance()->getCurrentUser();
}

// Compares two JSON objects key by key, naming the key that differs.
bool sameObject(const QJsonObject &actual, const QJsonObject &expected, QString *difference)
{
    if (actual.keys() != expected.keys()) {
        *difference = QStringLiteral("keys %1, expected %2")
                          .arg(actual.keys().join(QLatin1Char(',')), expected.keys().join(QLatin1Char(',')));
        return false;
    }
    for (const QString &key : expected.keys()) {
        if (actual.value(key) != expected.value(key)) {
            *difference = QStringLiteral("%1: %2, expected %3")
                              .arg(key, QString::fromUtf8(QJsonDocument(QJsonArray{actual.value(key)}).toJson(QJsonDocument::Compact)),
                                   QString::fromUtf8(QJsonDocument(QJsonArray{expected.value(key)}).toJson(QJsonDocument::Compact)));
            return false;
        }
    }
    return true;
}

#define COMPARE_OBJECTS(actual, expected)                                \
    do {                                                                 \
        QString difference;                                              \
        QVERIFY2(sameObject(actual, expected, &difference), qPrintable(difference)); \
    } while (false)

// A cash drawer that holds a fixed amount.
class FixedDrawer : public CashDrawer
{
public:
    explicit FixedDrawer(double amount)
        : m_amount(amount)
    {
    }
    double getAmount() const override { return m_amount; }

private:
    double m_amount;
};

// A client whose service is reached with a token already at hand.
class Client : public tessaro::Interface
{
public:
    Client() { setToken(QStringLiteral("tok-0")); }
};

} // namespace

class TestTillOperations : public QObject
{
    Q_OBJECT

private slots:
    void tillOpenSendsEveryField();
    void tillOpenDefaults();
    void tillOpenWithoutCashier();
    void enteredAmountAddsTheDrawerAtThatMoment();
    void fiscalDriveSerialIsLeftOutWhenEmpty();
    void fiscalNumber_data();
    void fiscalNumber();
    void shiftAlreadyOpenedIsAccepted();
    void shiftClosedIsReturnedForTheCaller();
    void tillCloseSendsShiftPayments();
    void tillCloseTakesPaymentsFromGetShiftPayments();
    void deposit_data();
    void deposit();
    void depositWithoutRequestId();
    void registryCodes_data();
    void registryCodes();

    // The edge cases of the till operations, one each.
    void nonNumericShopCodeIsStoreZero();
    void unsetHostNameIsTheMachineName();
    void cashInIsTypeTwoEveryOtherTypeOne();
};

void TestTillOperations::tillOpenSendsEveryField()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro:typeTill"), QStringLiteral("2")},
                        {QStringLiteral("Tessaro:hostName"), QStringLiteral("till-12.store-7")},
                        {QStringLiteral("Tessaro:nameTypeTill"), QStringLiteral("Express")}});
    bed.server().enqueue(Answer::json(200, R"({"status":"OK","shiftId":"s-1"})"));
    Singleton<Session>::instance()->setDrawerAmount(1000.0);
    Singleton<FrCollection>::instance()->setRegistrationNumber(1234567890123);
    Singleton<FrCollection>::instance()->setFiscalDriveSerial(QStringLiteral("9999078900012345"));
    Client client;
    const LogCapture log;

    const tessaro::Response reply = client.tillOpen(cashier(), 150.5);
    QVERIFY(reply.success());
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtInfoMsg).first(), QStringLiteral("Открытие смены"));

    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/till/open"));
    QCOMPARE(request.header("Authorization"), QByteArray("Bearer tok-0"));
    QCOMPARE(request.headerCount("X-Request-ID"), 0);
    COMPARE_OBJECTS(ServiceTestBed::jsonBody(request),
                    (QJsonObject{{"storeNo", 7},
                                 {"tillNo", 12},
                                 {"operatorID", "1005"},
                                 {"operatorName", QStringLiteral("Иванова А. А.")},
                                 {"typeTill", 2},
                                 {"hostName", "till-12.store-7"},
                                 {"nameTypeTill", "Express"},
                                 {"enteredAmount", 1150.5},
                                 {"fiscalRegistrationNo", "1234567890123"},
                                 {"fiscalDriveSerialNumber", "9999078900012345"}}));
}

void TestTillOperations::tillOpenDefaults()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    client.tillOpen(cashier(), 0.0);
    const QJsonObject body = ServiceTestBed::jsonBody(bed.server().requests().first());
    QCOMPARE(body.value(QStringLiteral("typeTill")), QJsonValue(0));
    QCOMPARE(body.value(QStringLiteral("nameTypeTill")), QJsonValue(QStringLiteral("RegularSales")));
    QCOMPARE(body.value(QStringLiteral("enteredAmount")), QJsonValue(0.0));
    QCOMPARE(body.value(QStringLiteral("fiscalRegistrationNo")), QJsonValue(QStringLiteral("0")));
}

void TestTillOperations::tillOpenWithoutCashier()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    client.tillOpen(QSharedPointer<User>(), 5.0);
    const QJsonObject body = ServiceTestBed::jsonBody(bed.server().requests().first());
    QCOMPARE(body.value(QStringLiteral("operatorID")), QJsonValue(QString()));
    QCOMPARE(body.value(QStringLiteral("operatorName")), QJsonValue(QString()));
}

void TestTillOperations::enteredAmountAddsTheDrawerAtThatMoment()
{
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    MockFactory<CashDrawer>::setInstance(QSharedPointer<FixedDrawer>::create(250.25));
    client.tillOpen(cashier(), 100.0);
    MockFactory<CashDrawer>::setInstance(QSharedPointer<FixedDrawer>::create(-0.25));
    client.tillOpen(cashier(), 100.0);
    const QList<Request> requests = bed.server().requests();
    QCOMPARE(ServiceTestBed::jsonBody(requests.at(0)).value(QStringLiteral("enteredAmount")).toDouble(), 350.25);
    QCOMPARE(ServiceTestBed::jsonBody(requests.at(1)).value(QStringLiteral("enteredAmount")).toDouble(), 99.75);
}

void TestTillOperations::fiscalDriveSerialIsLeftOutWhenEmpty()
{
    TestHost host;
    Singleton<FrCollection>::instance()->setRegistrationNumber(77);
    const tessaro::Interface client;
    QJsonObject body{{"storeNo", 7}};
    client.fillFiscalInfo(body);
    QCOMPARE(body, (QJsonObject{{"storeNo", 7}, {"fiscalRegistrationNo", "77"}}));

    Singleton<FrCollection>::instance()->setFiscalDriveSerial(QStringLiteral("9999"));
    client.fillFiscalInfo(body);
    QCOMPARE(body, (QJsonObject{{"storeNo", 7}, {"fiscalRegistrationNo", "77"}, {"fiscalDriveSerialNumber", "9999"}}));
}

void TestTillOperations::fiscalNumber_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << qint64(0) << "0";
    QTest::newRow("sixteen digits") << qint64(1234567890123456) << "1234567890123456";
}

void TestTillOperations::fiscalNumber()
{
    QFETCH(qint64, number);
    QFETCH(QString, text);
    TestHost host;
    Singleton<FrCollection>::instance()->setRegistrationNumber(number);
    QCOMPARE(tessaro::Interface().getFiscalNumber(), text);
}

void TestTillOperations::shiftAlreadyOpenedIsAccepted()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(400, R"({"status":"The shift is already opened"})"));
    Client client;
    const tessaro::Response reply = client.tillOpen(cashier(), 0.0);
    QCOMPARE(reply.status(), tessaro::Response::ShiftAlreadyOpened);
    reply.checkStatus();
}

void TestTillOperations::shiftClosedIsReturnedForTheCaller()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(400, R"({"status":"The shift is closed"})"));
    Client client;
    const tessaro::Response reply = client.deposit(cashier(), 10.0, CashIn, QString());
    QCOMPARE(reply.status(), tessaro::Response::ShiftClosed);
    QVERIFY_THROWS_EXCEPTION(tessaro::ShiftClosedException, reply.checkStatus());
}

void TestTillOperations::tillCloseSendsShiftPayments()
{
    ServiceTestBed bed({{QStringLiteral("Tessaro.PaymentCodes:1"), QStringLiteral("0,5")}});
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    auto *valuts = Singleton<ValutCollection>::instance();
    for (const int code : {0, 2, 3, 5})
        valuts->addValut({code, QStringLiteral("valut %1").arg(code), 0});
    Singleton<Session>::instance()->setCurrentShift(4);
    auto *documents = Singleton<DocumentsDao>::instance();
    documents->addPayment(4, 0, 60.0);
    documents->addPayment(4, 0, 40.0);
    documents->addPayment(4, 5, 20.5);
    documents->addPayment(4, 3, -7.25);
    documents->addPayment(3, 2, 500.0);
    Client client;
    const LogCapture log;

    QVERIFY(client.tillClose().success());
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtInfoMsg).first(), QStringLiteral("Закрытие смены"));
    const Request request = bed.server().requests().first();
    QCOMPARE(request.path, QStringLiteral("/api/till/close"));
    QCOMPARE(request.headerCount("X-Request-ID"), 0);
    COMPARE_OBJECTS(ServiceTestBed::jsonBody(request), (QJsonObject{{"storeNo", 7},
                                       {"tillNo", 12},
                                       {"payments", QJsonArray{
                                                        QJsonObject{{"paymentCode", 1}, {"paymentCount", 2}, {"paymentAmount", 120.5}},
                                                        QJsonObject{{"paymentCode", 3}, {"paymentCount", 1}, {"paymentAmount", -7.25}},
                                                    }}}));
}

void TestTillOperations::tillCloseTakesPaymentsFromGetShiftPayments()
{
    class OwnPayments : public Client
    {
    public:
        QJsonArray getShiftPayments() const override { return {QJsonObject{{"paymentCode", 9}}}; }
    };
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    OwnPayments client;
    client.tillClose();
    QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().first()).value(QStringLiteral("payments")),
             QJsonValue(QJsonArray{QJsonObject{{"paymentCode", 9}}}));
}

void TestTillOperations::deposit_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("typeCode");
    QTest::addColumn<QString>("logLine");
    QTest::newRow("cash-in") << int(CashIn) << 2 << QStringLiteral("Отправка запроса внесения");
    QTest::newRow("cash-out") << int(CashOut) << 1 << QStringLiteral("Отправка запроса изъятия");
    QTest::newRow("sale") << int(Sale) << 1 << QStringLiteral("Отправка запроса изъятия");
    QTest::newRow("return") << int(Back) << 1 << QStringLiteral("Отправка запроса изъятия");
    QTest::newRow("return by sale") << int(BackBySale) << 1 << QStringLiteral("Отправка запроса изъятия");
}

void TestTillOperations::deposit()
{
    QFETCH(int, type);
    QFETCH(int, typeCode);
    QFETCH(QString, logLine);
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    const LogCapture log;
    QVERIFY(client.deposit(cashier(), 300.75, EDocumentType(type), QStringLiteral("dep-0001")).success());
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtInfoMsg).first(), logLine);

    const Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/till/deposit"));
    QCOMPARE(request.header("X-Request-ID"), QByteArray("dep-0001"));
    QCOMPARE(request.header("Authorization"), QByteArray("Bearer tok-0"));
    COMPARE_OBJECTS(ServiceTestBed::jsonBody(request),
                    (QJsonObject{{"storeNo", 7}, {"tillNo", 12}, {"operatorID", "1005"}, {"typeCode", typeCode}, {"amount", 300.75}}));
}

void TestTillOperations::depositWithoutRequestId()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    client.deposit(cashier(), 1.0, CashOut, QString());
    QCOMPARE(bed.server().requests().first().headerCount("X-Request-ID"), 0);
}

void TestTillOperations::registryCodes_data()
{
    QTest::addColumn<QString>("shopCode");
    QTest::addColumn<QString>("cashCode");
    QTest::addColumn<int>("storeNo");
    QTest::addColumn<int>("tillNo");
    QTest::newRow("numbers") << "7" << "12" << 7 << 12;
    QTest::newRow("zero-padded") << "0007" << "012" << 7 << 12;
    QTest::newRow("letters") << "S-07" << "T12" << 0 << 0;
    QTest::newRow("number then letters") << "7a" << "12 " << 0 << 12;
    QTest::newRow("empty") << "" << "" << 0 << 0;
}

void TestTillOperations::registryCodes()
{
    QFETCH(QString, shopCode);
    QFETCH(QString, cashCode);
    QFETCH(int, storeNo);
    QFETCH(int, tillNo);
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::json(200, R"({"status":"OK"})"));
    Registry &registry = Singleton<Session>::instance()->getRegistry();
    registry.setShopCode(shopCode);
    registry.setCashCode(cashCode);
    Client client;
    client.tillOpen(cashier(), 0.0);
    client.tillClose();
    client.deposit(cashier(), 1.0, CashIn, QString());
    for (const Request &request : bed.server().requests()) {
        QCOMPARE(ServiceTestBed::jsonBody(request).value(QStringLiteral("storeNo")), QJsonValue(storeNo));
        QCOMPARE(ServiceTestBed::jsonBody(request).value(QStringLiteral("tillNo")), QJsonValue(tillNo));
    }
    QCOMPARE(bed.server().requestCount(), 3);
}

void TestTillOperations::nonNumericShopCodeIsStoreZero()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    Singleton<Session>::instance()->getRegistry().setShopCode(QStringLiteral("MSK-01"));
    Client client;
    client.tillOpen(cashier(), 0.0);
    const QJsonObject body = ServiceTestBed::jsonBody(bed.server().requests().first());
    QCOMPARE(body.value(QStringLiteral("storeNo")), QJsonValue(0));
    QCOMPARE(body.value(QStringLiteral("tillNo")), QJsonValue(12));
}

void TestTillOperations::unsetHostNameIsTheMachineName()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    client.tillOpen(cashier(), 0.0);
    QVERIFY(!QHostInfo::localHostName().isEmpty());
    QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().first()).value(QStringLiteral("hostName")),
             QJsonValue(QHostInfo::localHostName()));
}

void TestTillOperations::cashInIsTypeTwoEveryOtherTypeOne()
{
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::json(200, R"({"status":"OK"})"));
    Client client;
    for (const EDocumentType type : {Sale, Back, CashIn, CashOut, BackBySale})
        client.deposit(cashier(), 1.0, type, QString());
    QList<int> typeCodes;
    for (const Request &request : bed.server().requests())
        typeCodes << ServiceTestBed::jsonBody(request).value(QStringLiteral("typeCode")).toInt();
    QCOMPARE(typeCodes, (QList<int>{1, 1, 2, 1, 1}));
}

QTEST_GUILESS_MAIN(TestTillOperations)
#include "tst_tilloperations.moc"
