#include <contracts/cassettefile.h>

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace tessaro::contracts;

/// A cassette reads back as it was written; a file that is no cassette, or
/// one of a newer format, is refused with a message that says so.
class TestCassetteFile : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip();
    void refused_data();
    void refused();

private:
    QString file(const QByteArray &content);
    QTemporaryDir m_dir;
    int m_files = 0;
};

QString TestCassetteFile::file(const QByteArray &content)
{
    const QString path = m_dir.filePath(QStringLiteral("cassette%1.json").arg(++m_files));
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly) || out.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

void TestCassetteFile::roundTrip()
{
    Cassette cassette;
    cassette.pluginVersion = QStringLiteral("0.1.0");
    cassette.serviceUrl = QStringLiteral("http://127.0.0.1:8080/api");
    cassette.tokenUrl = QStringLiteral("http://127.0.0.1:8080/token");
    cassette.volatileFields = {QStringLiteral("*time")};
    CassetteExchange json;
    json.method = QStringLiteral("POST");
    json.path = QStringLiteral("/api/advicenote");
    json.requestHeaders = {{QStringLiteral("Content-Type"), QStringLiteral("application/json")}};
    json.requestBody = R"({"a":1,"b":[true,null]})";
    json.status = 200;
    json.responseBody = R"({"Key4":"0/0/1"})";
    json.durationMs = 12;
    json.action = QStringLiteral("close");
    CassetteExchange text = json;
    text.method = QStringLiteral("GET");
    text.path = QStringLiteral("/api/cart/1");
    text.query = QStringLiteral("x=%20y");
    text.requestBody = "grant_type=client_credentials";
    text.responseBody = "{ \"spaced\" : 1 }";
    text.status = 0;
    text.networkError = true;
    cassette.exchanges = {json, text};

    const QString path = m_dir.filePath(QStringLiteral("written.json"));
    QString error;
    QVERIFY2(CassetteFile::write(cassette, path, &error), qPrintable(error));
    const auto read = CassetteFile::read(path, &error);
    QVERIFY2(read, qPrintable(error));
    QCOMPARE(read->toJson(), cassette.toJson());
    // Bodies come back byte for byte, JSON or not, however they were spaced.
    QCOMPARE(read->exchanges.at(0).requestBody, json.requestBody);
    QCOMPARE(read->exchanges.at(1).requestBody, text.requestBody);
    QCOMPARE(read->exchanges.at(1).responseBody, text.responseBody);
    QVERIFY(read->exchanges.at(1).networkError);
}

void TestCassetteFile::refused_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("message");
    QTest::newRow("newer version") << QByteArray(R"({"cassetteVersion": 2, "exchanges": []})")
                                   << QStringLiteral("the cassette has format version 2; this program reads up to version 1");
    QTest::newRow("no version") << QByteArray(R"({"exchanges": []})") << QStringLiteral("\"cassetteVersion\" is missing");
    QTest::newRow("garbled") << QByteArray(R"({"cassetteVersion": 1, "exchanges": [)") << QStringLiteral("not a cassette");
    QTest::newRow("not an object") << QByteArray("[1]") << QStringLiteral("not a cassette: no JSON object");
    QTest::newRow("no exchanges") << QByteArray(R"({"cassetteVersion": 1})") << QStringLiteral("\"exchanges\" is missing");
    QTest::newRow("bad exchange") << QByteArray(R"({"cassetteVersion": 1, "exchanges": [{"request": {"method": "GET", "path": "x"}}]})")
                                  << QStringLiteral("exchange 1: an exchange needs request.method");
    QTest::newRow("bad headers")
        << QByteArray(R"({"cassetteVersion": 1, "exchanges": [{"request": {"method": "GET", "path": "/x", "headers": [["a"]]}, "answer": {"status": 200}}]})")
        << QStringLiteral("exchange 1: headers must be a list");
}

void TestCassetteFile::refused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, message);
    const QString path = file(content);
    QString error;
    QVERIFY(!CassetteFile::read(path, &error));
    QVERIFY2(error.startsWith(path + QStringLiteral(": ")), qPrintable(error));
    QVERIFY2(error.contains(message), qPrintable(error));
}

QTEST_GUILESS_MAIN(TestCassetteFile)
#include "tst_cassettefile.moc"
