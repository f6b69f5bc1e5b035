#include "responses/cartstatusresponse.h"
#include "responses/messagesresponse.h"
#include "responses/payloadresponse.h"

#include <http/response.h>

#include <QJsonArray>
#include <QTest>

using tessaro::MessagesResponse;
using tessaro::Response;

namespace {

http::Response reply(const QByteArray &body)
{
    http::Response response;
    response.setHttpCode(200);
    response.setBody(body);
    return response;
}

} // namespace

class TestCartMessagesResponse : public QObject
{
    Q_OBJECT

private slots:
    void messagesInOrder_data();
    void messagesInOrder();
    void emptyArrayIsSuccess();
    void arrayReplyOnlyForMessages();
    void plainRepliesKeepTheBase();
};

void TestCartMessagesResponse::messagesInOrder_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("two") << QByteArray(R"([{"message":"Первое"},{"message":"Второе"}])")
                         << QStringList{QStringLiteral("Первое"), QStringLiteral("Второе")};
    QTest::newRow("missing and mistyped") << QByteArray(R"([{"text":"a"},{"message":5},"plain",{"message":"b"}])")
                                          << QStringList{QString(), QString(), QString(), QStringLiteral("b")};
    QTest::newRow("an object, not an array") << QByteArray(R"({"message":"a"})") << QStringList();
    QTest::newRow("empty array") << QByteArray("[]") << QStringList();
}

void TestCartMessagesResponse::messagesInOrder()
{
    QFETCH(QByteArray, body);
    QFETCH(QStringList, expected);
    QCOMPARE(MessagesResponse(reply(body)).messages(), expected);
}

void TestCartMessagesResponse::emptyArrayIsSuccess()
{
    const MessagesResponse messages(Response(reply("[]")));
    QVERIFY(messages.isArrayResponse());
    QCOMPARE(messages.status(), Response::Success);
    messages.checkStatus();
}

void TestCartMessagesResponse::arrayReplyOnlyForMessages()
{
    const Response base(reply("[]"));
    QCOMPARE(base.status(), Response::IncorrectResponse);
    QCOMPARE(MessagesResponse(base).status(), Response::Success);
    QCOMPARE(tessaro::PayloadResponse(base).status(), Response::IncorrectResponse);
}

void TestCartMessagesResponse::plainRepliesKeepTheBase()
{
    const Response base(reply(R"({"status":"PAID","payload":{"a":1}})"));
    const tessaro::CartStatusResponse status(base);
    const tessaro::PayloadResponse payload(base);
    QVERIFY(status == base);
    QVERIFY(payload == base);
    QCOMPARE(status.statusString(), QStringLiteral("PAID"));
    QCOMPARE(payload.jsonObject().value(QStringLiteral("payload")).toObject().value(QStringLiteral("a")).toInt(), 1);
    QCOMPARE(payload.status(), Response::Success);
}

QTEST_GUILESS_MAIN(TestCartMessagesResponse)
#include "tst_cartmessagesresponse.moc"
