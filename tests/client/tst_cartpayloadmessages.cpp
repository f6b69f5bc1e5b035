#include "cartclienttest.h"
#include "cartemulatorbed.h"
#include "servicetestbed.h"

#include "responses/connectionerrorexception.h"

#include <support/logcapture.h>

#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using carttest::Client;

class TestCartPayloadMessages : public QObject
{
    Q_OBJECT

private slots:
    void payloadIsAPlainGet();
    void messagesAreAPlainGet();
    void neitherCatchesConnectionErrors();
    void payloadAndMessagesOnTheService();
};

void TestCartPayloadMessages::payloadIsAPlainGet()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"receipt":{"lines":2}})"));
    Client client;
    const LogCapture log;
    const tessaro::PayloadResponse payload = client.payload(QStringLiteral("c-1"));
    QVERIFY(payload.success());
    QCOMPARE(payload.jsonObject().value("receipt").toObject().value("lines"), QJsonValue(2));
    QCOMPARE(carttest::clientLines(log), QStringList{QStringLiteral("Получение payload для MIP")});
    const ScriptedHttpServer::Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, QStringLiteral("/api/payload/c-1"));
    QVERIFY(request.body.isEmpty());
}

void TestCartPayloadMessages::messagesAreAPlainGet()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"([{"message":"Первое"},{"message":"Второе"}])"));
    bed.server().enqueue(Answer::json(200, "[]"));
    Client client;
    const LogCapture log;
    const tessaro::MessagesResponse messages = client.messages(QStringLiteral("info"));
    QCOMPARE(messages.messages(), (QStringList{QStringLiteral("Первое"), QStringLiteral("Второе")}));
    QCOMPARE(carttest::clientLines(log), QStringList{QStringLiteral("Получение информационных сообщений")});
    const ScriptedHttpServer::Request request = bed.server().requests().first();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.path, QStringLiteral("/api/messages/info"));

    const tessaro::MessagesResponse none = client.messages(QStringLiteral("info"));
    QVERIFY(none.success());
    QVERIFY(none.messages().isEmpty());
}

void TestCartPayloadMessages::neitherCatchesConnectionErrors()
{
    ServiceTestBed bed;
    bed.server().setDefaultAnswer(Answer::reset());
    Client client;
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.payload(QStringLiteral("c-1")));
    QVERIFY_THROWS_EXCEPTION(tessaro::ConnectionErrorException, client.messages(QStringLiteral("c-1")));
    QVERIFY(bed.host().dialog()->messages().isEmpty());
}

void TestCartPayloadMessages::payloadAndMessagesOnTheService()
{
    CartEmulatorBed bed;
    tessaro::Interface client;
    QCOMPARE(client.payload(QStringLiteral("demo")).jsonObject(), (QJsonObject{{"receipt", "demo payload"}}));
    QCOMPARE(client.messages(QStringLiteral("info")).messages(),
             (QStringList{QStringLiteral("Акция: скидка 10%"), QStringLiteral("Второе сообщение")}));

    const tessaro::PayloadResponse unknown = client.payload(QStringLiteral("nothing"));
    QCOMPARE(unknown.status(), tessaro::Response::Error);
    QCOMPARE(unknown.message(), QStringLiteral("Payload wasn't found"));

    // A cart's messages are what its last change did.
    const QString cart = client.cartCreate().uuid();
    client.addCouponToCart(cart, QStringLiteral("2550001"), false);
    client.addCouponToCart(cart, QStringLiteral("2550001"), false);
    QCOMPARE(client.messages(cart).messages(), QStringList{QStringLiteral("Coupon 2550001 is already in the cart")});
}

QTEST_GUILESS_MAIN(TestCartPayloadMessages)
#include "tst_cartpayloadmessages.moc"
