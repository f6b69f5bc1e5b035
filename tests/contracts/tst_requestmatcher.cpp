#include <contracts/requestmatcher.h>

#include <QTest>

using namespace tessaro::contracts;

/// A request sent now is matched to the recorded one it stands for; one
/// that differs is told the nearest recorded request and the first byte
/// that differs.
class TestRequestMatcher : public QObject
{
    Q_OBJECT

private slots:
    void matchesInRecordedOrder();
    void difference_data();
    void difference();
    void volatileFieldsIgnored();
    void usedUp();

private:
    static CassetteExchange advice(const QByteArray &body);
    static Cassette cassette();
};

CassetteExchange TestRequestMatcher::advice(const QByteArray &body)
{
    CassetteExchange exchange;
    exchange.method = QStringLiteral("POST");
    exchange.path = QStringLiteral("/api/advicenote");
    exchange.requestHeaders = {{QStringLiteral("Authorization"), QStringLiteral("Bearer secret-placeholder-2")},
                               {QStringLiteral("Content-Type"), QStringLiteral("application/json")},
                               {QStringLiteral("x-sdk-date"), QStringLiteral("20240131T235959Z")}};
    exchange.requestBody = body;
    exchange.status = 200;
    return exchange;
}

Cassette TestRequestMatcher::cassette()
{
    Cassette cassette;
    CassetteExchange token;
    token.method = QStringLiteral("POST");
    token.path = QStringLiteral("/token");
    token.requestHeaders = {{QStringLiteral("Authorization"), QStringLiteral("Basic secret-placeholder-1")}};
    token.requestBody = "grant_type=client_credentials";
    cassette.exchanges = {token, advice(R"({"quantity":1})"), advice(R"({"quantity":2})")};
    return cassette;
}

void TestRequestMatcher::matchesInRecordedOrder()
{
    RequestMatcher matcher(cassette());
    CassetteExchange token = cassette().exchanges.at(0);
    // A placeholder stands for any text: here the real credentials.
    token.requestHeaders = {{QStringLiteral("Authorization"), QStringLiteral("Basic dGlsbDpzZWNyZXQ=")},
                            {QStringLiteral("Host"), QStringLiteral("127.0.0.1:1234")},
                            {QStringLiteral("Content-Length"), QStringLiteral("29")}};
    QCOMPARE(matcher.match(token).index, 0);
    CassetteExchange second = advice(R"({"quantity":2})");
    second.requestHeaders[2].second = QStringLiteral("20261125T120000Z"); // the gateway's date is volatile
    QCOMPARE(matcher.match(second).index, 2);
    QCOMPARE(matcher.match(advice(R"({"quantity":1})")).index, 1);
    QVERIFY(matcher.unused().isEmpty());
}

void TestRequestMatcher::difference_data()
{
    QTest::addColumn<CassetteExchange>("sent");
    QTest::addColumn<QString>("difference");
    QTest::newRow("one byte of the body") << advice(R"({"quantity":7})")
                                          << QStringLiteral("body, byte 12: recorded «{\"quantity\":1}» sent «{\"quantity\":7}»");
    QTest::newRow("body longer") << advice(R"({"quantity":1,"x":0})") << QStringLiteral("body, byte 13:");
    CassetteExchange missing = advice(R"({"quantity":1})");
    missing.requestHeaders.removeAt(1);
    QTest::newRow("header missing") << missing << QStringLiteral("header Content-Type missing (recorded «application/json»)");
    CassetteExchange changed = advice(R"({"quantity":1})");
    changed.requestHeaders[1].second = QStringLiteral("application/xml");
    QTest::newRow("header changed") << changed << QStringLiteral("header Content-Type, byte 12:");
    CassetteExchange added = advice(R"({"quantity":1})");
    added.requestHeaders.append({QStringLiteral("X-Request-ID"), QStringLiteral("42")});
    QTest::newRow("header added") << added << QStringLiteral("header X-Request-ID sent, not recorded («42»)");
    CassetteExchange path = advice(R"({"quantity":1})");
    path.path = QStringLiteral("/api/advicenotes");
    QTest::newRow("path") << path << QStringLiteral("path, byte 15:");
    CassetteExchange method = advice(R"({"quantity":1})");
    method.method = QStringLiteral("GET");
    QTest::newRow("method") << method << QStringLiteral("method: recorded POST, sent GET");
}

void TestRequestMatcher::difference()
{
    QFETCH(CassetteExchange, sent);
    QFETCH(QString, difference);
    RequestMatcher matcher(cassette());
    const RequestMatcher::Result result = matcher.match(sent);
    QCOMPARE(result.index, -1);
    QVERIFY(result.nearest >= 0);
    QVERIFY2(result.difference.startsWith(difference), qPrintable(result.difference));
    QCOMPARE(matcher.unused().size(), 3);
}

void TestRequestMatcher::volatileFieldsIgnored()
{
    Cassette recorded = cassette();
    recorded.exchanges[1].requestBody = R"({"quantity":1,"time":"10:00"})";
    RequestMatcher strict(recorded);
    QCOMPARE(strict.match(advice(R"({"quantity":1,"time":"11:30"})")).index, -1);
    recorded.volatileFields = {QStringLiteral("time")};
    RequestMatcher lenient(recorded);
    QCOMPARE(lenient.match(advice(R"({"quantity":1,"time":"11:30"})")).index, 1);
}

void TestRequestMatcher::usedUp()
{
    RequestMatcher matcher(cassette());
    QCOMPARE(matcher.match(advice(R"({"quantity":1})")).index, 1);
    const RequestMatcher::Result again = matcher.match(advice(R"({"quantity":1})"));
    QCOMPARE(again.index, -1);
    // The nearest is the unused request to the same place.
    QCOMPARE(again.nearest, 2);
    QCOMPARE(matcher.unused(), QList<int>({0, 2}));
}

QTEST_GUILESS_MAIN(TestRequestMatcher)
#include "tst_requestmatcher.moc"
