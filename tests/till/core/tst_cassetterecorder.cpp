#include "cassetterecorder.h"

#include "support/scriptedhttpserver.h"

#include <contracts/cassettefile.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace till;
using tessaro::contracts::CassetteExchange;
using tessaro::contracts::CassetteFile;
using Answer = ScriptedHttpServer::Answer;

/// What a cassette keeps of an answer received over a real connection.
class TestCassetteRecorder : public QObject
{
    Q_OBJECT

private slots:
    void answerHeadersAreRecorded_data();
    void answerHeadersAreRecorded();
    void cookieLearntFromAnswerIsHiddenInRequests();
    void passwordInAnAddressIsNotRecorded();

private:
    /// GETs \a path from \a server with \a headers and records the exchange.
    static void exchange(ScriptedHttpServer *server, CassetteRecorder *recorder, const QString &path,
                         const RestClient::Headers &headers = {});
    static QByteArray written(const CassetteRecorder &recorder, const QTemporaryDir &dir);
};

void TestCassetteRecorder::exchange(ScriptedHttpServer *server, CassetteRecorder *recorder, const QString &path,
                                    const RestClient::Headers &headers)
{
    RestClient client;
    client.setTimeout(5000);
    const QUrl url = server->url(path);
    client.get(url, QJsonDocument(), headers);
    recorder->record(QStringLiteral("GET"), url, headers, QByteArray(), client.lastResponse(), 3, QStringLiteral("close"));
}

QByteArray TestCassetteRecorder::written(const CassetteRecorder &recorder, const QTemporaryDir &dir)
{
    const QString path = dir.filePath(QStringLiteral("cassette.json"));
    QString error;
    if (!recorder.write(path, &error))
        qFatal("%s", qPrintable(error));
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestCassetteRecorder::answerHeadersAreRecorded_data()
{
    QTest::addColumn<QByteArray>("cookie");
    QTest::addColumn<QString>("recorded");
    QTest::addColumn<QByteArray>("secret");
    QTest::newRow("session cookie") << QByteArray("session=Known-Cookie-Value-5b2e; Path=/; HttpOnly")
                                    << QStringLiteral("session=secret-placeholder-1; Path=/; HttpOnly")
                                    << QByteArray("Known-Cookie-Value-5b2e");
    // Too short for a placeholder, hidden all the same.
    QTest::newRow("short value") << QByteArray("id=k9z; Secure") << QStringLiteral("id=***; Secure") << QByteArray("k9z");
}

void TestCassetteRecorder::answerHeadersAreRecorded()
{
    QFETCH(QByteArray, cookie);
    QFETCH(QString, recorded);
    QFETCH(QByteArray, secret);
    ScriptedHttpServer server;
    QVERIFY(server.start());
    server.enqueue(Answer::reply(200, R"({"status":"ok"})",
                                 {{"Content-Type", "application/json; charset=utf-8"}, {"Set-Cookie", cookie}, {"X-Request-Id", "r-41"}}));
    CassetteRecorder recorder;
    exchange(&server, &recorder, QStringLiteral("/cart/7"));

    QTemporaryDir dir;
    const QByteArray bytes = written(recorder, dir);
    for (const QByteArray &form : {secret, secret.toBase64(), QUrl::toPercentEncoding(QString::fromUtf8(secret))})
        QVERIFY2(!bytes.contains(form), bytes.constData());

    QString error;
    const auto cassette = CassetteFile::read(dir.filePath(QStringLiteral("cassette.json")), &error);
    QVERIFY2(cassette, qPrintable(error));
    const CassetteExchange::Headers headers = cassette->exchanges.at(0).responseHeaders;
    QCOMPARE(CassetteExchange::header(headers, QStringLiteral("Content-Type")), QStringLiteral("application/json; charset=utf-8"));
    QCOMPARE(CassetteExchange::header(headers, QStringLiteral("X-Request-Id")), QStringLiteral("r-41"));
    QCOMPARE(CassetteExchange::header(headers, QStringLiteral("Set-Cookie")), recorded);
}

void TestCassetteRecorder::cookieLearntFromAnswerIsHiddenInRequests()
{
    ScriptedHttpServer server;
    QVERIFY(server.start());
    server.enqueue(Answer::reply(200, "{}", {{"Set-Cookie", "session=Known-Cookie-Value-77aa"}}));
    server.enqueue(Answer::reply(200, "{}"));
    CassetteRecorder recorder;
    exchange(&server, &recorder, QStringLiteral("/till/open"));
    exchange(&server, &recorder, QStringLiteral("/cart/7"),
             {{QStringLiteral("Cookie"), QStringLiteral("session=Known-Cookie-Value-77aa")}});

    const auto exchanges = recorder.cassette().exchanges;
    QCOMPARE(CassetteExchange::header(exchanges.at(1).requestHeaders, QStringLiteral("Cookie")),
             QStringLiteral("session=secret-placeholder-1"));
    QTemporaryDir dir;
    QVERIFY(!written(recorder, dir).contains("Known-Cookie-Value-77aa"));
}

// A service or token address may carry credentials of its own.
void TestCassetteRecorder::passwordInAnAddressIsNotRecorded()
{
    const QByteArray password("Known-Url-Password-41d0");
    CassetteRecorder recorder;
    recorder.setAddresses(QStringLiteral("http://till:%1@127.0.0.1:8080/api").arg(QString::fromLatin1(password)),
                          QStringLiteral("https://till:%1@127.0.0.1:8443/token").arg(QString::fromLatin1(password)));
    QTemporaryDir dir;
    const QByteArray cassette = written(recorder, dir);
    QVERIFY2(!cassette.contains(password), cassette.constData());
    QVERIFY2(cassette.contains("127.0.0.1:8080/api"), cassette.constData());
}

QTEST_GUILESS_MAIN(TestCassetteRecorder)
#include "tst_cassetterecorder.moc"
