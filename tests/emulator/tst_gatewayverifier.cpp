// The gateway signing rules as the emulator applies them, checked against
// values computed outside Qt with `openssl dgst -sha256 [-hmac]`.
#include "emulator/exchange.h"
#include "emulator/gatewayverifier.h"

#include <QJsonDocument>
#include <QTest>

using tessaro::emulator::Exchange;
using tessaro::emulator::GatewayVerifier;

namespace {

const QMap<QByteArray, QByteArray> signedHeaders{
    {"env", "PreProd"},
    {"host", "127.0.0.1"},
    {"x-sdk-date", "20240131T235959Z"},
    {"x-stage", "PreProd"},
};

// printf 'POST\n/api/advicenote/\na=1&b=2\nenv:PreProd\nhost:127.0.0.1\nx-sdk-date:20240131T235959Z\n
// x-stage:PreProd\n\nenv;host;x-sdk-date;x-stage\n<sha256 of {"a":1}>' | openssl dgst -sha256
const QByteArray postCanonical =
    "POST\n/api/advicenote/\na=1&b=2\n"
    "env:PreProd\nhost:127.0.0.1\nx-sdk-date:20240131T235959Z\nx-stage:PreProd\n\n"
    "env;host;x-sdk-date;x-stage\n"
    "015abd7f5cc57a2dd94b7590f04ad8084273905ee33ec5cebeae62276a97f862";
const QByteArray postSignature = "9e6808be94a2f36fc9f091ac7bf33854a5a19216a25173d3247f22fc48c7eb1a";
const QByteArray getSignature = "6d052e9d59d2a8b9504c19cb4599bcfcc613307d5bd5794a4dce05f48b7ec97a";
const QByteArray emptyHash = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

Exchange signedExchange(const QByteArray &method, const QString &path, const QString &query,
                        const QByteArray &body, const QByteArray &signature)
{
    Exchange exchange;
    exchange.method = method;
    exchange.path = path;
    exchange.query = query;
    exchange.body = body;
    for (auto it = signedHeaders.cbegin(); it != signedHeaders.cend(); ++it)
        exchange.headers.append(qMakePair(it.key(), it.value()));
    exchange.headers.append(qMakePair(QByteArray("Content-Type"), QByteArray("application/json")));
    exchange.headers.append(qMakePair(QByteArray("Authorization"),
                                      "SDK-HMAC-SHA256 Access=gate-key, SignedHeaders=env;host;x-sdk-date;x-stage, "
                                      "Signature=" + signature));
    return exchange;
}

QDateTime signingTime()
{
    return QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC);
}

} // namespace

class TestGatewayVerifier : public QObject
{
    Q_OBJECT

private slots:
    void canonicalRequestOfPost();
    void stringToSignAndSignatureMatchOpenssl();
    void getHashesEmptyBodyPostHashesBraces();
    void pathWithTrailingSlashKeepsOne();
    void queryIsSortedAndPercentEncoded_data();
    void queryIsSortedAndPercentEncoded();
    void acceptsOpensslVectors();
    void refusals_data();
    void refusals();
    void wrongSignatureAnswerShowsCanonicalRequest();
    void sdkDateParsing_data();
    void sdkDateParsing();
};

void TestGatewayVerifier::canonicalRequestOfPost()
{
    QCOMPARE(GatewayVerifier::canonicalRequest("POST", QStringLiteral("/api/advicenote"), QStringLiteral("b=2&a=1"),
                                               signedHeaders, R"({"a":1})"),
             postCanonical);
}

void TestGatewayVerifier::stringToSignAndSignatureMatchOpenssl()
{
    const QByteArray toSign = GatewayVerifier::stringToSign("20240131T235959Z", postCanonical);
    QCOMPARE(toSign, QByteArray("SDK-HMAC-SHA256\n20240131T235959Z\n"
                                "856bdcaec2dec857c99ba2280ea203698a06b9b892deb7c4aad630900a74931b"));
    QCOMPARE(GatewayVerifier::signature("gate-secret", toSign), postSignature);
}

void TestGatewayVerifier::getHashesEmptyBodyPostHashesBraces()
{
    const QByteArray get = GatewayVerifier::canonicalRequest("GET", QStringLiteral("/cart/42"), QString(),
                                                             signedHeaders, "{}");
    const QByteArray post = GatewayVerifier::canonicalRequest("POST", QStringLiteral("/cart/42"), QString(),
                                                              signedHeaders, "{}");
    QVERIFY(get.startsWith("GET\n/cart/42/\n\n"));
    QVERIFY(get.endsWith(emptyHash));
    // printf '{}' | openssl dgst -sha256
    QVERIFY(post.endsWith("44136fa355b3678a1146ad16f7e8649e94fb4fc21fe77e8310c060f61caaff8a"));
}

void TestGatewayVerifier::pathWithTrailingSlashKeepsOne()
{
    const QByteArray canonical = GatewayVerifier::canonicalRequest("GET", QStringLiteral("/cart/42/"), QString(),
                                                                   signedHeaders, QByteArray());
    QVERIFY(canonical.startsWith("GET\n/cart/42/\n\n"));
}

void TestGatewayVerifier::queryIsSortedAndPercentEncoded_data()
{
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("canonicalQuery");
    QTest::newRow("sorted by name") << QStringLiteral("b=2&a=1") << QByteArray("a=1&b=2");
    QTest::newRow("same name sorted by value") << QStringLiteral("a=2&a=1") << QByteArray("a=1&a=2");
    QTest::newRow("blank and slash encoded") << QStringLiteral("q=x%20y&p=a/b") << QByteArray("p=a%2Fb&q=x%20y");
    QTest::newRow("unreserved kept") << QStringLiteral("k=A-z_0.9~") << QByteArray("k=A-z_0.9~");
    QTest::newRow("utf-8 upper-case hex") << QStringLiteral("n=%C3%A9") << QByteArray("n=%C3%A9");
    QTest::newRow("none") << QString() << QByteArray();
}

void TestGatewayVerifier::queryIsSortedAndPercentEncoded()
{
    QFETCH(QString, query);
    QFETCH(QByteArray, canonicalQuery);
    const QByteArrayList lines =
        GatewayVerifier::canonicalRequest("GET", QStringLiteral("/x"), query, signedHeaders, QByteArray()).split('\n');
    QCOMPARE(lines.at(2), canonicalQuery);
}

void TestGatewayVerifier::acceptsOpensslVectors()
{
    const GatewayVerifier verifier(QStringLiteral("gate-key"), QStringLiteral("gate-secret"), 900);
    QVERIFY(!verifier.refusal(signedExchange("POST", QStringLiteral("/api/advicenote"), QStringLiteral("b=2&a=1"),
                                             R"({"a":1})", postSignature),
                              signingTime()));
    QVERIFY(!verifier.refusal(signedExchange("GET", QStringLiteral("/api/cart/42"), QString(), QByteArray(), getSignature),
                              signingTime()));
}

void TestGatewayVerifier::refusals_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<int>("clockShiftSeconds");
    QTest::addColumn<QString>("errorMessage");
    const QString key = QStringLiteral("gate-key");
    const QByteArray body = R"({"a":1})";
    QTest::newRow("unknown key") << QStringLiteral("other-key") << body << postSignature << 0
                                 << QStringLiteral("unknown access key");
    QTest::newRow("body changed") << key << QByteArray(R"({"a":2})") << postSignature << 0
                                  << QStringLiteral("verify signature failed");
    QTest::newRow("signature changed") << key << body << QByteArray(postSignature).replace(0, 1, "0") << 0
                                       << QStringLiteral("verify signature failed");
    QTest::newRow("16 minutes late") << key << body << postSignature << 16 * 60 << QStringLiteral("signature expired");
    QTest::newRow("16 minutes early") << key << body << postSignature << -16 * 60 << QStringLiteral("signature expired");
}

void TestGatewayVerifier::refusals()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, signature);
    QFETCH(int, clockShiftSeconds);
    QFETCH(QString, errorMessage);
    const GatewayVerifier verifier(key, QStringLiteral("gate-secret"), 900);
    const auto refusal = verifier.refusal(signedExchange("POST", QStringLiteral("/api/advicenote"),
                                                         QStringLiteral("b=2&a=1"), body, signature),
                                          signingTime().addSecs(clockShiftSeconds));
    QVERIFY(refusal);
    QCOMPARE(refusal->status(), 401);
    QCOMPARE(QJsonDocument::fromJson(refusal->body()).object().value(QStringLiteral("error_msg")).toString(),
             errorMessage);
}

void TestGatewayVerifier::wrongSignatureAnswerShowsCanonicalRequest()
{
    const GatewayVerifier verifier(QStringLiteral("gate-key"), QStringLiteral("gate-secret"), 900);
    const auto refusal = verifier.refusal(signedExchange("POST", QStringLiteral("/api/advicenote"),
                                                         QStringLiteral("b=2&a=1"), R"({"a":1})", "00"),
                                          signingTime());
    QVERIFY(refusal);
    const QJsonObject answer = QJsonDocument::fromJson(refusal->body()).object();
    QCOMPARE(answer.value(QStringLiteral("canonical_request")).toString().toLatin1(), postCanonical);
}

void TestGatewayVerifier::sdkDateParsing_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QDateTime>("expected");
    QTest::newRow("valid") << QByteArray("20240131T235959Z") << signingTime();
    QTest::newRow("no Z") << QByteArray("20240131T235959") << QDateTime();
    QTest::newRow("iso form") << QByteArray("2024-01-31T23:59:59Z") << QDateTime();
    QTest::newRow("hour 24") << QByteArray("20240131T245959Z") << QDateTime();
}

void TestGatewayVerifier::sdkDateParsing()
{
    QFETCH(QByteArray, text);
    QFETCH(QDateTime, expected);
    QCOMPARE(GatewayVerifier::parseSdkDate(text), expected);
}

QTEST_GUILESS_MAIN(TestGatewayVerifier)
#include "tst_gatewayverifier.moc"
