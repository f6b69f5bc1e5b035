#include "scenarioparser.h"

#include <QTest>

using namespace till;

class TestScenarioParser : public QObject
{
    Q_OBJECT

private slots:
    void readsEveryPart();
    void readsAnswersOfEachKind();
    void refusesBadFiles_data();
    void refusesBadFiles();
    void placesSyntaxErrorsByLineAndColumn_data();
    void placesSyntaxErrorsByLineAndColumn();
    void readsTheTillDescriptionAlone();
    void reportsAFileThatCannotBeRead();
    void readsTheBundledScenarios();
};

void TestScenarioParser::readsEveryPart()
{
    const QByteArray json = R"({
        "name": "Return",
        "description": "a plain return",
        "till": {"store": "7", "till": 12, "shift": 3, "cashier": {"id": 5, "code": "1005", "name": "Иванова"},
                 "config": {"Tessaro:url": "http://127.0.0.1:9", "OrvelGate:tessaro": false, "Tessaro.ForbiddenMixedValuts:1": "2,3"},
                 "backReasons": [{"code": 1, "name": "Брак"}, {"kind": 4, "code": 2, "name": "Размер"}],
                 "currencies": [{"code": 1, "name": "Наличные"}],
                 "fiscal": {"registrationNumber": "123", "driveSerial": "99"}},
        "documents": {
            "r1": {"type": "return", "card": "2770001", "commonReason": 2, "positions": [
                {"code": "100", "quantity": 2, "price": 10.5, "fractional": true, "vatCodes": [1], "data": {"tessaro": {"backReason": 3}}}],
                "payments": [{"code": 1, "amount": 21, "details": {"cardNum": "4111"}}],
                "impacts": [[{"discountMode": 1, "discountSum": 0.5}]]},
            "s1": {"type": 25, "saleIdentifier": "000701022024000012000345", "saleDate": "2024-02-01"}
        },
        "answers": [{"choice": 1}],
        "actions": [
            {"type": "bind", "document": "r1", "note": "open"},
            {"type": "backBySale", "document": "s1"},
            {"type": "add", "position": {"code": "200"}, "quantity": 2, "price": 5},
            {"type": "reason", "target": "position", "position": 1, "expect": {"result": 2, "dialogs": ["a"], "requests": {"/advicenote": 1}}},
            {"type": "reason", "target": "document"},
            {"type": "pay", "code": 2, "amount": 10, "change": true, "details": {"rrn": "1"}},
            {"type": "card", "number": 2770001},
            {"type": "stornoAll"}, {"type": "close", "expect": {"document": {"closed": true, "pluginData": {"invoiceID": {"$present": true}},
                "positions": [{"posnum": 1, "price": 10.5, "data": {"tessaro": {"backReason": 3}}}]}}},
            {"type": "restart"}
        ],
        "expect": {"documents": {"r1": {"properties": {"x": {"$matches": "^1"}}}}, "storage": {"tillOpen": {"$present": true}},
                   "paymentTotals": {"1": 21}}
    })";
    ScenarioParser parser(QStringLiteral("s.json"));
    const std::optional<Scenario> scenario = parser.parse(json);
    QVERIFY2(scenario, qPrintable(parser.error().toString()));
    QCOMPARE(scenario->name, QStringLiteral("Return"));
    QCOMPARE(scenario->till.till, QStringLiteral("12"));
    QCOMPARE(scenario->till.shift, 3);
    QCOMPARE(scenario->till.cashierName, QStringLiteral("Иванова"));
    QCOMPARE(scenario->till.config.value(QStringLiteral("OrvelGate:tessaro")), QStringLiteral("false"));
    QCOMPARE(scenario->till.config.value(QStringLiteral("Tessaro.ForbiddenMixedValuts:1")), QStringLiteral("2,3"));
    QCOMPARE(scenario->till.backReasons->size(), 2);
    QCOMPARE(scenario->till.backReasons->at(0).kind, 2);
    QCOMPARE(scenario->till.backReasons->at(1).kind, 4);
    QCOMPARE(scenario->till.fiscalRegistrationNumber, 123);
    QCOMPARE(scenario->documents.size(), 2);
    const DocumentSpec *r1 = scenario->document(QStringLiteral("r1"));
    QVERIFY(r1);
    QCOMPARE(r1->type, 2);
    QCOMPARE(r1->commonReason, QVariant(2));
    QCOMPARE(r1->positions.first().quantity, 2.0);
    QVERIFY(r1->positions.first().fractional);
    QCOMPARE(r1->positions.first().data.value(QStringLiteral("tessaro")).value(QStringLiteral("backReason")).toInt(), 3);
    QCOMPARE(r1->payments.first().details.value(QStringLiteral("cardNum")), QVariant(QStringLiteral("4111")));
    QCOMPARE(r1->impacts.first().totals.first(), qMakePair(1, 0.5));
    QCOMPARE(scenario->document(QStringLiteral("s1"))->saleDate, QDate(2024, 2, 1));
    QCOMPARE(scenario->actions.size(), 10);
    QCOMPARE(scenario->actions.at(0).note, QStringLiteral("open"));
    QVERIFY(!scenario->actions.at(1).orvel); // a sale identifier is given
    QCOMPARE(scenario->actions.at(2).quantity, 2.0);
    QCOMPARE(scenario->actions.at(3).positionNumber, 1);
    QCOMPARE(scenario->actions.at(3).expect.result, 2);
    QCOMPARE(scenario->actions.at(3).expect.requests.value(QStringLiteral("/advicenote")), 1);
    QVERIFY(scenario->actions.at(4).reasonForDocument);
    QVERIFY(scenario->actions.at(5).payment.change);
    QCOMPARE(scenario->actions.at(6).number, QStringLiteral("2770001"));
    QCOMPARE(scenario->actions.at(8).expect.document->closed, true);
    QCOMPARE(scenario->actions.at(8).expect.document->positions.first().fields.value(QStringLiteral("price")).toDouble(), 10.5);
    QCOMPARE(scenario->actions.at(9).type, ScenarioAction::Restart);
    QCOMPARE(scenario->actions.at(9).path, QStringLiteral("actions[9]"));
    QCOMPARE(scenario->expect.paymentTotals.value(1), 21.0);
    QVERIFY(scenario->expect.storage.contains(QStringLiteral("tillOpen")));
}

void TestScenarioParser::readsAnswersOfEachKind()
{
    const QByteArray json = R"({"name": "n", "actions": [{"type": "input"}], "answers": [
        {"choice": 0}, {"choice": "Брак"}, {"choice": null},
        {"form": {"cashCode": 12, "invoiceDate": "01.02.2024"}}, {"form": null},
        {"quantity": 2.5}, {"price": null}]})";
    ScenarioParser parser;
    const std::optional<Scenario> scenario = parser.parse(json);
    QVERIFY2(scenario, qPrintable(parser.error().toString()));
    const QList<CashierAnswer> &answers = scenario->answers;
    QCOMPARE(answers.size(), 7);
    QCOMPARE(answers.at(0).index, 0);
    QCOMPARE(answers.at(1).item, QStringLiteral("Брак"));
    QVERIFY(answers.at(2).cancel);
    QCOMPARE(answers.at(3).kind, CashierAnswer::Form);
    QCOMPARE(answers.at(3).fields.value(QStringLiteral("cashCode")), QVariant(QStringLiteral("12")));
    QVERIFY(answers.at(4).cancel);
    QCOMPARE(answers.at(5).number, 2.5);
    QCOMPARE(answers.at(6).kind, CashierAnswer::Price);
    QVERIFY(answers.at(6).cancel);
    QCOMPARE(answers.at(6).path, QStringLiteral("answers[6]"));
}

void TestScenarioParser::refusesBadFiles_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("message");

    const QByteArray actions = R"("actions": [{"type": "close"}])";
    QTest::newRow("not an object") << QByteArray("[1]") << QStringLiteral("bad.json: a scenario is a JSON object");
    QTest::newRow("no name") << QByteArray("{" + actions + "}") << QStringLiteral("bad.json: missing key \"name\"");
    QTest::newRow("name not a string") << QByteArray(R"({"name": 1, )" + actions + "}")
                                       << QStringLiteral("bad.json: name: expected a string, found a number");
    QTest::newRow("unknown top key") << QByteArray(R"({"name": "n", "actoins": [], )" + actions + "}")
                                     << QStringLiteral("bad.json: actoins: unknown key (expected one of: name, description, till, documents, answers, actions, expect)");
    QTest::newRow("unknown key of a return reason")
        << QByteArray(R"({"name": "n", "till": {"backReasons": [{"code": 1, "name": "Брак", "type": 2}]}, )" + actions + "}")
        << QStringLiteral("bad.json: till.backReasons[0].type: unknown key (expected one of: kind, code, name)");
    QTest::newRow("unknown key of a currency")
        << QByteArray(R"({"name": "n", "till": {"currencies": [{"code": 1, "name": "Наличные", "kind": 2}]}, )" + actions + "}")
        << QStringLiteral("bad.json: till.currencies[0].kind: unknown key (expected one of: code, name, type)");
    QTest::newRow("currency without name") << QByteArray(R"({"name": "n", "till": {"currencies": [{"code": 1}]}, )" + actions + "}")
                                           << QStringLiteral("bad.json: till.currencies[0]: missing key \"name\"");
    QTest::newRow("return reason kind not an integer")
        << QByteArray(R"({"name": "n", "till": {"backReasons": [{"code": 1, "name": "Брак", "kind": "2"}]}, )" + actions + "}")
        << QStringLiteral("bad.json: till.backReasons[0].kind: expected a number, found a string");
    // A key or a value of the file reaches a terminal or a log in the message: as one line, with no escape sequence.
    QTest::newRow("control characters in a key")
        << QByteArray(R"({"name": "n", "\u001b[31mred\r\nX-Forged: 1": 1, )" + actions + "}")
        << QStringLiteral("bad.json: \\x1b[31mred\\r\\nX-Forged: 1: unknown key (expected one of: name, description, till, documents, answers, actions, expect)");
    QTest::newRow("control characters in a value")
        << QByteArray(R"({"name": "n", "actions": [{"type": "clo\u0007se\u2028"}]})")
        << QStringLiteral("bad.json: actions[0].type: unknown action \"clo\\x07se\\u2028\" (expected one of: bind, backBySale, input, card, coupon, add, reason, pay, stornoAll, close, restart)");
    QTest::newRow("no actions") << QByteArray(R"({"name": "n"})") << QStringLiteral("bad.json: missing key \"actions\"");
    QTest::newRow("empty actions") << QByteArray(R"({"name": "n", "actions": []})")
                                   << QStringLiteral("bad.json: actions: a scenario needs at least one action");
    QTest::newRow("unknown action") << QByteArray(R"({"name": "n", "actions": [{"type": "close"}, {"type": "close"}, {"type": "close"}, {"type": "clse"}]})")
                                    << QStringLiteral("bad.json: actions[3].type: unknown action \"clse\" (expected one of: bind, backBySale, input, card, coupon, add, reason, pay, stornoAll, close, restart)");
    QTest::newRow("action without type") << QByteArray(R"({"name": "n", "actions": [{"document": "r"}]})")
                                         << QStringLiteral("bad.json: actions[0]: missing key \"type\"");
    QTest::newRow("unknown document") << QByteArray(R"({"name": "n", "actions": [{"type": "bind", "document": "r9"}]})")
                                      << QStringLiteral("bad.json: actions[0].document: no document \"r9\" in documents");
    QTest::newRow("key of another action") << QByteArray(R"({"name": "n", "actions": [{"type": "stornoAll", "document": "r"}]})")
                                           << QStringLiteral("bad.json: actions[0].document: unknown key (expected one of: type, note, expect)");
    QTest::newRow("result of a bind") << QByteArray(R"({"name": "n", "documents": {"r": {"type": "return"}}, "actions": [{"type": "bind", "document": "r", "expect": {"result": 2}}]})")
                                      << QStringLiteral("bad.json: actions[0].expect.result: a bind action has no result");
    QTest::newRow("result of the scenario") << QByteArray(R"({"name": "n", "actions": [{"type": "close"}], "expect": {"result": 2}})")
                                            << QStringLiteral("bad.json: expect.result: unknown key (expected one of: dialogs, requests, documents, storage, paymentTotals)");
    QTest::newRow("fractional integer") << QByteArray(R"({"name": "n", "actions": [{"type": "pay", "code": 1.5, "amount": 1}]})")
                                        << QStringLiteral("bad.json: actions[0].code: expected an integer, found 1.5");
    QTest::newRow("pay without amount") << QByteArray(R"({"name": "n", "actions": [{"type": "pay", "code": 1}]})")
                                        << QStringLiteral("bad.json: actions[0]: missing key \"amount\"");
    QTest::newRow("unknown payment detail") << QByteArray(R"({"name": "n", "actions": [{"type": "pay", "code": 1, "amount": 1, "details": {"pin": "1"}}]})")
                                            << QStringLiteral("bad.json: actions[0].details.pin: unknown key (expected one of: valName, valutType, cardNum, cardType, terminalId, authorizationCode, operationId, rrn)");
    QTest::newRow("unknown document type") << QByteArray(R"({"name": "n", "documents": {"r": {"type": "retrun"}}, )" + actions + "}")
                                           << QStringLiteral("bad.json: documents.r.type: unknown document type \"retrun\" (expected sale, return, returnBySale or a number)");
    QTest::newRow("bad document name") << QByteArray(R"({"name": "n", "documents": {"a/b": {"type": "return"}}, )" + actions + "}")
                                       << QStringLiteral("bad.json: documents.a/b: a document name is 1 to 40 letters, digits, _ or -");
    QTest::newRow("position without code") << QByteArray(R"({"name": "n", "documents": {"r": {"type": 2, "positions": [{"price": 1}]}}, )" + actions + "}")
                                           << QStringLiteral("bad.json: documents.r.positions[0]: missing key \"code\"");
    QTest::newRow("bad sale date") << QByteArray(R"({"name": "n", "documents": {"r": {"type": 25, "saleIdentifier": "1", "saleDate": "01.02.2024"}}, )" + actions + "}")
                                   << QStringLiteral("bad.json: documents.r.saleDate: expected a date as yyyy-MM-dd, found \"01.02.2024\"");
    QTest::newRow("return by sale of a return") << QByteArray(R"({"name": "n", "documents": {"r": {"type": 2}}, "actions": [{"type": "backBySale", "document": "r"}]})")
                                                << QStringLiteral("bad.json: actions[0].document: a return by sale needs a document of type returnBySale");
    QTest::newRow("answer of two kinds") << QByteArray(R"({"name": "n", "answers": [{"choice": 1, "price": 2}], )" + actions + "}")
                                         << QStringLiteral("bad.json: answers[0]: an answer is an object with exactly one key: choice, form, quantity or price");
    QTest::newRow("negative choice") << QByteArray(R"({"name": "n", "answers": [{"choice": -1}], )" + actions + "}")
                                     << QStringLiteral("bad.json: answers[0].choice: a choice counts from 0");
    QTest::newRow("form of text") << QByteArray(R"({"name": "n", "answers": [{"form": "12"}], )" + actions + "}")
                                  << QStringLiteral("bad.json: answers[0].form: expected an object of field answers or null, found a string");
    QTest::newRow("reason target") << QByteArray(R"({"name": "n", "actions": [{"type": "reason", "target": "doc"}]})")
                                   << QStringLiteral("bad.json: actions[0].target: expected \"document\" or \"position\", found \"doc\"");
    QTest::newRow("reason position missing") << QByteArray(R"({"name": "n", "actions": [{"type": "reason", "target": "position"}]})")
                                             << QStringLiteral("bad.json: actions[0]: missing key \"position\"");
    QTest::newRow("bad regular expression") << QByteArray(R"({"name": "n", "actions": [{"type": "close", "expect": {"document": {"pluginData": {"k": {"$matches": "("}}}}}]})")
                                            << QStringLiteral("bad.json: actions[0].expect.document.pluginData.k.$matches: invalid regular expression: missing closing parenthesis");
    QTest::newRow("request path") << QByteArray(R"({"name": "n", "actions": [{"type": "close", "expect": {"requests": {"advicenote": 1}}}]})")
                                  << QStringLiteral("bad.json: actions[0].expect.requests.advicenote: a request path starts with /");
    QTest::newRow("expected unknown document") << QByteArray(R"({"name": "n", "actions": [{"type": "close"}], "expect": {"documents": {"r": {"closed": true}}}})")
                                               << QStringLiteral("bad.json: expect.documents.r: no document \"r\" in documents");
    QTest::newRow("config key without section") << QByteArray(R"({"name": "n", "till": {"config": {"url": "x"}}, )" + actions + "}")
                                                 << QStringLiteral("bad.json: till.config.url: a configuration key is written Section:name");
    QTest::newRow("position check without posnum") << QByteArray(R"({"name": "n", "actions": [{"type": "close", "expect": {"document": {"positions": [{"price": 1}]}}}]})")
                                                   << QStringLiteral("bad.json: actions[0].expect.document.positions[0]: missing key \"posnum\"");
}

void TestScenarioParser::refusesBadFiles()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, message);
    ScenarioParser parser(QStringLiteral("bad.json"));
    QVERIFY(!parser.parse(json));
    QCOMPARE(parser.error().toString(), message);
}

void TestScenarioParser::placesSyntaxErrorsByLineAndColumn_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("message");
    QTest::newRow("missing comma") << QByteArray("{\n  \"name\": \"n\"\n  \"actions\": []\n}")
                                   << QStringLiteral("bad.json:3:4: JSON syntax error: unterminated object");
    QTest::newRow("after Cyrillic text") << QByteArray("{\"name\": \"Возврат\",, }")
                                         << QStringLiteral("bad.json:1:21: JSON syntax error: unterminated object");
    QTest::newRow("cut short") << QByteArray("{\"name\": \"n\",\n\"actions\": [")
                               << QStringLiteral("bad.json:2:13: JSON syntax error: unterminated array");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("bad.json:1:1: JSON syntax error: illegal value");
}

void TestScenarioParser::placesSyntaxErrorsByLineAndColumn()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, message);
    ScenarioParser parser(QStringLiteral("bad.json"));
    QVERIFY(!parser.parse(json));
    QCOMPARE(parser.error().toString(), message);
}

void TestScenarioParser::readsTheTillDescriptionAlone()
{
    ScenarioParser parser(QStringLiteral("dictionaries.json"));
    const auto settings = parser.parseTillSettings(R"({"currencies": [{"code": 2, "name": "Карта", "type": 2}]})");
    QVERIFY(settings);
    QCOMPARE(settings->currencies->first().type, 2);
    QVERIFY(!parser.parseTillSettings(R"({"currencies": [{"code": "x", "name": "Карта"}]})"));
    QCOMPARE(parser.error().toString(), QStringLiteral("dictionaries.json: currencies[0].code: expected a number, found a string"));
}

void TestScenarioParser::reportsAFileThatCannotBeRead()
{
    InputError error;
    QVERIFY(!ScenarioParser::parseFile(QStringLiteral("/nonexistent/s.json"), &error));
    QVERIFY(error.toString().startsWith(QStringLiteral("/nonexistent/s.json: cannot read the file: ")));
}

void TestScenarioParser::readsTheBundledScenarios()
{
    const QDir folder(QStringLiteral(TILL_SCENARIO_DIR));
    const QStringList files = folder.entryList({QStringLiteral("*.json")}, QDir::Files);
    QVERIFY(!files.isEmpty());
    for (const QString &file : files) {
        InputError error;
        QVERIFY2(ScenarioParser::parseFile(folder.filePath(file), &error), qPrintable(error.toString()));
    }
}

QTEST_GUILESS_MAIN(TestScenarioParser)
#include "tst_scenarioparser.moc"
