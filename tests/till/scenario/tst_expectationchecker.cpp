#include "expectationchecker.h"
#include "scenarioparser.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace till;

class TestExpectationChecker : public QObject
{
    Q_OBJECT

private slots:
    void matchesValues_data();
    void matchesValues();
    void checksAnAction();
    void checksDocumentsAndTheShift();
};

void TestExpectationChecker::matchesValues_data()
{
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<QByteArray>("found");
    QTest::addColumn<QString>("mismatch");
    QTest::newRow("equal strings") << QByteArray(R"("123456")") << QByteArray(R"("123456")") << QString();
    QTest::newRow("other string") << QByteArray(R"("1")") << QByteArray(R"("2")") << QStringLiteral("expected \"1\", found \"2\"");
    QTest::newRow("number as string") << QByteArray("2") << QByteArray(R"("2")") << QStringLiteral("expected 2, found \"2\"");
    QTest::newRow("close numbers") << QByteArray("0.3") << QByteArray("0.30000000001") << QString();
    QTest::newRow("far numbers") << QByteArray("0.3") << QByteArray("0.31") << QStringLiteral("expected 0.3, found 0.31");
    QTest::newRow("missing") << QByteArray("1") << QByteArray() << QStringLiteral("expected 1, found nothing");
    QTest::newRow("present") << QByteArray(R"({"$present": true})") << QByteArray(R"("x")") << QString();
    QTest::newRow("present but missing") << QByteArray(R"({"$present": true})") << QByteArray() << QStringLiteral("expected a value, found nothing");
    QTest::newRow("absent") << QByteArray(R"({"$present": false})") << QByteArray() << QString();
    QTest::newRow("absent but there") << QByteArray(R"({"$present": false})") << QByteArray("7") << QStringLiteral("expected nothing, found 7");
    QTest::newRow("matches") << QByteArray(R"({"$matches": "^0/0/0012/"})") << QByteArray(R"("0/0/0012/000345")") << QString();
    QTest::newRow("does not match") << QByteArray(R"({"$matches": "^1"})") << QByteArray(R"("2")") << QStringLiteral("expected a match of ^1, found \"2\"");
    QTest::newRow("object by its keys") << QByteArray(R"({"cashCode": "12"})") << QByteArray(R"({"cashCode": "12", "invoiceNumber": "345"})") << QString();
    QTest::newRow("object key differs") << QByteArray(R"({"cashCode": "12"})") << QByteArray(R"({"cashCode": "13"})") << QStringLiteral("cashCode: expected \"12\", found \"13\"");
    QTest::newRow("array") << QByteArray("[1, 2]") << QByteArray("[1, 2]") << QString();
    QTest::newRow("shorter array") << QByteArray("[1, 2]") << QByteArray("[1]") << QStringLiteral("expected [1,2], found [1]");
}

void TestExpectationChecker::matchesValues()
{
    QFETCH(QByteArray, expected);
    QFETCH(QByteArray, found);
    QFETCH(QString, mismatch);
    const auto value = [](const QByteArray &json) {
        return json.isEmpty() ? QJsonValue(QJsonValue::Undefined) : QJsonDocument::fromJson("[" + json + "]").array().first();
    };
    QCOMPARE(ExpectationChecker::mismatch(value(expected), value(found)), mismatch);
}

void TestExpectationChecker::checksAnAction()
{
    Expectation expectation;
    expectation.result = 0;
    expectation.dialogs = QStringList{QStringLiteral("tessaroConflictPayment")};
    expectation.requests.insert(QStringLiteral("/advicenote"), 1);
    Observation observation;
    observation.result = 2;
    observation.requestPaths = {QStringLiteral("/api/advicenote"), QStringLiteral("/api/advicenote"), QStringLiteral("/api/till/open")};
    QCOMPARE(ExpectationChecker::check(expectation, observation),
             (QStringList{QStringLiteral("result: expected 0, found 2"),
                          QStringLiteral("dialogs: expected [tessaroConflictPayment], found []"),
                          QStringLiteral("requests: /advicenote: expected 1, found 2")}));
    observation.result = 0;
    observation.dialogIds = {QStringLiteral("tessaroConflictPayment")};
    observation.requestPaths.removeFirst();
    QCOMPARE(ExpectationChecker::check(expectation, observation), QStringList());
}

void TestExpectationChecker::checksDocumentsAndTheShift()
{
    ScenarioParser parser;
    const auto scenario = parser.parse(R"({"name": "n", "documents": {"r": {"type": 2}}, "actions": [{"type": "close"}], "expect": {
        "documents": {"r": {"closed": true, "payments": 1, "positionCount": 1, "commonReason": 2,
                            "pluginData": {"invoiceID": "123456"}, "properties": {"originalInvoiceID": {"$present": true}},
                            "positions": [{"posnum": 1, "quantity": 2, "data": {"tessaro": {"backReason": 3}}}, {"posnum": 2}]}},
        "storage": {"tillOpen": {"status": "opened"}}, "paymentTotals": {"1": 10}}})");
    QVERIFY2(scenario, qPrintable(parser.error().toString()));
    Observation observation;
    observation.documents.insert(QStringLiteral("r"), QJsonDocument::fromJson(R"({
        "closed": false, "payments": [], "commonReason": 2, "pluginData": {"invoiceID": "123456"}, "properties": {},
        "positions": [{"posnum": 1, "quantity": 2, "data": {"tessaro": {"backReason": 4}}}]})").object());
    observation.storage.insert(QStringLiteral("tillOpen"), QJsonObject{{QStringLiteral("status"), QStringLiteral("opened")}});
    observation.paymentTotals.insert(1, 10.0);
    QCOMPARE(ExpectationChecker::check(scenario->expect, observation),
             (QStringList{QStringLiteral("documents.r.properties.originalInvoiceID: expected a value, found nothing"),
                          QStringLiteral("documents.r.closed: expected closed"),
                          QStringLiteral("documents.r.payments: expected 1, found 0"),
                          QStringLiteral("documents.r.positions[posnum 1].data.tessaro.backReason: expected 3, found 4"),
                          QStringLiteral("documents.r.positions[posnum 2]: there is no such position")}));
    observation.documents.clear();
    QCOMPARE(ExpectationChecker::check(scenario->expect, observation), QStringList{QStringLiteral("documents.r: there is no such document")});
}

QTEST_GUILESS_MAIN(TestExpectationChecker)
#include "tst_expectationchecker.moc"
