#include "scenarioparser.h"
#include "scenariorunner.h"
#include "tilldatafolder.h"

#include <support/scriptedhttpserver.h>

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

using namespace till;

/// Scenario runs on a till with the stand-in plug-in.
class TestScenarioRunner : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void playsAScenarioAndHoldsItsExpectations();
    void reportsFailedExpectations();
    void reportsUnusedAnswers();
    void continuesAfterTheProcessWasReplaced();
    void restartsWithinTheProcess();
    void finishedRunStartsAnew();

private:
    bool run(const QByteArray &json, Report *report, const ScenarioRunner::Options &options = {});

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ScriptedHttpServer> m_server;
    QString m_error;
};

namespace {

const QByteArray returnScenario = R"({
    "name": "Return on the stand-in",
    "documents": {"r": {"type": "return", "card": "2770001"}},
    "answers": [
        {"form": {"cashCode": "12", "invoiceDate": "01.02.2024"}},
        {"quantity": 2},
        {"choice": "Брак"}
    ],
    "actions": [
        {"type": "bind", "document": "r", "expect": {"dialogs": ["fakeInvoice"],
            "document": {"properties": {"invoiceInfo": {"cashCode": "12", "invoiceDate": "2024-02-01"}}}}},
        {"type": "add", "position": {"code": "100"}, "price": 5, "expect": {"result": 2, "dialogs": ["inputQuantity"],
            "document": {"positions": [{"posnum": 1, "quantity": 2, "price": 5, "sum": 10}]}}},
        {"type": "reason", "target": "position", "position": 1, "expect": {"result": 2,
            "document": {"positions": [{"posnum": 1, "data": {"tessaro": {"backReason": 1}}}]}}},
        {"type": "pay", "code": 2, "amount": 5, "expect": {"result": 2}},
        {"type": "pay", "code": 3, "amount": 5, "expect": {"result": 0, "dialogs": ["fakeConflictPayment"]}},
        {"type": "pay", "code": 1, "amount": 5},
        {"type": "close", "expect": {"result": 2, "requests": {"/advicenote": 1},
            "document": {"closed": true, "pluginData": {"answer": {"status": "ok"}}}}}
    ],
    "expect": {"requests": {"/advicenote": 1}, "paymentTotals": {"1": 5, "2": 5, "3": 0},
               "documents": {"r": {"closed": true, "payments": 2}}}
})";

} // namespace

void TestScenarioRunner::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    m_server->setDefaultAnswer(ScriptedHttpServer::Answer::json(200, R"({"status": "ok"})"));
    QVERIFY(TillDataFolder(m_dir->path()).create(m_server->url(QStringLiteral("/api")).toString(), QString(), &m_error));
}

void TestScenarioRunner::cleanup()
{
    m_server.reset();
    m_dir.reset();
}

bool TestScenarioRunner::run(const QByteArray &json, Report *report, const ScenarioRunner::Options &given)
{
    ScenarioParser parser;
    const std::optional<Scenario> scenario = parser.parse(json);
    if (!scenario) {
        m_error = parser.error().toString();
        return false;
    }
    ScenarioRunner::Options options = given;
    options.pluginFolder = QStringLiteral(TILL_FAKE_PLUGIN_DIR);
    ScenarioRunner runner(TillDataFolder(m_dir->path()), *scenario, json, QStringLiteral("s.json"));
    return runner.run(options, report, &m_error);
}

void TestScenarioRunner::playsAScenarioAndHoldsItsExpectations()
{
    Report report;
    QStringList lines;
    ScenarioRunner::Options options;
    options.onRecord = [&lines](const ActionRecord &record, int count) { lines << QStringLiteral("%1/%2 %3").arg(record.index + 1).arg(count).arg(record.type); };
    QVERIFY2(run(returnScenario, &report, options), qPrintable(m_error));
    QVERIFY2(report.passed(), qPrintable(report.allFailures().join(QLatin1Char('\n'))));
    QCOMPARE(lines, (QStringList{QStringLiteral("1/7 bind"), QStringLiteral("2/7 add"), QStringLiteral("3/7 reason"), QStringLiteral("4/7 pay"),
                                 QStringLiteral("5/7 pay"), QStringLiteral("6/7 pay"), QStringLiteral("7/7 close")}));
    QCOMPARE(report.actions.size(), 7);
    QCOMPARE(report.actions.at(1).title, QStringLiteral("add 100 at 5"));
    QCOMPARE(report.documents.value(QStringLiteral("r")).value(QStringLiteral("id")).toString(), QStringLiteral("run0001-r"));
    QCOMPARE(report.service, m_server->url(QStringLiteral("/api")).toString());
    QVERIFY(report.plugin.endsWith(QStringLiteral("libtessaroback.so")));
    QCOMPARE(m_server->requests().size(), 1);
    QCOMPARE(m_server->requests().first().path, QStringLiteral("/api/advicenote"));
}

void TestScenarioRunner::reportsFailedExpectations()
{
    QByteArray json = returnScenario;
    json.replace(R"("expect": {"result": 0, "dialogs": ["fakeConflictPayment"]})", R"("expect": {"result": 2, "dialogs": []})");
    Report report;
    QVERIFY2(run(json, &report), qPrintable(m_error));
    QCOMPARE(report.allFailures(), (QStringList{QStringLiteral("action 5 (pay): result: expected 2, found 0"),
                                                QStringLiteral("action 5 (pay): dialogs: expected [], found [fakeConflictPayment]")}));
}

void TestScenarioRunner::reportsUnusedAnswers()
{
    QByteArray json = returnScenario;
    json.replace(R"({"choice": "Брак"})", R"({"choice": "Брак"}, {"price": 1}, {"price": 2})");
    Report report;
    QVERIFY2(run(json, &report), qPrintable(m_error));
    QCOMPARE(report.failures, QStringList{QStringLiteral("2 cashier answer(s) were not used, from answers[3] on")});
}

void TestScenarioRunner::continuesAfterTheProcessWasReplaced()
{
    QByteArray json = returnScenario;
    json.replace(R"({"type": "pay", "code": 2)", R"({"type": "restart"}, {"type": "pay", "code": 2)");
    Report report;
    ScenarioRunner::Options options;
    int replaced = 0;
    options.restartProcess = [&replaced] { ++replaced; };
    QVERIFY(!run(json, &report, options));
    QCOMPARE(m_error, QStringLiteral("the till process could not be replaced"));
    QCOMPARE(replaced, 1);

    // The same command once more: the run goes on after the restart, with the
    // document read back from disk.
    QVERIFY2(run(json, &report), qPrintable(m_error));
    QVERIFY2(report.passed(), qPrintable(report.allFailures().join(QLatin1Char('\n'))));
    QStringList types;
    for (const ActionRecord &record : report.actions)
        types << record.type;
    QCOMPARE(types, (QStringList{QStringLiteral("bind"), QStringLiteral("add"), QStringLiteral("reason"), QStringLiteral("restart"),
                                 QStringLiteral("pay"), QStringLiteral("pay"), QStringLiteral("pay"), QStringLiteral("close")}));
    QCOMPARE(report.actions.at(3).notes, QStringList{QStringLiteral("the till process is replaced")});
    QCOMPARE(report.documents.value(QStringLiteral("r")).value(QStringLiteral("id")).toString(), QStringLiteral("run0001-r"));
    QCOMPARE(m_server->requests().size(), 1);
}

void TestScenarioRunner::restartsWithinTheProcess()
{
    QByteArray json = returnScenario;
    json.replace(R"({"type": "pay", "code": 2)", R"({"type": "restart"}, {"type": "pay", "code": 2)");
    Report report;
    QVERIFY2(run(json, &report), qPrintable(m_error));
    QVERIFY2(report.passed(), qPrintable(report.allFailures().join(QLatin1Char('\n'))));
    const QJsonObject pluginData = report.documents.value(QStringLiteral("r")).value(QStringLiteral("pluginData")).toObject();
    QVERIFY(pluginData.value(QStringLiteral("restoreCount")).toInt() >= 1);
    // The restart bound the document read back from disk to the plug-in, after a new init.
    QCOMPARE(report.documents.value(QStringLiteral("r")).value(QStringLiteral("positions")).toArray().size(), 1);
}

void TestScenarioRunner::finishedRunStartsAnew()
{
    Report first;
    QVERIFY2(run(returnScenario, &first), qPrintable(m_error));
    Report second;
    QVERIFY2(run(returnScenario, &second), qPrintable(m_error));
    // Same till, same shift: the shift's payment totals hold both runs.
    QCOMPARE(second.allFailures(), (QStringList{QStringLiteral("paymentTotals.1: expected 5, found 10"),
                                                QStringLiteral("paymentTotals.2: expected 5, found 10")}));
    QCOMPARE(second.documents.value(QStringLiteral("r")).value(QStringLiteral("id")).toString(), QStringLiteral("run0002-r"));
    QCOMPARE(m_server->requests().size(), 2);
}

QTEST_GUILESS_MAIN(TestScenarioRunner)
#include "tst_scenariorunner.moc"
