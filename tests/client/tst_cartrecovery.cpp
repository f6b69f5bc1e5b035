#include "cartclienttest.h"
#include "servicetestbed.h"

#include <support/logcapture.h>

#include <QTest>

using Answer = ScriptedHttpServer::Answer;
using Request = ScriptedHttpServer::Request;
using carttest::Client;
using carttest::cart;
using carttest::line;

namespace {

const QString uuid = QStringLiteral("c-1");
const QJsonObject update{{"item", QJsonObject{{"barcode", "4600000000001"}, {"quantity", 1}}}};

// The methods of the requests received, in order ("POST", "GET", …).
QByteArrayList methods(const ScriptedHttpServer &server)
{
    QByteArrayList result;
    const QList<Request> requests = server.requests();
    for (const Request &request : requests)
        result << request.method;
    return result;
}

// Every POST carried the same update body.
bool everyPostIs(const ScriptedHttpServer &server, const QJsonObject &body)
{
    const QList<Request> requests = server.requests();
    return std::all_of(requests.cbegin(), requests.cend(), [&body](const Request &request) {
        return request.method != "POST" || ServiceTestBed::jsonBody(request) == body;
    });
}

} // namespace

class TestCartRecovery : public QObject
{
    Q_OBJECT

private slots:
    // A first update after cartCreate, with no cart confirmed yet.
    void lostFirstUpdateWithEmptyCartIsResent();
    void lostFirstUpdateWithItemsIsTheResult();
    // A later update, judged against the last confirmed cart.
    void readBackAgainstLastCart_data();
    void readBackAgainstLastCart();
    // Service code 3001.
    void conflictOnResentUpdateReadsBackAgain();
    void conflictOnFirstSendIsReturned();
    // The read-back itself fails.
    void failedReadBacksAreShownUntilTheServiceAnswers();
};

void TestCartRecovery::lostFirstUpdateWithEmptyCartIsResent()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::json(200, cart({})));
    bed.server().enqueue(Answer::json(200, cart({line(1, 1)}, {{"pointsToRredeem", 7}})));
    Client client;
    const LogCapture log;

    const tessaro::CartUpdateResponse result = client.updateCart(uuid, update);
    QCOMPARE(methods(bed.server()), (QByteArrayList{"POST", "GET", "POST"}));
    QVERIFY(everyPostIs(bed.server(), update));
    QCOMPARE(bed.server().requests().at(1).path, QStringLiteral("/api/cart/c-1"));
    QCOMPARE(result.items().size(), 1);
    QCOMPARE(result.pointsToRredeem(), 7);
    QVERIFY(*client.lastCart == result);
    // The cashier's two-line text stays on one line of the log.
    QCOMPARE(carttest::clientLines(log, QtCriticalMsg),
             QStringList{QStringLiteral("Ошибка связи с сервером Tessaro\\nНе выключайте кассу! Дождитесь завершения операции")});
    QVERIFY(bed.host().dialog()->messages().isEmpty());
}

void TestCartRecovery::lostFirstUpdateWithItemsIsTheResult()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::json(200, cart({line(1, 1)}, {{"pointsToRredeem", 9}})));
    const QSharedPointer<DocumentCardRecord> card = carttest::documentWithCard();
    Client client;

    const tessaro::CartUpdateResponse result = client.updateCart(uuid, update);
    QCOMPARE(methods(bed.server()), (QByteArrayList{"POST", "GET"}));
    QCOMPARE(result.items().size(), 1);
    QVERIFY(*client.lastCart == result);
    QCOMPARE(card->getMaxPointsForSpend(), 9);
}

void TestCartRecovery::readBackAgainstLastCart_data()
{
    QTest::addColumn<QJsonArray>("readBack");
    QTest::addColumn<bool>("resent");
    const QJsonArray confirmed{line(1, 1, 10), line(2, 2, 20)};
    QTest::newRow("same items: resent") << confirmed << true;
    QTest::newRow("changed quantity") << QJsonArray{line(1, 1, 10), line(2, 3, 20)} << false;
    QTest::newRow("changed price") << QJsonArray{line(1, 1, 10), line(2, 2, 19.5)} << false;
    QTest::newRow("changed order") << QJsonArray{line(2, 2, 20), line(1, 1, 10)} << false;
    QTest::newRow("one more item") << QJsonArray{line(1, 1, 10), line(2, 2, 20), line(3, 1, 5)} << false;
    QTest::newRow("one item less") << QJsonArray{line(1, 1, 10)} << false;
}

void TestCartRecovery::readBackAgainstLastCart()
{
    QFETCH(QJsonArray, readBack);
    QFETCH(bool, resent);
    ServiceTestBed bed;
    const QJsonArray confirmed{line(1, 1, 10), line(2, 2, 20)};
    const QJsonArray afterResend{line(1, 1, 10), line(2, 2, 20), line(3, 4, 40)};
    bed.server().enqueue(Answer::json(200, cart(confirmed, {{"totalItems", 2}})));
    bed.server().enqueue(Answer::close());
    // The cart's other fields may differ; only the items count.
    bed.server().enqueue(Answer::json(200, cart(readBack, {{"totalItems", 99}})));
    bed.server().enqueue(Answer::json(200, cart(afterResend)));
    Client client;
    client.updateCart(uuid, {{"item", QJsonObject{{"barcode", "first"}}}});

    const tessaro::CartUpdateResponse result = client.updateCart(uuid, update);
    const QJsonArray expected = resent ? afterResend : readBack;
    QCOMPARE(result.jsonObject().value("items").toArray(), expected);
    QCOMPARE(client.lastCart->jsonObject().value("items").toArray(), expected);
    const QByteArrayList sent = resent ? QByteArrayList{"POST", "POST", "GET", "POST"} : QByteArrayList{"POST", "POST", "GET"};
    QCOMPARE(methods(bed.server()), sent);
    if (resent)
        QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().at(3)), update);
}

void TestCartRecovery::conflictOnResentUpdateReadsBackAgain()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::json(200, cart({})));
    bed.server().enqueue(Answer::json(200, R"({"status":"error","statusCode":3001,"message":"Cart was changed"})"));
    bed.server().enqueue(Answer::json(200, cart({line(1, 1)})));
    Client client;

    const tessaro::CartUpdateResponse result = client.updateCart(uuid, update);
    QCOMPARE(methods(bed.server()), (QByteArrayList{"POST", "GET", "POST", "GET"}));
    QCOMPARE(result.status(), tessaro::Response::Success);
    QCOMPARE(result.statusCode(), -1);
    QCOMPARE(result.items().size(), 1);
}

void TestCartRecovery::conflictOnFirstSendIsReturned()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::json(200, R"({"status":"error","statusCode":3001})"));
    Client client;
    const tessaro::CartUpdateResponse result = client.updateCart(uuid, update);
    QCOMPARE(result.status(), tessaro::Response::CartUpdateConflict);
    QCOMPARE(bed.server().requestCount(), 1);
    QVERIFY(*client.lastCart == result);
}

void TestCartRecovery::failedReadBacksAreShownUntilTheServiceAnswers()
{
    ServiceTestBed bed;
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::close());
    bed.server().enqueue(Answer::reset());
    bed.server().enqueue(Answer::json(200, cart({line(1, 1)})));
    Client client;
    const LogCapture log;

    const tessaro::CartUpdateResponse result = client.updateCart(uuid, update);
    QCOMPARE(result.items().size(), 1);
    QCOMPARE(methods(bed.server()), (QByteArrayList{"POST", "GET", "GET", "GET"}));

    const QList<ScriptedDialog::Message> shown = bed.host().dialog()->messages();
    QCOMPARE(shown.size(), 2);
    for (const ScriptedDialog::Message &message : shown) {
        QCOMPARE(message.message.id(), QStringLiteral("tessaroConnectionError"));
        QCOMPARE(message.message.text(),
                 QStringLiteral("Ошибка связи с сервером Tessaro\nНе выключайте кассу! Дождитесь завершения операции"));
        QCOMPARE(message.kind, int(Dialog::Error));
    }
    QCOMPARE(carttest::clientLines(log, QtCriticalMsg).size(), 3);
}

QTEST_GUILESS_MAIN(TestCartRecovery)
#include "tst_cartrecovery.moc"
