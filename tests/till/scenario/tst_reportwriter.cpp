#include "reportwriter.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace till;

class TestReportWriter : public QObject
{
    Q_OBJECT

private slots:
    void progressLineSaysWhatHappened();
    void detailsListStepsDialogsAndRequests();
    void recordsSurviveJson();
    void textEndsWithTheVerdict();
    void writesJson();
    void showsNoSecretAndKeepsToItsLines();

private:
    static ActionRecord closeRecord();
};

ActionRecord TestReportWriter::closeRecord()
{
    ActionRecord record;
    record.index = 4;
    record.type = QStringLiteral("close");
    record.title = QStringLiteral("close the document");
    record.result = 0;
    record.steps << HookStep{QStringLiteral("before"), 211, 4, 3, 0};
    record.dialogs << DialogRecord{QStringLiteral("error"), QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена закрыта"), {}, QJsonValue::Undefined};
    record.dialogs << DialogRecord{QStringLiteral("choice"), QStringLiteral("t"), QStringLiteral("Причина"),
                                   {QStringLiteral("Брак"), QStringLiteral("Размер")}, QJsonValue(1)};
    RequestRecord request;
    request.method = QStringLiteral("POST");
    request.path = QStringLiteral("/advicenote");
    request.httpCode = 200;
    request.requestBody = QJsonObject{{QStringLiteral("a"), 1}};
    record.requests << request;
    RequestRecord lost = request;
    lost.networkError = true;
    lost.errorText = QStringLiteral("Connection refused");
    record.requests << lost;
    record.notes << QStringLiteral("a note");
    record.failures << QStringLiteral("result: expected 2, found 0");
    return record;
}

void TestReportWriter::progressLineSaysWhatHappened()
{
    QCOMPARE(ReportWriter::progressLine(closeRecord(), 7),
             QStringLiteral("[5/7] close the document → 0  (2 dialog(s), 2 request(s))  FAILED"));
    ActionRecord start;
    start.type = QStringLiteral("start");
    start.title = QStringLiteral("the till starts again");
    QCOMPARE(ReportWriter::progressLine(start, 7), QStringLiteral("[till] the till starts again"));
}

void TestReportWriter::detailsListStepsDialogsAndRequests()
{
    QCOMPARE(ReportWriter::details(closeRecord()),
             QStringLiteral("    before  211 (trigger 4, priority 3) → 0\n"
                            "    error    tessaroShiftClosed \"Смена закрыта\"\n"
                            "    choice   t \"Причина\" [Брак | Размер] → 1\n"
                            "    request POST /advicenote → HTTP 200\n"
                            "    request POST /advicenote → no answer (Connection refused)\n"
                            "    note    a note\n"
                            "    FAILED  result: expected 2, found 0"));
}

void TestReportWriter::recordsSurviveJson()
{
    const ActionRecord record = closeRecord();
    const ActionRecord back = ActionRecord::fromJson(record.toJson());
    QCOMPARE(back.toJson(), record.toJson());
    QCOMPARE(back.result, 0);
    QCOMPARE(back.dialogs.at(1).items.size(), 2);
    QVERIFY(back.requests.at(1).networkError);
    ActionRecord noResult;
    QVERIFY(!ActionRecord::fromJson(noResult.toJson()).result);
}

void TestReportWriter::textEndsWithTheVerdict()
{
    Report report;
    report.scenario = QStringLiteral("Return");
    report.actionCount = 5;
    report.actions << closeRecord();
    report.documents.insert(QStringLiteral("r1"), QJsonDocument::fromJson(R"({"id": "run0001-r1", "type": 2, "closed": true,
        "pluginData": {"invoiceID": "123456"}, "commonReason": null,
        "positions": [{"posnum": 1, "code": "100", "quantity": 2, "price": 10, "data": {"tessaro": {"backReason": 3}}}],
        "payments": [{"code": 1, "amount": 20}]})").object());
    report.failures << QStringLiteral("1 cashier answer(s) were not used, from answers[3] on");
    const QString text = ReportWriter::text(report);
    QVERIFY(text.startsWith(QStringLiteral("Scenario: Return\n")));
    QVERIFY(text.contains(QStringLiteral("  r1 (run0001-r1, return, closed)\n    plug-in data: invoiceID = \"123456\"\n"
                                         "    position 1: 100 ×2 at 10; tessaro.backReason = 3\n    payments: 20 in 1\n")));
    QVERIFY(text.endsWith(QStringLiteral("Result: FAILED, 2 failure(s):\n"
                                         "  - action 5 (close): result: expected 2, found 0\n"
                                         "  - 1 cashier answer(s) were not used, from answers[3] on\n")));
    report.actions.clear();
    report.failures.clear();
    QVERIFY(ReportWriter::text(report).endsWith(QStringLiteral("Result: passed\n")));
}

void TestReportWriter::writesJson()
{
    QTemporaryDir dir;
    Report report;
    report.scenario = QStringLiteral("Return");
    report.actions << closeRecord();
    const QString file = dir.filePath(QStringLiteral("report.json"));
    QString error;
    QVERIFY(ReportWriter::writeJson(report, file, &error));
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QJsonObject json = QJsonDocument::fromJson(written.readAll()).object();
    QCOMPARE(json.value(QStringLiteral("passed")).toBool(), false);
    QCOMPARE(json.value(QStringLiteral("actions")).toArray().first()[QStringLiteral("requests")][0][QStringLiteral("request")][QStringLiteral("a")].toInt(), 1);
    QVERIFY(!ReportWriter::writeJson(report, dir.filePath(QStringLiteral("missing/report.json")), &error));
    QVERIFY(error.startsWith(QStringLiteral("cannot write ")));
}

void TestReportWriter::showsNoSecretAndKeepsToItsLines()
{
    ActionRecord record = closeRecord();
    record.dialogs << DialogRecord{QStringLiteral("error"), QStringLiteral("tessaroError"), QStringLiteral("Ошибка\x1b[2J\r\nX-Evil: 1"),
                                   {}, QJsonValue::Undefined};
    RequestRecord token;
    token.method = QStringLiteral("POST");
    token.url = QStringLiteral("http://till:url-pw-71@h/token?client_secret=qs-72");
    token.path = QStringLiteral("/token");
    token.httpCode = 200;
    token.requestBody = QStringLiteral("grant_type=client_credentials&client_secret=qs-72");
    token.responseBody = QJsonObject{{QStringLiteral("access_token"), QStringLiteral("acc-73")},
                                     {QStringLiteral("refresh_token"), QStringLiteral("ref-74")},
                                     {QStringLiteral("token_type"), QStringLiteral("bearer")}};
    record.requests << token;
    Report report;
    report.scenario = QStringLiteral("Return");
    report.service = QStringLiteral("http://till:url-pw-71@h/api");
    report.actions << record;
    report.documents.insert(QStringLiteral("r1"), QJsonDocument::fromJson(R"({"id": "d1", "type": 2, "closed": false,
        "pluginData": {"token": "acc-73", "answer": {"refresh_token": "ref-74", "Key4": "000123"}}})").object());

    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("report.json"));
    QString error;
    const mode_t previous = ::umask(022);
    QVERIFY(ReportWriter::writeJson(report, file, &error));
    ::umask(previous);
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QByteArray json = written.readAll();
    const QString text = ReportWriter::text(report);

    for (const char *secret : {"url-pw-71", "qs-72", "acc-73", "ref-74"}) {
        QVERIFY2(!json.contains(secret), secret);
        QVERIFY2(!text.contains(QLatin1String(secret)), secret);
    }
    QVERIFY(json.contains("000123"));
    QVERIFY(text.contains(QStringLiteral("service: http://till:***@h/api\n")));
    QVERIFY(text.contains(QStringLiteral("\"Ошибка\\x1b[2J\\r\\nX-Evil: 1\"")));
    QVERIFY(!text.contains(QChar(0x1b)) && !text.contains(QLatin1Char('\r')) && !text.contains(QStringLiteral("\nX-Evil")));
    const QFileDevice::Permissions others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
                                            | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    QCOMPARE(written.permissions() & others, QFileDevice::Permissions());
}

QTEST_GUILESS_MAIN(TestReportWriter)
#include "tst_reportwriter.moc"
