// Authentication of the emulator over loopback HTTP: the OAuth2 token path,
// bearer tokens on the service paths, and gateway signatures.
#include "curlclient.h"
#include "servicesession.h"

#include "emulator/emulator.h"

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QTest>

#include <memory>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;

namespace {

const QByteArray basicAuthorization = "Authorization: Basic dGlsbDpzZWNyZXQ=";
const QByteArray formContent = "Content-Type: application/x-www-form-urlencoded";
const QByteArray goodForm = "grant_type=client_credentials&client_id=till&realm_id=tessaro";

QDateTime signingTime()
{
    return QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC);
}

QByteArray sha256Hex(const QByteArray &data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex();
}

// Signs as the gateway's clients do, written here from the rules rather than
// taken from the emulator: env, host, x-sdk-date and x-stage are signed.
QByteArray signature(const QByteArray &method, const QString &path, const QByteArray &canonicalQuery,
                     const QByteArray &date, const QByteArray &body)
{
    const QByteArray canonical = method + '\n' + (path.endsWith('/') ? path : path + '/').toLatin1() + '\n'
        + canonicalQuery + '\n' + "env:PreProd\nhost:127.0.0.1\nx-sdk-date:" + date + "\nx-stage:PreProd\n" + '\n'
        + "env;host;x-sdk-date;x-stage" + '\n' + sha256Hex(method == "GET" ? QByteArray() : body);
    const QByteArray toSign = "SDK-HMAC-SHA256\n" + date + '\n' + sha256Hex(canonical);
    return QMessageAuthenticationCode::hash(toSign, "gate-secret", QCryptographicHash::Sha256).toHex();
}

QByteArrayList gatewayHeaders(const QByteArray &date, const QByteArray &signature,
                              const QByteArray &key = "gate-key")
{
    return {
        "Host: 127.0.0.1",
        "env: PreProd",
        "x-stage: PreProd",
        "x-sdk-date: " + date,
        "Content-Type: application/json",
        "Authorization: SDK-HMAC-SHA256 Access=" + key
            + ", SignedHeaders=env;host;x-sdk-date;x-stage, Signature=" + signature,
    };
}

} // namespace

class TestEmulatorAuth : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void tokenIssuedToConfiguredClient();
    void tokenRefusedForWrongCredentials_data();
    void tokenRefusedForWrongCredentials();
    void tokenRefusesOtherGrantTypes();
    void tokenNeedsFormBody();
    void formPlusStandsForBlank();
    void serviceRefusesWithoutValidToken_data();
    void serviceRefusesWithoutValidToken();
    void serviceAcceptsIssuedToken();
    void tokenExpiresByEmulatorClock();
    void revokedTokenIsRefused();

    void gatewayAcceptsFixedVectors();
    void gatewayAcceptsSignatureComputedHere_data();
    void gatewayAcceptsSignatureComputedHere();
    void gatewayRefusals_data();
    void gatewayRefusals();
    void gatewayDateTolerance_data();
    void gatewayDateTolerance();
    void gatewayIgnoresBearerToken();

private:
    std::unique_ptr<Emulator> m_tokenEmulator;
    std::unique_ptr<Emulator> m_gatewayEmulator;
};

void TestEmulatorAuth::initTestCase()
{
    EmulatorSettings tokenSettings;
    tokenSettings.basePath = QStringLiteral("/api");
    tokenSettings.clients.append({QStringLiteral("till one"), QStringLiteral("tessaro"), QStringLiteral("Basic b25l")});
    m_tokenEmulator = std::make_unique<Emulator>(tokenSettings);
    QVERIFY(m_tokenEmulator->startInThread() != 0);

    EmulatorSettings gatewaySettings;
    gatewaySettings.basePath = QStringLiteral("/api");
    gatewaySettings.authMode = EmulatorSettings::AuthMode::Gateway;
    gatewaySettings.appKey = QStringLiteral("gate-key");
    gatewaySettings.appSecret = QStringLiteral("gate-secret");
    m_gatewayEmulator = std::make_unique<Emulator>(gatewaySettings);
    QVERIFY(m_gatewayEmulator->startInThread() != 0);
}

void TestEmulatorAuth::init()
{
    m_tokenEmulator->clock().reset();
    m_gatewayEmulator->clock().setNow(signingTime());
}

void TestEmulatorAuth::tokenIssuedToConfiguredClient()
{
    CurlClient client;
    const CurlResult result = client.post(m_tokenEmulator->tokenUrl(), goodForm, {basicAuthorization, formContent});
    QCOMPARE(result.status, 200L);
    const QJsonObject answer = result.object();
    QVERIFY(!answer.value(QStringLiteral("access_token")).toString().isEmpty());
    QCOMPARE(answer.value(QStringLiteral("expires_in")).toInt(), 3600);
    QCOMPARE(answer.value(QStringLiteral("token_type")).toString(), QStringLiteral("bearer"));
}

void TestEmulatorAuth::tokenRefusedForWrongCredentials_data()
{
    QTest::addColumn<QByteArray>("form");
    QTest::addColumn<QByteArrayList>("headers");
    QTest::newRow("wrong Authorization") << goodForm << QByteArrayList{"Authorization: Basic eA==", formContent};
    QTest::newRow("no Authorization") << goodForm << QByteArrayList{formContent};
    QTest::newRow("wrong client_id") << QByteArray("grant_type=client_credentials&client_id=x&realm_id=tessaro")
                                     << QByteArrayList{basicAuthorization, formContent};
    QTest::newRow("wrong realm_id") << QByteArray("grant_type=client_credentials&client_id=till&realm_id=x")
                                    << QByteArrayList{basicAuthorization, formContent};
    QTest::newRow("no client_id") << QByteArray("grant_type=client_credentials&realm_id=tessaro")
                                  << QByteArrayList{basicAuthorization, formContent};
}

void TestEmulatorAuth::tokenRefusedForWrongCredentials()
{
    QFETCH(QByteArray, form);
    QFETCH(QByteArrayList, headers);
    CurlClient client;
    const CurlResult result = client.post(m_tokenEmulator->tokenUrl(), form, headers);
    QCOMPARE(result.status, 401L);
    QCOMPARE(result.object().value(QStringLiteral("error")).toString(), QStringLiteral("invalid_client"));
}

void TestEmulatorAuth::tokenRefusesOtherGrantTypes()
{
    CurlClient client;
    const CurlResult result = client.post(m_tokenEmulator->tokenUrl(),
                                          "grant_type=password&client_id=till&realm_id=tessaro",
                                          {basicAuthorization, formContent});
    QCOMPARE(result.status, 400L);
    QCOMPARE(result.object().value(QStringLiteral("error")).toString(), QStringLiteral("unsupported_grant_type"));
}

void TestEmulatorAuth::tokenNeedsFormBody()
{
    CurlClient client;
    const CurlResult result = client.post(m_tokenEmulator->tokenUrl(), goodForm,
                                          {basicAuthorization, "Content-Type: application/json"});
    QCOMPARE(result.status, 400L);
    QCOMPARE(result.object().value(QStringLiteral("error")).toString(), QStringLiteral("invalid_request"));
}

void TestEmulatorAuth::formPlusStandsForBlank()
{
    CurlClient client;
    const CurlResult result = client.post(m_tokenEmulator->tokenUrl(),
                                          "grant_type=client_credentials&client_id=till+one&realm_id=tessaro",
                                          {"Authorization: Basic b25l", formContent});
    QCOMPARE(result.status, 200L);
}

void TestEmulatorAuth::serviceRefusesWithoutValidToken_data()
{
    QTest::addColumn<QByteArray>("authorization");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("unknown token") << QByteArray("Authorization: Bearer 0123456789abcdef");
    QTest::newRow("basic scheme") << basicAuthorization;
    QTest::newRow("empty bearer") << QByteArray("Authorization: Bearer ");
}

void TestEmulatorAuth::serviceRefusesWithoutValidToken()
{
    QFETCH(QByteArray, authorization);
    ServiceSession session(*m_tokenEmulator);
    QByteArrayList headers{"Content-Type: application/json"};
    if (!authorization.isEmpty())
        headers.append(authorization);
    const CurlResult result = session.client().post(session.url(QStringLiteral("/cart/create")),
                                                    R"({"storeNo":1,"tillNo":2})", headers);
    QCOMPARE(result.status, 401L);
    QCOMPARE(result.object(), QJsonObject({{QStringLiteral("error"), QStringLiteral("invalid_token")}}));
    QVERIFY(m_tokenEmulator->state().carts.carts().isEmpty());
}

void TestEmulatorAuth::serviceAcceptsIssuedToken()
{
    ServiceSession session(*m_tokenEmulator);
    QVERIFY(!session.fetchToken().isEmpty());
    const CurlResult result = session.get(QStringLiteral("/messages/none"));
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.array(), QJsonArray());
}

void TestEmulatorAuth::tokenExpiresByEmulatorClock()
{
    m_tokenEmulator->clock().setNow(signingTime());
    ServiceSession session(*m_tokenEmulator);
    QVERIFY(!session.fetchToken().isEmpty());
    m_tokenEmulator->clock().advance(3599);
    QCOMPARE(session.get(QStringLiteral("/messages/none")).status, 200L);
    m_tokenEmulator->clock().advance(1);
    const CurlResult expired = session.get(QStringLiteral("/messages/none"));
    QCOMPARE(expired.status, 401L);
    QCOMPARE(expired.object().value(QStringLiteral("error")).toString(), QStringLiteral("invalid_token"));
}

void TestEmulatorAuth::revokedTokenIsRefused()
{
    ServiceSession session(*m_tokenEmulator);
    QVERIFY(!session.fetchToken().isEmpty());
    m_tokenEmulator->tokens().revokeAll();
    QCOMPARE(session.get(QStringLiteral("/messages/none")).status, 401L);
}

void TestEmulatorAuth::gatewayAcceptsFixedVectors()
{
    // Signatures computed with openssl (see tst_emulator_gatewayverifier): the service's
    // own refusals (400, 404) show that the signature passed.
    CurlClient client;
    QUrl post = m_gatewayEmulator->baseUrl();
    post.setPath(QStringLiteral("/api/advicenote"));
    post.setQuery(QStringLiteral("b=2&a=1"));
    const CurlResult posted = client.post(
        post, R"({"a":1})",
        gatewayHeaders("20240131T235959Z", "9e6808be94a2f36fc9f091ac7bf33854a5a19216a25173d3247f22fc48c7eb1a"));
    QCOMPARE(posted.status, 400L);
    QVERIFY(posted.object().value(QStringLiteral("message")).toString().startsWith(QStringLiteral("Missed mandatory fields")));

    QUrl get = m_gatewayEmulator->baseUrl();
    get.setPath(QStringLiteral("/api/cart/42"));
    const CurlResult got = client.get(
        get, gatewayHeaders("20240131T235959Z", "6d052e9d59d2a8b9504c19cb4599bcfcc613307d5bd5794a4dce05f48b7ec97a"));
    QCOMPARE(got.status, 404L);
    QCOMPARE(got.object().value(QStringLiteral("message")).toString(), QStringLiteral("Cart wasn't found"));
}

void TestEmulatorAuth::gatewayAcceptsSignatureComputedHere_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("query");
    QTest::addColumn<QByteArray>("canonicalQuery");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<long>("status");
    QTest::newRow("GET messages") << QByteArray("GET") << QStringLiteral("/api/messages/7") << QString()
                                  << QByteArray() << QByteArray() << 200L;
    QTest::newRow("POST messages, client's repeat") << QByteArray("POST") << QStringLiteral("/api/messages/7")
                                                    << QString() << QByteArray() << QByteArray("{}") << 200L;
    QTest::newRow("path with slash") << QByteArray("GET") << QStringLiteral("/api/payload/") << QString()
                                     << QByteArray() << QByteArray() << 404L;
    QTest::newRow("query out of order") << QByteArray("GET") << QStringLiteral("/api/messages/7")
                                        << QStringLiteral("z=1&a=x%20y") << QByteArray("a=x%20y&z=1")
                                        << QByteArray() << 200L;
    QTest::newRow("cart create") << QByteArray("POST") << QStringLiteral("/api/cart/create") << QString()
                                 << QByteArray() << QByteArray(R"({"storeNo":1,"tillNo":2})") << 200L;
}

void TestEmulatorAuth::gatewayAcceptsSignatureComputedHere()
{
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(QString, query);
    QFETCH(QByteArray, canonicalQuery);
    QFETCH(QByteArray, body);
    QFETCH(long, status);
    QUrl url = m_gatewayEmulator->baseUrl();
    url.setPath(path);
    url.setQuery(query);
    CurlClient client;
    const QByteArray date = "20240131T235959Z";
    const CurlResult result = client.send(method, url, body,
                                          gatewayHeaders(date, signature(method, path, canonicalQuery, date, body)));
    QCOMPARE(result.status, status);
}

void TestEmulatorAuth::gatewayRefusals_data()
{
    QTest::addColumn<QByteArrayList>("headers");
    QTest::addColumn<QString>("errorMessage");
    const QByteArray date = "20240131T235959Z";
    const QByteArray good = signature("GET", QStringLiteral("/api/messages/7"), QByteArray(), date, QByteArray());
    QTest::newRow("bad signature") << gatewayHeaders(date, QByteArray(good).replace(0, 2, "ff"))
                                   << QStringLiteral("verify signature failed");
    QTest::newRow("signed for another path")
        << gatewayHeaders(date, signature("GET", QStringLiteral("/api/messages/8"), QByteArray(), date, QByteArray()))
        << QStringLiteral("verify signature failed");
    QTest::newRow("unknown key") << gatewayHeaders(date, good, "stranger") << QStringLiteral("unknown access key");
    QTest::newRow("no authorization") << QByteArrayList{"x-sdk-date: " + date}
                                      << QStringLiteral("authorization header missing");
}

void TestEmulatorAuth::gatewayRefusals()
{
    QFETCH(QByteArrayList, headers);
    QFETCH(QString, errorMessage);
    QUrl url = m_gatewayEmulator->baseUrl();
    url.setPath(QStringLiteral("/api/messages/7"));
    CurlClient client;
    const CurlResult result = client.get(url, headers);
    QCOMPARE(result.status, 401L);
    QCOMPARE(result.object().value(QStringLiteral("error_msg")).toString(), errorMessage);
}

void TestEmulatorAuth::gatewayDateTolerance_data()
{
    QTest::addColumn<int>("signedSecondsAgo");
    QTest::addColumn<long>("status");
    QTest::newRow("14 minutes behind") << 14 * 60 << 200L;
    QTest::newRow("15 minutes behind") << 15 * 60 << 200L;
    QTest::newRow("16 minutes behind") << 16 * 60 << 401L;
    QTest::newRow("16 minutes ahead") << -16 * 60 << 401L;
}

void TestEmulatorAuth::gatewayDateTolerance()
{
    QFETCH(int, signedSecondsAgo);
    QFETCH(long, status);
    const QByteArray date = signingTime().addSecs(-signedSecondsAgo).toString(QStringLiteral("yyyyMMdd'T'HHmmss'Z'")).toLatin1();
    QUrl url = m_gatewayEmulator->baseUrl();
    url.setPath(QStringLiteral("/api/messages/7"));
    CurlClient client;
    const CurlResult result = client.get(
        url, gatewayHeaders(date, signature("GET", url.path(), QByteArray(), date, QByteArray())));
    QCOMPARE(result.status, status);
    if (status == 401) {
        QCOMPARE(result.object().value(QStringLiteral("error_msg")).toString(), QStringLiteral("signature expired"));
    }
}

void TestEmulatorAuth::gatewayIgnoresBearerToken()
{
    ServiceSession session(*m_gatewayEmulator);
    session.setToken(QStringLiteral("anything"));
    const CurlResult result = session.get(QStringLiteral("/messages/7"));
    QCOMPARE(result.status, 401L);
    QVERIFY(result.object().contains(QStringLiteral("error_msg")));
}

QTEST_GUILESS_MAIN(TestEmulatorAuth)
#include "tst_emulatorauth.moc"
