#include <support/folderstate.h>
#include <support/scriptedhttpserver.h>
#include <tessaroversion.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

/// tessaro-till as a program: its commands, exit codes, files, and a till
/// killed in the middle of a scenario.
class TestTillCommand : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void everyCommandHasHelp_data();
    void everyCommandHasHelp();
    void overviewListsEveryCommandInOneColumn();
    void everyCommandSaysByOneSetOfExitCodes_data();
    void everyCommandSaysByOneSetOfExitCodes();
    void initCreatesATillOnce();
    void badScenarioChangesNothing_data();
    void badScenarioChangesNothing();
    void runNeedsATill();
    void runReportsAndSaysByItsExitCode();
    void runTakesAPluginFolderRelativeToTheWorkingDirectory();
    void runKeepsSecretsOutOfItsOutputAndFiles();
    void killedTillContinuesWhereItStopped();
    void restartReplacesTheProcess();
    void shellTakesCommandsAndAnswers();
    void simulateRefusesMoreJobsThanTheMachineTakes();
    void versionNamesToolAndPlugin();

private:
    struct Result
    {
        int exitCode = -1;
        QProcess::ExitStatus status = QProcess::NormalExit;
        QString out;
        QString err;
    };
    Result till(const QStringList &arguments, const QByteArray &input = {}, const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    QString writeScenario(const QByteArray &json);

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<ScriptedHttpServer> m_server;
    QString m_data;
};

namespace {

/// A return: open, add, pay, close; then a second document paid.
const QByteArray returnScenario = R"({
    "name": "Return",
    "documents": {"r": {"type": "return", "card": "2770001", "properties": {"invoiceInfo": {"cashCode": "12"}}},
                  "r2": {"type": "return", "properties": {"invoiceInfo": {"cashCode": "12"}}}},
    "answers": [{"quantity": 2}],
    "actions": [
        {"type": "bind", "document": "r"},
        {"type": "add", "position": {"code": "100"}, "price": 5, "expect": {"result": 2}},
        {"type": "pay", "code": 1, "amount": 10},
        {"type": "close", "expect": {"result": 2, "document": {"closed": true, "pluginData": {"answer": {"$present": true}}}}},
        {"type": "bind", "document": "r2"},
        {"type": "pay", "code": 1, "amount": 3, "expect": {"result": 2}}
    ],
    "expect": {"paymentTotals": {"1": 10}, "documents": {"r": {"closed": true}}}
})";

} // namespace

void TestTillCommand::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_data = m_dir->filePath(QStringLiteral("till"));
    m_server = std::make_unique<ScriptedHttpServer>();
    QVERIFY(m_server->start());
    m_server->setDefaultAnswer(ScriptedHttpServer::Answer::json(200, R"({"status": "ok"})"));
}

TestTillCommand::Result TestTillCommand::till(const QStringList &arguments, const QByteArray &input, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TILL_EXECUTABLE), arguments);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return {process.exitCode(), process.exitStatus(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString TestTillCommand::writeScenario(const QByteArray &json)
{
    const QString file = m_dir->filePath(QStringLiteral("scenario.json"));
    QFile out(file);
    out.open(QIODevice::WriteOnly | QIODevice::Truncate);
    out.write(json);
    return file;
}


void TestTillCommand::everyCommandHasHelp_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("says");
    QTest::newRow("init") << QStringLiteral("init") << QStringLiteral("--service-url");
    QTest::newRow("run") << QStringLiteral("run") << QStringLiteral("--report");
    QTest::newRow("shell") << QStringLiteral("shell") << QStringLiteral("new-return-by-sale");
    QTest::newRow("demo") << QStringLiteral("demo") << QStringLiteral("bundled scenarios");
    QTest::newRow("check") << QStringLiteral("check") << QStringLiteral("--json");
    QTest::newRow("contract") << QStringLiteral("contract") << QStringLiteral("--allow-writes");
    QTest::newRow("simulate") << QStringLiteral("simulate") << QStringLiteral("--kill-rate");
    QTest::newRow("version") << QStringLiteral("--version") << QStringLiteral("--plugins");
}

void TestTillCommand::everyCommandHasHelp()
{
    QFETCH(QString, command);
    QFETCH(QString, says);
    const Result result = till({command, QStringLiteral("--help")});
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains(says), qPrintable(result.out));
    QVERIFY(result.out.contains(QStringLiteral("--help")));
    QCOMPARE(till({QStringLiteral("--help")}).exitCode, 0);
    QCOMPARE(till({QStringLiteral("dance")}).exitCode, 2);
}

void TestTillCommand::overviewListsEveryCommandInOneColumn()
{
    const Result result = till({QStringLiteral("--help")});
    QCOMPARE(result.exitCode, 0);
    // "  tessaro-till COMMAND [OPTIONS]   what it does": where "what it does" starts.
    const QRegularExpression entry(QStringLiteral("^  tessaro-till (\\S+)(?:.*?\\S)?  +(\\S)"));
    QStringList commands;
    QSet<qsizetype> columns;
    for (const QString &line : result.out.split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch match = entry.match(line);
        if (!match.hasMatch())
            continue;
        commands << match.captured(1);
        columns << match.capturedStart(2);
    }
    QCOMPARE(commands, (QStringList{"init", "run", "shell", "demo", "check", "simulate", "contract", "--version"}));
    QCOMPARE(columns.size(), 1);
}

void TestTillCommand::everyCommandSaysByOneSetOfExitCodes_data()
{
    // DIR is the test's folder, which holds no till and no plug-in; FAKE the stand-in plug-in's folder.
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("says");
    QTest::newRow("help names the codes") << QStringList{"--help"} << 0
                                          << QStringLiteral("Exit codes: 0 done, 1 something did not hold, 2 a wrong command line or file, 3 cannot run");
    QTest::newRow("unknown command") << QStringList{"dance"} << 2 << QStringLiteral("unknown command 'dance'");
    QTest::newRow("run, unknown option") << QStringList{"run", "--dance"} << 2 << QStringLiteral("Unknown option 'dance'");
    QTest::newRow("shell, no till") << QStringList{"shell", "--data", "DIR/none", "--plugins", "FAKE"} << 3 << QStringLiteral("holds no till");
    QTest::newRow("demo, no plug-in") << QStringList{"demo", "--plugins", "DIR"} << 3 << QStringLiteral("0 passed");
    QTest::newRow("simulate, unknown fault kind") << QStringList{"simulate", "--scenario", "DIR/scenario.json"} << 2
                                                  << QStringLiteral("unknown fault kind 'hnag'");
    QTest::newRow("contract, no cassette") << QStringList{"contract", "DIR/none.json"} << 2 << QStringLiteral("none.json");
    QTest::newRow("check, unknown option") << QStringList{"check", "--dance"} << 2 << QStringLiteral("Unknown option 'dance'");
    QTest::newRow("version, unknown option") << QStringList{"--version", "--dance"} << 2 << QStringLiteral("Unknown option 'dance'");
}

void TestTillCommand::everyCommandSaysByOneSetOfExitCodes()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, code);
    QFETCH(QString, says);
    writeScenario(returnScenario);
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("emulator")));
    QFile faults(m_dir->filePath(QStringLiteral("emulator/scenario.json")));
    QVERIFY(faults.open(QIODevice::WriteOnly));
    faults.write(R"({"auth": "token", "faults": [{"kind": "hnag", "path": "/advicenote", "count": 1}]})");
    faults.close();
    arguments.replaceInStrings(QStringLiteral("DIR"), m_dir->path());
    arguments.replaceInStrings(QStringLiteral("FAKE"), QStringLiteral(TILL_FAKE_PLUGIN_DIR));
    const Result result = till(arguments);
    QCOMPARE(result.status, QProcess::NormalExit);
    QVERIFY2((result.out + result.err).contains(says), qPrintable(result.out + result.err));
    QCOMPARE(result.exitCode, code);
}

void TestTillCommand::initCreatesATillOnce()
{
    Result result = till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), QStringLiteral("http://127.0.0.1:1")});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(QFile::exists(m_data + QStringLiteral("/till.ini")));
    result = till({QStringLiteral("init"), QStringLiteral("--data"), m_data});
    QCOMPARE(result.exitCode, 3);
    QCOMPARE(result.err.trimmed(), QStringLiteral("tessaro-till: %1 already holds a till").arg(m_data));
}

void TestTillCommand::badScenarioChangesNothing_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("message");
    QTest::newRow("syntax") << QByteArray("{\n \"name\": \"n\",\n \"actions\": [\n  {\"type\": \"close\"\n ]\n}")
                            << QStringLiteral("%1:5:3: JSON syntax error: unterminated object");
    QTest::newRow("unknown action") << QByteArray(R"({"name": "n", "actions": [{"type": "close"}, {"type": "explode"}]})")
                                    << QStringLiteral("%1: actions[1].type: unknown action \"explode\" (expected one of: bind, backBySale, input, card, coupon, add, reason, pay, stornoAll, close, restart)");
}

void TestTillCommand::badScenarioChangesNothing()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, message);
    QCOMPARE(till({QStringLiteral("init"), QStringLiteral("--data"), m_data}).exitCode, 0);
    const QStringList before = folderState(m_data);
    const QString file = writeScenario(json);
    const Result result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"),
                                QStringLiteral(TILL_FAKE_PLUGIN_DIR), file});
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.err.trimmed(), QStringLiteral("tessaro-till: ") + message.arg(file));
    QCOMPARE(folderState(m_data), before);
}

void TestTillCommand::runNeedsATill()
{
    const Result result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"),
                                QStringLiteral(TILL_FAKE_PLUGIN_DIR), writeScenario(returnScenario)});
    QCOMPARE(result.exitCode, 3);
    QCOMPARE(result.err.trimmed(),
             QStringLiteral("tessaro-till: %1 holds no till (no till.ini); create one with: tessaro-till init --data %1").arg(m_data));
    QVERIFY(!QFile::exists(m_data));
}

void TestTillCommand::runReportsAndSaysByItsExitCode()
{
    QCOMPARE(till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), m_server->url(QStringLiteral("/")).toString()}).exitCode, 0);
    QByteArray json = returnScenario;
    const QString report = m_dir->filePath(QStringLiteral("report.json"));
    Result result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_FAKE_PLUGIN_DIR),
                          QStringLiteral("--report"), report, writeScenario(json)});
    QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
    QVERIFY(result.out.contains(QStringLiteral("[4/6] close the document → 2  (1 request(s))")));
    QVERIFY(result.out.endsWith(QStringLiteral("Result: passed\n")));
    QFile file(report);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject json2 = QJsonDocument::fromJson(file.readAll()).object();
    QCOMPARE(json2.value(QStringLiteral("passed")).toBool(), true);
    QCOMPARE(json2.value(QStringLiteral("actions")).toArray().size(), 6);

    json.replace(R"("1": 10})", R"("1": 11})");
    result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_FAKE_PLUGIN_DIR), writeScenario(json)});
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.out.contains(QStringLiteral("  - paymentTotals.1: expected 11, found 20\n")), qPrintable(result.out));
}

void TestTillCommand::runTakesAPluginFolderRelativeToTheWorkingDirectory()
{
    QCOMPARE(till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), m_server->url(QStringLiteral("/")).toString()}).exitCode, 0);
    // The loader would look a relative name up in the library paths, not here.
    const QString folder = QDir::current().relativeFilePath(QStringLiteral(TILL_FAKE_PLUGIN_DIR));
    QVERIFY(QDir::isRelativePath(folder));
    const Result result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), folder, writeScenario(returnScenario)});
    QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
}

void TestTillCommand::runKeepsSecretsOutOfItsOutputAndFiles()
{
    QUrl service = m_server->url(QStringLiteral("/"));
    service.setUserName(QStringLiteral("till"));
    service.setPassword(QStringLiteral("url-pw-71"));
    // The plug-in keeps the answer on the document: it lands in the report's documents and requests.
    m_server->setDefaultAnswer(ScriptedHttpServer::Answer::json(200, R"({"status":"ok","access_token":"acc-73","refresh_token":"ref-74"})"));
    const QString report = m_dir->filePath(QStringLiteral("report.json"));
    // The usual mask, which leaves new files readable by everyone; the till inherits it.
    const mode_t previous = ::umask(022);
    const Result created = till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), service.toString()});
    const Result result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_FAKE_PLUGIN_DIR),
                                QStringLiteral("--report"), report, writeScenario(returnScenario)});
    ::umask(previous);
    QCOMPARE(created.exitCode, 0);
    QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
    QCOMPARE(m_server->requests().first().header("Authorization"), "Basic " + QByteArray("till:url-pw-71").toBase64());
    QVERIFY(result.out.contains(QStringLiteral("service: http://till@127.0.0.1:")));

    QStringList files{report, m_data + QStringLiteral("/till.ini"), m_data + QStringLiteral("/run/host.ini")};
    const QDir progress(m_data + QStringLiteral("/progress"));
    for (const QString &name : progress.entryList(QDir::Files))
        files << progress.filePath(name);
    QCOMPARE(files.size(), 4);
    const QFileDevice::Permissions others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
                                            | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    for (const QString &file : std::as_const(files))
        QVERIFY2((QFileInfo(file).permissions() & others) == 0, qPrintable(file));

    // The settings hold the password by necessity; the report, the progress and the terminal do not.
    QByteArrayList shown{created.out.toUtf8(), created.err.toUtf8(), result.out.toUtf8(), result.err.toUtf8()};
    for (const QString &file : files.mid(0, 1) + files.mid(3)) {
        QFile read(file);
        QVERIFY(read.open(QIODevice::ReadOnly));
        shown << read.readAll();
    }
    for (const QByteArray &bytes : std::as_const(shown)) {
        for (const char *secret : {"url-pw-71", "acc-73", "ref-74"})
            QVERIFY2(!bytes.contains(secret), secret);
    }
}

void TestTillCommand::killedTillContinuesWhereItStopped()
{
    QCOMPARE(till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), m_server->url(QStringLiteral("/")).toString()}).exitCode, 0);
    const QString file = writeScenario(returnScenario);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TESSARO_FAKE_KILL_MARKER"), m_dir->filePath(QStringLiteral("killed")));
    const QStringList arguments{QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"),
                                QStringLiteral(TILL_FAKE_PLUGIN_DIR), file};

    // The plug-in kills the till in the middle of the close, right after it has
    // stored the service's answer on the document.
    Result result = till(arguments, {}, environment);
    QCOMPARE(result.status, QProcess::CrashExit);
    QVERIFY(QFile::exists(m_dir->filePath(QStringLiteral("killed"))));
    QVERIFY(result.out.contains(QStringLiteral("[3/6] pay 10 in currency 1 → 2")));
    QVERIFY(!result.out.contains(QStringLiteral("[4/6]")));
    QCOMPARE(m_server->requestCount(), 1);

    // The same command again continues with the close and finishes.
    result = till(arguments, {}, environment);
    QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
    const QString progress = result.out.section(QStringLiteral("Scenario:"), 0, 0);
    QVERIFY2(progress.startsWith(QStringLiteral("[4/6] close the document → 2\n")), qPrintable(progress));
    // The report covers the whole run, the actions before the kill included.
    QVERIFY(result.out.contains(QStringLiteral("Scenario: Return\n")));
    QVERIFY(result.out.contains(QStringLiteral("[1/6] open r\n")));
    QVERIFY(result.out.endsWith(QStringLiteral("Result: passed\n")));
    // Nothing stored was lost, and the answer kept on the document spared a second request.
    QCOMPARE(m_server->requestCount(), 1);
}

void TestTillCommand::restartReplacesTheProcess()
{
    QCOMPARE(till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), m_server->url(QStringLiteral("/")).toString()}).exitCode, 0);
    const QByteArray json = R"({"name": "Restart",
        "documents": {"r": {"type": "return", "card": "1", "properties": {"invoiceInfo": {"cashCode": "12"}}}},
        "actions": [{"type": "bind", "document": "r", "expect": {"document": {"pluginData": {"initCount": 1}}}},
                    {"type": "restart"},
                    {"type": "pay", "code": 1, "amount": 3}],
        "expect": {"documents": {"r": {"payments": 1, "pluginData": {"initCount": 1, "restoreCount": 1}}}}})";
    const Result result = till({QStringLiteral("run"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"),
                                QStringLiteral(TILL_FAKE_PLUGIN_DIR), writeScenario(json)});
    // A fresh process: the plug-in object was created and initialised once more from nothing.
    QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
    QVERIFY(result.out.contains(QStringLiteral("[2/3] restart the till\n[3/3] pay 3 in currency 1 → 2\n")));
    QVERIFY(result.out.contains(QStringLiteral("    note    the till process is replaced\n")));
}

void TestTillCommand::shellTakesCommandsAndAnswers()
{
    QCOMPARE(till({QStringLiteral("init"), QStringLiteral("--data"), m_data, QStringLiteral("--service-url"), m_server->url(QStringLiteral("/")).toString()}).exitCode, 0);
    const QByteArray input = "help\n"
                             "new-return\n"
                             "12345\n"   // cash code: fails its check
                             "12\n"
                             "1.2.2024\n" // not dd.MM.yyyy
                             "01.02.2024\n"
                             "add 100 2 5\n"
                             "card 2770001\n"
                             "add 100 2 5\n"
                             "reason 1\n"
                             "2\n"
                             "pay 1 10\n"
                             "show\n"
                             "close\n"
                             "quit\n";
    const Result result = till({QStringLiteral("shell"), QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_FAKE_PLUGIN_DIR)}, input);
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.out.contains(QStringLiteral("cashCode: \"12345\" does not match [0-9]{1,4}")), qPrintable(result.out));
    QVERIFY(result.out.contains(QStringLiteral("invoiceDate: \"1.2.2024\" is not a date written dd.MM.yyyy")));
    QVERIFY(result.out.contains(QStringLiteral("  ! Запрещено добавлять товары, если в чеке нет карты  [fakeNoCard]")));
    QVERIFY(result.out.contains(QStringLiteral("    2. Не подошёл размер")));
    QVERIFY(result.out.contains(QStringLiteral("position 1: 100 ×2 at 5; tessaro.backReason = 2")));
    QVERIFY(result.out.contains(QStringLiteral("close → 2  (1 request(s))")));
    QCOMPARE(m_server->requestCount(), 1);
}

void TestTillCommand::simulateRefusesMoreJobsThanTheMachineTakes()
{
    // Refused before any worker starts: nothing is played, nothing is written.
    const Result result = till({QStringLiteral("simulate"), QStringLiteral("--jobs"), QStringLiteral("100000"), QStringLiteral("--sessions"),
                                QStringLiteral("1"), QStringLiteral("--out"), m_dir->filePath(QStringLiteral("failures"))});
    QCOMPARE(result.exitCode, 2);
    QVERIFY2(result.err.contains(QStringLiteral("--jobs takes at most")), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
    QVERIFY(!QFileInfo::exists(m_dir->filePath(QStringLiteral("failures"))));
}

void TestTillCommand::versionNamesToolAndPlugin()
{
    const QString tool = QStringLiteral("tessaro-till " TESSARO_VERSION "\n");
    Result result = till({QStringLiteral("--version"), QStringLiteral("--plugins"), QStringLiteral(TILL_PLUGIN_DIR)});
    QCOMPARE(result.exitCode, 0);
    const QString plugin = QStringLiteral(TILL_PLUGIN_DIR "/libtessaroback.so");
    const QString fromLibrary = QStringLiteral("TessaroBack " TESSARO_VERSION);
    QCOMPARE(result.out, tool + QStringLiteral("plug-in %1: %2\n").arg(plugin, fromLibrary));
    // A folder named relative to the working directory reads the same file.
    result = till({QStringLiteral("--version"), QStringLiteral("--plugins"), QDir::current().relativeFilePath(QStringLiteral(TILL_PLUGIN_DIR))});
    QCOMPARE(result.out, tool + QStringLiteral("plug-in %1: %2\n").arg(plugin, fromLibrary));
    // The library file is read without loading it: a plug-in without a version mark is named as such.
    result = till({QStringLiteral("--version"), QStringLiteral("--plugins"), QStringLiteral(TILL_FAKE_PLUGIN_DIR)});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, tool + QStringLiteral("plug-in %1/libtessaroback.so: no version mark in it\n").arg(QStringLiteral(TILL_FAKE_PLUGIN_DIR)));
    result = till({QStringLiteral("--version"), QStringLiteral("--plugins"), m_dir->path()});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, tool + QStringLiteral("plug-in: no libtessaroback.so in %1\n").arg(m_dir->path()));
}

QTEST_GUILESS_MAIN(TestTillCommand)
#include "tst_tillcommand.moc"
