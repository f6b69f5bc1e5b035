#include "client/gate.h"
#include "client/gaterequest.h"

#include <testing/testhost.h>

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTest>

namespace {

using Headers = QHash<QString, QString>;

const QString vectorsDir = QStringLiteral(TESSARO_GATE_VECTORS);

// The text of a vector file without the line feed that ends the file.
QString readText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    QString text = QString::fromUtf8(file.readAll());
    if (text.endsWith(QLatin1Char('\n')))
        text.chop(1);
    return text;
}

// request.txt: "VERB URL", the caller's headers, an empty line, the body.
struct VectorRequest
{
    bool get = false;
    QUrl url;
    Headers headers;
    QByteArray body;
};

VectorRequest readRequest(const QString &path)
{
    const QStringList lines = readText(path).split(QLatin1Char('\n'));
    VectorRequest request;
    const QStringList first = lines.first().split(QLatin1Char(' '));
    request.get = first.at(0) == QLatin1String("GET");
    request.url = QUrl(first.at(1));
    int line = 1;
    for (; !lines.at(line).isEmpty(); ++line) {
        const qsizetype colon = lines.at(line).indexOf(QLatin1String(": "));
        request.headers.insert(lines.at(line).left(colon), lines.at(line).mid(colon + 2));
    }
    request.body = lines.mid(line + 1).join(QLatin1Char('\n')).toUtf8();
    return request;
}

QDateTime readTime(const QString &path)
{
    return QDateTime::fromString(readText(path), Qt::ISODate);
}

const QString gateConfig = QStringLiteral("[OrvelGate]\nappKey=key-1\nappSecret=secret-1\nxStage=Test\n");
const QUrl cartUrl(QStringLiteral("https://gate.example.com/api/cart/42"));
const Headers jsonHeaders{{QStringLiteral("Content-Type"), QStringLiteral("application/json")}};

orvel::GateRequest gateRequest(const QUrl &url, bool get, const QByteArray &body = QByteArrayLiteral("{}"))
{
    return orvel::GateRequest(url, body, jsonHeaders, get, QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC),
                              QStringLiteral("Test"));
}

} // namespace

class TestGate : public QObject
{
    Q_OBJECT

private slots:
    void signatureVectors_data();
    void signatureVectors();

    void emptySettingLeavesHeadersUnchanged_data();
    void emptySettingLeavesHeadersUnchanged();
    void stageDefaultsToPreProd();
    void settingsAreReadOnEveryCall();
    void timeComesFromHostClockInUtc();
    void apiKeyIsSignedOnlyWhenCallerSendsOne();
    void secretNeverReachesTheLog();

    // The edge cases of request signing, one each.
    void getAndPostDifferInVerbAndPayloadHash();
    void pathEndingInSlashGetsNoSecondOne();
    void emptyAppSecretLeavesHeadersUnchanged();
    void callerContentTypeIsSentButNotSigned();
    void queryItemsAreSignedSortedAndEncoded();
};

void TestGate::signatureVectors_data()
{
    QTest::addColumn<QString>("dir");
    const QStringList cases = QDir(vectorsDir).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    QVERIFY(cases.size() >= 8);
    for (const QString &name : cases)
        QTest::newRow(qPrintable(name)) << QDir(vectorsDir).filePath(name);
}

void TestGate::signatureVectors()
{
    QFETCH(QString, dir);
    const QDir folder(dir);
    const VectorRequest input = readRequest(folder.filePath(QStringLiteral("request.txt")));
    const QDateTime time = readTime(folder.filePath(QStringLiteral("time.txt")));
    QVERIFY(time.isValid());

    TestHost host(readText(QDir(vectorsDir).filePath(QStringLiteral("settings.ini"))));
    host.clock()->setNow(time);

    const orvel::GateRequest request(input.url, input.body, input.headers, input.get, time, QStringLiteral("Prod"));
    QCOMPARE(request.canonicalRequest(), readText(folder.filePath(QStringLiteral("canonical.txt"))));
    QCOMPARE(request.stringToSign(), readText(folder.filePath(QStringLiteral("stringtosign.txt"))));
    QCOMPARE(request.signature(QStringLiteral("Vz9-kq.секрет")), readText(folder.filePath(QStringLiteral("signature.txt"))));

    const Headers sent = orvel::getGateHeaders(input.url, input.body, input.headers, input.get);
    QCOMPARE(sent.value(QStringLiteral("Authorization")), readText(folder.filePath(QStringLiteral("authorization.txt"))));
    for (auto it = input.headers.cbegin(); it != input.headers.cend(); ++it)
        QCOMPARE(sent.value(it.key()), it.value());
    QCOMPARE(sent.value(QStringLiteral("host")), input.url.host());
    QCOMPARE(sent.value(QStringLiteral("x-sdk-date")), request.timestamp());
    QCOMPARE(sent.value(QStringLiteral("x-stage")), QStringLiteral("Prod"));
    QCOMPARE(sent.value(QStringLiteral("env")), QStringLiteral("Prod"));
    QStringList names = input.headers.keys() + request.signedHeaders().keys() + QStringList{QStringLiteral("Authorization")};
    names.removeDuplicates();
    QCOMPARE(sent.size(), names.size());
}

void TestGate::emptySettingLeavesHeadersUnchanged_data()
{
    QTest::addColumn<QString>("config");
    QTest::newRow("nothing configured") << QString();
    QTest::newRow("switch only") << QStringLiteral("[OrvelGate]\ntessaro=true\n");
    QTest::newRow("app key empty") << QStringLiteral("[OrvelGate]\nappKey=\nappSecret=s\nxStage=Prod\n");
    QTest::newRow("app secret missing") << QStringLiteral("[OrvelGate]\nappKey=k\nxStage=Prod\n");
    QTest::newRow("stage empty") << QStringLiteral("[OrvelGate]\nappKey=k\nappSecret=s\nxStage=\n");
}

void TestGate::emptySettingLeavesHeadersUnchanged()
{
    QFETCH(QString, config);
    TestHost host(config);
    const Headers headers{{QStringLiteral("Content-Type"), QStringLiteral("application/json")},
                          {QStringLiteral("X-Request-ID"), QStringLiteral("r-1")}};
    QCOMPARE(orvel::getGateHeaders(cartUrl, "{}", headers, false), headers);
    QCOMPARE(orvel::getGateHeaders(cartUrl, "{}", Headers(), true), Headers());
}

void TestGate::stageDefaultsToPreProd()
{
    TestHost host(QStringLiteral("[OrvelGate]\nappKey=k\nappSecret=s\n"));
    const Headers sent = orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false);
    QCOMPARE(sent.value(QStringLiteral("x-stage")), QStringLiteral("PreProd"));
    QCOMPARE(sent.value(QStringLiteral("env")), QStringLiteral("PreProd"));
    QVERIFY(sent.value(QStringLiteral("Authorization")).startsWith(QLatin1String("SDK-HMAC-SHA256 Access=k, ")));
}

void TestGate::settingsAreReadOnEveryCall()
{
    TestHost host(gateConfig);
    const QString first = orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false).value(QStringLiteral("Authorization"));
    // A text of another length: QSettings takes a file rewritten within the same
    // second and of the same size for unchanged.
    host.setConfig(QStringLiteral("[OrvelGate]\nappKey=key-second\nappSecret=secret-second\nxStage=Test\n"));
    const QString second = orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false).value(QStringLiteral("Authorization"));
    QVERIFY(second.startsWith(QLatin1String("SDK-HMAC-SHA256 Access=key-second, ")));
    QVERIFY(first.section(QLatin1String("Signature="), 1) != second.section(QLatin1String("Signature="), 1));
    host.setConfig(QString());
    QCOMPARE(orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false), jsonHeaders);
}

void TestGate::timeComesFromHostClockInUtc()
{
    TestHost host(gateConfig);
    host.clock()->setNow(QDateTime(QDate(2024, 7, 1), QTime(1, 2, 3), Qt::OffsetFromUTC, 5 * 3600));
    QCOMPARE(orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false).value(QStringLiteral("x-sdk-date")),
             QStringLiteral("20240630T200203Z"));
    host.clock()->advance(3600 * 15);
    QCOMPARE(orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false).value(QStringLiteral("x-sdk-date")),
             QStringLiteral("20240701T110203Z"));
}

void TestGate::apiKeyIsSignedOnlyWhenCallerSendsOne()
{
    const auto time = QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC);
    const orvel::GateRequest without(cartUrl, "{}", jsonHeaders, false, time, QStringLiteral("Test"));
    QVERIFY(!without.signedHeaders().contains(QStringLiteral("x-api-key")));
    const orvel::GateRequest emptyKey(cartUrl, "{}", {{QStringLiteral("x-api-key"), QString()}}, false, time,
                                      QStringLiteral("Test"));
    QCOMPARE(emptyKey.signedHeaderNames(), QStringLiteral("env;host;x-api-key;x-sdk-date;x-stage"));
    QVERIFY(emptyKey.canonicalRequest().contains(QLatin1String("\nx-api-key:\n")));
    // Only the lower-case name is the gateway's key header.
    const orvel::GateRequest otherCase(cartUrl, "{}", {{QStringLiteral("X-Api-Key"), QStringLiteral("k")}}, false, time,
                                       QStringLiteral("Test"));
    QVERIFY(!otherCase.signedHeaders().contains(QStringLiteral("x-api-key")));
}

namespace {
QString capturedLog;
void captureMessage(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    capturedLog += QString::fromLatin1(context.category) + QLatin1Char(' ') + message + QLatin1Char('\n');
}
} // namespace

void TestGate::secretNeverReachesTheLog()
{
    TestHost host(gateConfig);
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=true"));
    capturedLog.clear();
    const QtMessageHandler previous = qInstallMessageHandler(captureMessage);
    const Headers sent = orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, false);
    orvel::getGateHeaders(cartUrl, "{}", jsonHeaders, true);
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(sent.contains(QStringLiteral("Authorization")));
    QVERIFY2(!capturedLog.contains(QLatin1String("secret-1")), qPrintable(capturedLog));
    QVERIFY2(!capturedLog.contains(sent.value(QStringLiteral("Authorization"))), qPrintable(capturedLog));
}

void TestGate::getAndPostDifferInVerbAndPayloadHash()
{
    const QStringList get = gateRequest(cartUrl, true).canonicalRequest().split(QLatin1Char('\n'));
    const QStringList post = gateRequest(cartUrl, false).canonicalRequest().split(QLatin1Char('\n'));
    QCOMPARE(get.size(), post.size());
    QCOMPARE(get.first(), QStringLiteral("GET"));
    QCOMPARE(post.first(), QStringLiteral("POST"));
    // SHA-256 of the empty string and of the text {}.
    QCOMPARE(get.last(), QStringLiteral("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
    QCOMPARE(post.last(), QStringLiteral("44136fa355b3678a1146ad16f7e8649e94fb4fc21fe77e8310c060f61caaff8a"));
    QCOMPARE(get.mid(1, get.size() - 2), post.mid(1, post.size() - 2));
}

void TestGate::pathEndingInSlashGetsNoSecondOne()
{
    const auto pathLine = [](const char *url) {
        return gateRequest(QUrl(QString::fromLatin1(url)), false).canonicalRequest().section(QLatin1Char('\n'), 1, 1);
    };
    QCOMPARE(pathLine("https://gate.example.com/api/till/open/"), QStringLiteral("/api/till/open/"));
    QCOMPARE(pathLine("https://gate.example.com/api/till/open"), QStringLiteral("/api/till/open/"));
    QCOMPARE(pathLine("https://gate.example.com/"), QStringLiteral("/"));
    QCOMPARE(pathLine("https://gate.example.com"), QStringLiteral("/"));
}

void TestGate::emptyAppSecretLeavesHeadersUnchanged()
{
    TestHost host(QStringLiteral("[OrvelGate]\ntessaro=true\nappKey=key-1\nappSecret=\nxStage=Test\n"));
    const Headers headers{{QStringLiteral("Content-Type"), QStringLiteral("application/json")},
                          {QStringLiteral("Authorization"), QStringLiteral("Bearer t")}};
    QCOMPARE(orvel::getGateHeaders(cartUrl, "{}", headers, false), headers);
}

void TestGate::callerContentTypeIsSentButNotSigned()
{
    TestHost host(gateConfig);
    const Headers callers{{QStringLiteral("Content-Type"), QStringLiteral("application/json")},
                          {QStringLiteral("X-Request-ID"), QStringLiteral("r-7")}};
    const Headers sent = orvel::getGateHeaders(cartUrl, "{}", callers, false);
    QCOMPARE(sent.value(QStringLiteral("Content-Type")), QStringLiteral("application/json"));
    QCOMPARE(sent.value(QStringLiteral("X-Request-ID")), QStringLiteral("r-7"));
    QVERIFY(sent.value(QStringLiteral("Authorization")).contains(QLatin1String(", SignedHeaders=env;host;x-sdk-date;x-stage, ")));
    const QString canonical = gateRequest(cartUrl, false).canonicalRequest().toLower();
    QVERIFY(!canonical.contains(QLatin1String("content-type")));
    QVERIFY(!canonical.contains(QLatin1String("x-request-id")));
}

void TestGate::queryItemsAreSignedSortedAndEncoded()
{
    const auto queryLine = [](const char *url) {
        return gateRequest(QUrl(QString::fromUtf8(url)), true).canonicalRequest().section(QLatin1Char('\n'), 2, 2);
    };
    const QString expected = QStringLiteral("a=1&a=2&b=%D1%8F%20x&c=%2B%2F%3A");
    QCOMPARE(queryLine("https://gate.example.com/p?c=%2B%2F%3A&b=я x&a=2&a=1"), expected);
    QCOMPARE(queryLine("https://gate.example.com/p?a=1&c=%2B%2F%3A&a=2&b=%D1%8F%20x"), expected);
    QCOMPARE(queryLine("https://gate.example.com/p"), QString());

    // The same items in another order give the same signature.
    TestHost host(gateConfig);
    const auto signature = [](const char *url) {
        return orvel::getGateHeaders(QUrl(QString::fromUtf8(url)), "{}", jsonHeaders, true).value(QStringLiteral("Authorization"));
    };
    QCOMPARE(signature("https://gate.example.com/p?x=1&y=2"), signature("https://gate.example.com/p?y=2&x=1"));
    QVERIFY(signature("https://gate.example.com/p?x=1&y=2") != signature("https://gate.example.com/p?x=2&y=1"));
}

QTEST_GUILESS_MAIN(TestGate)
#include "tst_gate.moc"
