#include <contracts/contractcomparer.h>

#include <QTest>

using namespace tessaro::contracts;

/// Answers are compared by contract: status, keys, types, arrays empty or
/// not, values unless the rules let them vary.
class TestContractComparer : public QObject
{
    Q_OBJECT

private slots:
    void compare_data();
    void compare();
    void compareHeaders_data();
    void compareHeaders();
};

namespace {

const QByteArray recordedAnswer = R"({"Key4":"0/0/12/1","invoiceID":"0012000001","uuid":"ba02f7df-9259-4842-97c4-f0f2ef325024",)"
                                  R"("items":[{"qty":1}],"token":"secret-placeholder-2","notes":[]})";

} // namespace

void TestContractComparer::compare_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("vary");
    QTest::addColumn<QStringList>("differences");
    const QStringList none;
    QTest::newRow("same, keys reordered, spaced") << 200 << QByteArray(R"({ "notes": [], "uuid": "ba02f7df-9259-4842-97c4-f0f2ef325024",)"
                                                                         R"( "token": "abc", "items": [ {"qty": 1} ], "invoiceID": "0012000001", "Key4": "0/0/12/1" })")
                                                  << none << none;
    QTest::newRow("status") << 500 << recordedAnswer << none << QStringList{QStringLiteral("status: 200 → 500")};
    QTest::newRow("key dropped") << 200
                                 << QByteArray(R"({"invoiceID":"0012000001","uuid":"ba02f7df-9259-4842-97c4-f0f2ef325024","items":[{"qty":1}],"token":"x","notes":[]})")
                                 << none << QStringList{QStringLiteral("Key4: missing")};
    QTest::newRow("type changed") << 200
                                  << QByteArray(R"({"Key4":"0/0/12/1","invoiceID":12000001,"uuid":"ba02f7df-9259-4842-97c4-f0f2ef325024","items":[{"qty":1}],"token":"x","notes":[]})")
                                  << none << QStringList{QStringLiteral("invoiceID: type string → number")};
    QTest::newRow("nested type, new key, array filled")
        << 200
        << QByteArray(R"({"Key4":"0/0/12/1","invoiceID":"0012000001","uuid":"ba02f7df-9259-4842-97c4-f0f2ef325024","items":[{"qty":"1"}],"token":"x","notes":[1],"extra":true})")
        << none
        << QStringList{QStringLiteral("items[0].qty: type number → string"), QStringLiteral("notes: empty → not empty"), QStringLiteral("extra: new")};
    const QByteArray newUuid = QByteArray(recordedAnswer).replace("ba02f7df", "0000aaaa");
    QTest::newRow("uuid changed") << 200 << newUuid << none
                                  << QStringList{QStringLiteral("uuid: value \"ba02f7df-9259-4842-97c4-f0f2ef325024\" → \"0000aaaa-9259-4842-97c4-f0f2ef325024\"")};
    QTest::newRow("uuid changed, rules let it vary") << 200 << newUuid << QStringList{QStringLiteral("*uuid")} << none;
    QTest::newRow("not JSON any more") << 200 << QByteArray("<html>") << none << QStringList{QStringLiteral("body: JSON → not JSON")};
}

void TestContractComparer::compare()
{
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QStringList, vary);
    QFETCH(QStringList, differences);
    const ContractComparer comparer(DriftRules(vary, {}));
    QStringList found;
    for (const ContractComparer::Difference &difference : comparer.compare(200, recordedAnswer, status, body))
        found << difference.path + QStringLiteral(": ") + difference.text;
    QCOMPARE(found, differences);
}

void TestContractComparer::compareHeaders_data()
{
    using Headers = CassetteExchange::Headers;
    QTest::addColumn<Headers>("recorded");
    QTest::addColumn<Headers>("received");
    QTest::addColumn<QStringList>("differences");
    const QString type = QStringLiteral("Content-Type");
    const Headers json{{type, QStringLiteral("application/json; charset=utf-8")}, {QStringLiteral("X-Request-Id"), QStringLiteral("r-1")}};
    QTest::newRow("parameters and case differ, other headers too")
        << json << Headers{{QStringLiteral("content-type"), QStringLiteral("Application/JSON")}, {QStringLiteral("X-Request-Id"), QStringLiteral("r-2")}}
        << QStringList();
    QTest::newRow("media type changed") << json << Headers{{type, QStringLiteral("text/html; charset=iso-8859-1")}}
                                        << QStringList{QStringLiteral("header content-type: application/json → text/html")};
    QTest::newRow("none any more") << json << Headers() << QStringList{QStringLiteral("header content-type: application/json → none")};
    // A cassette recorded without the answer's headers says nothing of them.
    QTest::newRow("none recorded") << Headers() << Headers{{type, QStringLiteral("text/html")}} << QStringList();
}

void TestContractComparer::compareHeaders()
{
    QFETCH(CassetteExchange::Headers, recorded);
    QFETCH(CassetteExchange::Headers, received);
    QFETCH(QStringList, differences);
    QStringList found;
    for (const ContractComparer::Difference &difference : ContractComparer().compareHeaders(recorded, received))
        found << difference.path + QStringLiteral(": ") + difference.text;
    QCOMPARE(found, differences);
}

QTEST_GUILESS_MAIN(TestContractComparer)
#include "tst_contractcomparer.moc"
