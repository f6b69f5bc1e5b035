#include "responses/connectionerrorexception.h"
#include "responses/response.h"
#include "responses/shiftclosedexception.h"

#include <basicexception.h>
#include <http/response.h>

#include <QJsonDocument>
#include <QTest>

namespace {

// A reply as the host's RestClient hands it over: a raw body and the error code.
http::Response hostReply(const QByteArray &body, int errorCode = 0)
{
    http::Response reply;
    reply.setUrl(QUrl(QStringLiteral("http://service.test/api/till/open")));
    reply.setHttpCode(errorCode ? errorCode : 200);
    reply.setBody(body);
    if (errorCode)
        reply.setError(errorCode, tr::Tr(QStringLiteral("httpError"), QStringLiteral("HTTP %1").arg(errorCode)));
    return reply;
}

// A reply whose body is expected to be a JSON array.
class ArrayReply : public tessaro::Response
{
public:
    using Response::Response;
    bool isArrayResponse() const override { return true; }
};

// A reply that reports a fixed status, to drive checkStatus() and errorMessage() directly.
class FixedStatusReply : public tessaro::Response
{
public:
    FixedStatusReply(Status fixed, const QJsonObject &object)
        : Response(object)
        , m_fixed(fixed)
    {
    }
    Status status() const override { return m_fixed; }

private:
    Status m_fixed;
};

QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}

enum class Thrown { Nothing, ShiftClosed, Basic };

// Runs checkStatus() and says what left it, with the message of a BasicException.
Thrown runCheckStatus(const tessaro::Response &reply, tr::Tr *message)
{
    try {
        reply.checkStatus();
    } catch (const tessaro::ShiftClosedException &e) {
        *message = e.tr();
        return Thrown::ShiftClosed;
    } catch (const BasicException &e) {
        *message = e.tr();
        return Thrown::Basic;
    }
    return Thrown::Nothing;
}

} // namespace

Q_DECLARE_METATYPE(Thrown)

class TestResponse : public QObject
{
    Q_OBJECT

private slots:
    void objectConstructorLeavesTransportEmpty();
    void hostReplyIsCopied();
    void arrayBodyIsKept();
    void accessorsOfMissingOrMistypedFields();

    void statusRules_data();
    void statusRules();
    void successAndTokenErrorFollowStatus();

    void errorMessages_data();
    void errorMessages();
    void customerNotFoundMessageComesFromStatus();

    void checkStatusPerStatus_data();
    void checkStatusPerStatus();
    void checkStatusOfEmptyReply();

    void tokenResponseReadsAccessToken();
    void tokenResponseFromResponse();
    void exceptionsCarryTheirMessages();

    // The edge cases of the reply rules, one each.
    void shiftAlreadyOpenedIsAccepted();
    void unauthorisedIsTokenErrorWhateverTheBody();
    void objectWithUnknownMessageIsSuccess();
    void emptyObjectIsIncorrectUnlessArrayReply();
    void deleteReasonWithoutLineFeedIsGenericMessage();
};

void TestResponse::objectConstructorLeavesTransportEmpty()
{
    const tessaro::Response reply(json(R"({"status":"ok"})"));
    QCOMPARE(reply.jsonObject(), json(R"({"status":"ok"})"));
    QVERIFY(reply.jsonArray().isEmpty());
    QCOMPARE(reply.transport(), 0);
    QCOMPARE(reply.error(), 0);
    QVERIFY(reply.transportErrorText().isEmpty());
    QVERIFY(reply.rawBody().isEmpty());
    QVERIFY(reply.requestUrl().isEmpty());
}

void TestResponse::hostReplyIsCopied()
{
    const QByteArray body = R"({"message":"Item wasn't found"})";
    const tessaro::Response reply(hostReply(body, 404));
    QCOMPARE(reply.jsonObject(), QJsonDocument::fromJson(body).object());
    QCOMPARE(reply.transport(), 404);
    QCOMPARE(reply.error(), 404);
    QCOMPARE(reply.transportErrorText(), tr::Tr(QStringLiteral("httpError"), QStringLiteral("HTTP 404")));
    QCOMPARE(reply.rawBody(), body);
    QCOMPARE(reply.requestUrl(), QUrl(QStringLiteral("http://service.test/api/till/open")));
}

void TestResponse::arrayBodyIsKept()
{
    const ArrayReply reply(hostReply(R"([{"message":"a"},{"message":"b"}])"));
    QCOMPARE(reply.jsonArray().size(), 2);
    QVERIFY(reply.jsonObject().isEmpty());
    QVERIFY(reply.isArrayResponse());
    QVERIFY(!tessaro::Response(hostReply("[]")).isArrayResponse());
}

void TestResponse::accessorsOfMissingOrMistypedFields()
{
    const tessaro::Response missing(json(R"({"other":1})"));
    QCOMPARE(missing.statusString(), QString());
    QCOMPARE(missing.message(), QString());
    QCOMPARE(missing.unique(), true);

    const tessaro::Response mistyped(json(R"({"status":7,"message":["x"],"unique":"no"})"));
    QCOMPARE(mistyped.statusString(), QString());
    QCOMPARE(mistyped.message(), QString());
    QCOMPARE(mistyped.unique(), true);

    const tessaro::Response present(json(R"({"status":"s","message":"m","unique":false})"));
    QCOMPARE(present.statusString(), QStringLiteral("s"));
    QCOMPARE(present.message(), QStringLiteral("m"));
    QCOMPARE(present.unique(), false);
}

void TestResponse::statusRules_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("errorCode");
    QTest::addColumn<int>("expected");

    // Token errors (rules 1 to 4), each also winning over later rules.
    QTest::newRow("invalid_token") << QByteArray(R"({"error":"invalid_token"})") << 0 << 3;
    QTest::newRow("invalid_token before shift opened") << QByteArray(R"({"error":"invalid_token","status":"The shift is already opened"})") << 0 << 3;
    QTest::newRow("401 empty body") << QByteArray() << 401 << 3;
    QTest::newRow("401 before internal error") << QByteArray(R"({"message":"Internal Server Error"})") << 401 << 3;
    QTest::newRow("Not unauthorized") << QByteArray(R"({"status":"Not unauthorized"})") << 0 << 3;
    QTest::newRow("Not unauthorized with 500") << QByteArray(R"({"status":"Not unauthorized"})") << 500 << 3;
    QTest::newRow("inactive token") << QByteArray(R"({"message":"Check token error. Inactive token"})") << 0 << 3;
    QTest::newRow("filter exception") << QByteArray(R"({"error":"Filter threw Exception"})") << 0 << 3;
    QTest::newRow("filter exception before shift closed") << QByteArray(R"({"error":"Filter threw Exception","status":"The shift is closed"})") << 0 << 3;

    // Shift texts (rules 5 and 6), both forms of each.
    QTest::newRow("already open") << QByteArray(R"({"status":"The shift is already open"})") << 0 << 7;
    QTest::newRow("already opened") << QByteArray(R"({"status":"The shift is already opened"})") << 0 << 7;
    QTest::newRow("already opened with 409") << QByteArray(R"({"status":"The shift is already opened"})") << 409 << 7;
    QTest::newRow("closed") << QByteArray(R"({"status":"The shift is closed"})") << 0 << 4;
    QTest::newRow("already closed") << QByteArray(R"({"status":"The shift is already closed"})") << 0 << 4;
    QTest::newRow("closed with 400") << QByteArray(R"({"status":"The shift is closed"})") << 400 << 4;
    QTest::newRow("closed before customer") << QByteArray(R"({"status":"The shift is closed","message":"Customer wasn't found in CustomerAPI"})") << 0 << 4;

    // Messages and error codes (rules 7 to 10).
    QTest::newRow("customer not found") << QByteArray(R"({"message":"Customer wasn't found in CustomerAPI"})") << 0 << 5;
    QTest::newRow("customer not found with 404") << QByteArray(R"({"message":"Customer wasn't found in CustomerAPI"})") << 404 << 5;
    QTest::newRow("internal server error") << QByteArray(R"({"message":"Internal Server Error"})") << 0 << 2;
    QTest::newRow("internal server error with 500") << QByteArray(R"({"message":"Internal Server Error"})") << 500 << 2;
    QTest::newRow("error code with body") << QByteArray(R"({"cartUuid":"x"})") << 500 << 2;
    QTest::newRow("error code without body") << QByteArray() << 7 << 2;
    QTest::newRow("invalid data type") << QByteArray(R"({"message":"Invalid data type"})") << 0 << 2;

    // Success and empty replies (rules 11 and 12).
    QTest::newRow("object") << QByteArray(R"({"cartUuid":"x"})") << 0 << 1;
    QTest::newRow("empty object") << QByteArray("{}") << 0 << 6;
    QTest::newRow("empty body") << QByteArray() << 0 << 6;
    QTest::newRow("not JSON") << QByteArray("<html>") << 0 << 6;
    QTest::newRow("array body of object reply") << QByteArray("[1]") << 0 << 6;

    // Texts match exactly and case-sensitively; mistyped fields read as empty.
    QTest::newRow("lower-case shift closed") << QByteArray(R"({"status":"the shift is closed"})") << 0 << 1;
    QTest::newRow("shift closed with blank") << QByteArray(R"({"status":"The shift is closed "})") << 0 << 1;
    QTest::newRow("Not authorized") << QByteArray(R"({"status":"Not authorized"})") << 0 << 1;
    QTest::newRow("INVALID_TOKEN") << QByteArray(R"({"error":"INVALID_TOKEN"})") << 0 << 1;
    QTest::newRow("error not a string") << QByteArray(R"({"error":401})") << 0 << 1;
    QTest::newRow("shift text under message") << QByteArray(R"({"message":"The shift is closed"})") << 0 << 1;
}

void TestResponse::statusRules()
{
    QFETCH(QByteArray, body);
    QFETCH(int, errorCode);
    QFETCH(int, expected);
    QCOMPARE(int(tessaro::Response(hostReply(body, errorCode)).status()), expected);
}

void TestResponse::successAndTokenErrorFollowStatus()
{
    const tessaro::Response good(json(R"({"cartUuid":"x"})"));
    QVERIFY(good.success());
    QVERIFY(!good.tokenError());
    const tessaro::Response token(json(R"({"error":"invalid_token"})"));
    QVERIFY(!token.success());
    QVERIFY(token.tokenError());
    const tessaro::Response opened(json(R"({"status":"The shift is already opened"})"));
    QVERIFY(!opened.success());
    QVERIFY(!opened.tokenError());
}

void TestResponse::errorMessages_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("text");

    QTest::newRow("customer not found")
        << QByteArray(R"({"message":"Customer wasn't found in CustomerAPI"})")
        << "tessaroClientNotFoundError" << QStringLiteral("Клиент не найден");
    QTest::newRow("missed delete reason")
        << QByteArray(R"({"message":"Missed mandatory fields: quantityOverwrite.deleteReason\n"})")
        << "tessaroMissedDeleteReason" << QStringLiteral("Не указана причина изменения количества");
    QTest::newRow("signature expired")
        << QByteArray(R"({"error_code":"APIGW.0303","error_msg":"Incorrect app authentication information: signature expired"})")
        << "tessaroGateSignatureError" << QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время");
    QTest::newRow("signature expired wins over message")
        << QByteArray(R"({"error_msg":"signature expired","message":"Something else"})")
        << "tessaroGateSignatureError" << QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время");
    QTest::newRow("card barcode")
        << QByteArray(R"({"message":"cardBarcode doesn't match pattern"})")
        << "tessaroIncorrectCardNumber" << QStringLiteral("Некорректный номер карты");
    QTest::newRow("generic message")
        << QByteArray(R"({"message":"Item wasn't found"})")
        << "tessaroErroritemwasntfound" << QStringLiteral("Item wasn't found");
    QTest::newRow("generic message with white space")
        << QByteArray(R"({"message":"  Cart   isn't\tactive \n"})")
        << "tessaroErrorcartisntactive" << QStringLiteral("  Cart   isn't\tactive \n");
    QTest::newRow("generic internal error")
        << QByteArray(R"({"message":"Internal Server Error"})")
        << "tessaroErrorinternalservererror" << QStringLiteral("Internal Server Error");
    QTest::newRow("card barcode other case")
        << QByteArray(R"({"message":"CardBarcode doesn't match pattern"})")
        << "tessaroErrorcardbarcodedoesntmatchpattern" << QStringLiteral("CardBarcode doesn't match pattern");
    QTest::newRow("no message")
        << QByteArray(R"({"error":"invalid_token"})")
        << "tessaroUnknownError" << QStringLiteral("Неизвестная ошибка при работе с Tessaro");
    QTest::newRow("empty")
        << QByteArray()
        << "tessaroUnknownError" << QStringLiteral("Неизвестная ошибка при работе с Tessaro");
    QTest::newRow("message not a string")
        << QByteArray(R"({"message":42})")
        << "tessaroUnknownError" << QStringLiteral("Неизвестная ошибка при работе с Tessaro");
}

void TestResponse::errorMessages()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, id);
    QFETCH(QString, text);
    const tr::Tr message = tessaro::Response(hostReply(body)).errorMessage();
    QCOMPARE(message.id(), id);
    QCOMPARE(message.text(), text);
}

void TestResponse::customerNotFoundMessageComesFromStatus()
{
    // The first row asks status(), so a subclass that says 5 gets the message whatever the body.
    const FixedStatusReply reply(tessaro::Response::CustomerNotFound, json(R"({"message":"Item wasn't found"})"));
    QCOMPARE(reply.errorMessage().id(), QStringLiteral("tessaroClientNotFoundError"));
}

void TestResponse::checkStatusPerStatus_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<Thrown>("thrown");
    QTest::addColumn<QString>("id");

    // The body carries a message, so errorMessage() yields its generic id.
    QTest::newRow("0 unknown") << 0 << Thrown::Basic << "tessaroErrorbroken";
    QTest::newRow("1 success") << 1 << Thrown::Nothing << QString();
    QTest::newRow("2 error") << 2 << Thrown::Basic << "tessaroErrorbroken";
    QTest::newRow("3 token error") << 3 << Thrown::Basic << "tessaroErrorbroken";
    QTest::newRow("4 shift closed") << 4 << Thrown::ShiftClosed << "tessaroShiftClosed";
    QTest::newRow("5 customer not found") << 5 << Thrown::Basic << "tessaroClientNotFoundError";
    QTest::newRow("6 incorrect response") << 6 << Thrown::Basic << "tessaroIncorrectResponse";
    QTest::newRow("7 shift already opened") << 7 << Thrown::Nothing << QString();
}

void TestResponse::checkStatusPerStatus()
{
    QFETCH(int, status);
    QFETCH(Thrown, thrown);
    QFETCH(QString, id);
    const FixedStatusReply reply(tessaro::Response::Status(status), json(R"({"message":"Broken"})"));
    tr::Tr message;
    QCOMPARE(runCheckStatus(reply, &message), thrown);
    QCOMPARE(message.id(), id);
}

void TestResponse::checkStatusOfEmptyReply()
{
    tr::Tr message;
    QCOMPARE(runCheckStatus(tessaro::Response(hostReply(QByteArray())), &message), Thrown::Basic);
    QCOMPARE(message, tr::Tr(QStringLiteral("tessaroIncorrectResponse"), QStringLiteral("Некорректный ответ от сервера")));
}

void TestResponse::tokenResponseReadsAccessToken()
{
    const tessaro::TokenResponse reply(hostReply(R"({"access_token":"abc.def","token_type":"bearer","expires_in":300})"));
    QCOMPARE(reply.token(), QStringLiteral("abc.def"));
    QVERIFY(reply.success());
    QCOMPARE(tessaro::TokenResponse(json(R"({"token_type":"bearer"})")).token(), QString());
    QCOMPARE(tessaro::TokenResponse(json(R"({"access_token":12})")).token(), QString());
}

void TestResponse::tokenResponseFromResponse()
{
    const tessaro::Response reply(hostReply(R"({"access_token":"t1"})"));
    const tessaro::TokenResponse token(reply);
    QCOMPARE(token.token(), QStringLiteral("t1"));
    QCOMPARE(token.rawBody(), reply.rawBody());
    QCOMPARE(token.requestUrl(), reply.requestUrl());
}

void TestResponse::exceptionsCarryTheirMessages()
{
    const tessaro::ShiftClosedException closed;
    QCOMPARE(closed.tr(), tr::Tr(QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена в Tessaro закрыта")));
    const tessaro::ConnectionErrorException lost;
    QCOMPARE(lost.tr().id(), QStringLiteral("tessaroConnectionError"));
    QCOMPARE(lost.tr().text().split(QLatin1Char('\n')),
             (QStringList{QStringLiteral("Ошибка связи с сервером Tessaro"),
                          QStringLiteral("Не выключайте кассу! Дождитесь завершения операции")}));
    QCOMPARE(QString::fromUtf8(lost.what()), lost.tr().text());

    // Both are the host's exception, so hooks catch them as such.
    const BasicException *base = &lost;
    QCOMPARE(base->tr().id(), QStringLiteral("tessaroConnectionError"));
    base = &closed;
    QCOMPARE(base->tr().id(), QStringLiteral("tessaroShiftClosed"));
}

void TestResponse::shiftAlreadyOpenedIsAccepted()
{
    const tessaro::Response reply(hostReply(R"({"status":"The shift is already opened"})"));
    QCOMPARE(reply.status(), tessaro::Response::ShiftAlreadyOpened);
    reply.checkStatus();
}

void TestResponse::unauthorisedIsTokenErrorWhateverTheBody()
{
    for (const QByteArray &body : {QByteArray(), QByteArray("<html>Unauthorized</html>"),
                                   QByteArray(R"({"message":"Item wasn't found"})"),
                                   QByteArray(R"({"status":"The shift is closed"})")}) {
        const tessaro::Response reply(hostReply(body, 401));
        QCOMPARE(reply.status(), tessaro::Response::TokenError);
    }
}

void TestResponse::objectWithUnknownMessageIsSuccess()
{
    const tessaro::Response reply(hostReply(R"({"message":"Cart was updated"})"));
    QCOMPARE(reply.error(), 0);
    QCOMPARE(reply.status(), tessaro::Response::Success);
    reply.checkStatus();
}

void TestResponse::emptyObjectIsIncorrectUnlessArrayReply()
{
    QCOMPARE(tessaro::Response(hostReply("{}")).status(), tessaro::Response::IncorrectResponse);
    QCOMPARE(ArrayReply(hostReply("{}")).status(), tessaro::Response::Success);
    QCOMPARE(ArrayReply(hostReply("[]")).status(), tessaro::Response::Success);
    QCOMPARE(ArrayReply(json("{}")).status(), tessaro::Response::Success);
}

void TestResponse::deleteReasonWithoutLineFeedIsGenericMessage()
{
    const tessaro::Response reply(json(R"({"message":"Missed mandatory fields: quantityOverwrite.deleteReason"})"));
    const tr::Tr message = reply.errorMessage();
    QCOMPARE(message.id(), QStringLiteral("tessaroErrormissedmandatoryfields:quantityoverwrite.deletereason"));
    QCOMPARE(message.text(), QStringLiteral("Missed mandatory fields: quantityOverwrite.deleteReason"));
}

QTEST_GUILESS_MAIN(TestResponse)
#include "tst_response.moc"
