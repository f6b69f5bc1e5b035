#include "cassetteplays.h"
#include "contractcommand.h"
#include "emulatedtill.h"
#include "emulatedtillconstants.h"

#include <contracts/cassettefile.h>
#include <emulator/emulator.h>

#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

using namespace till;
using tessaro::contracts::Cassette;
using tessaro::contracts::CassetteFile;
using Settings = QMap<QString, QString>;

/// Recording a till's session, replaying it offline and comparing a
/// service's answers with it, with the real plug-in.
class TestCassettes : public QObject
{
    Q_OBJECT

private slots:
    void commandLine();
    void shellRecords();
    void recordThenReplay_data();
    void recordThenReplay();
    void secretsNeverRecorded_data();
    void secretsNeverRecorded();
    void changedRequestFailsReplay();
    void driftReport_data();
    void driftReport();
    void newerFormatRefused_data();
    void newerFormatRefused();
    void onlyReadsAgainstAService();

private:
    struct Result
    {
        int code = -1;
        QString out;
        QString err;
    };
    static Result runProgram(const QString &program, const QStringList &arguments, const QByteArray &input = {});
    QString write(const QString &name, const QByteArray &content);
    static QJsonObject committed(const QString &name);

    QTemporaryDir m_dir;
};

TestCassettes::Result TestCassettes::runProgram(const QString &program, const QStringList &arguments, const QByteArray &input)
{
    QProcess process;
    QEventLoop loop;
    connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(120000, &loop, &QEventLoop::quit);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    loop.exec();
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString TestCassettes::write(const QString &name, const QByteArray &content)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

QJsonObject TestCassettes::committed(const QString &name)
{
    QFile file(QStringLiteral(TESSARO_CASSETTE_DIR "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no committed cassette %s", qPrintable(name));
    return QJsonDocument::fromJson(file.readAll()).object();
}

void TestCassettes::commandLine()
{
    EmulatedTill till;
    tessaro::emulator::Emulator &service = till.emulator();
    const QString data = m_dir.filePath(QStringLiteral("command-line-till"));
    QString error;
    QVERIFY2(till.start(data, &error), qPrintable(error));
    const QString scenario = QStringLiteral(TILL_SCENARIO_DIR "/01-plain-return.json");
    const QString file = m_dir.filePath(QStringLiteral("command-line.json"));
    const QString plugins = QStringLiteral(TILL_PLUGIN_DIR);

    const Result recorded = runProgram(QStringLiteral(TILL_EXECUTABLE), {QStringLiteral("run"), QStringLiteral("--data"), data, QStringLiteral("--plugins"),
                                                                          plugins, scenario, QStringLiteral("--record"), file});
    QVERIFY2(recorded.code == 0, qPrintable(recorded.out + recorded.err));
    QVERIFY2(recorded.out.contains(QStringLiteral("Recorded 2 exchange(s) with the service in ") + file), qPrintable(recorded.out));
    const auto cassette = CassetteFile::read(file, &error);
    QVERIFY2(cassette, qPrintable(error));
    QCOMPARE(cassette->exchanges.at(1).path, QStringLiteral("/advicenote"));
    QCOMPARE(cassette->exchanges.at(1).action, QStringLiteral("the advice note goes to the service (close the document)"));
    QCOMPARE(tessaro::contracts::CassetteExchange::header(cassette->exchanges.at(1).responseHeaders, QStringLiteral("Content-Type")),
             QStringLiteral("application/json"));
    QCOMPARE(cassette->serviceUrl, service.baseUrl().toString());
    QVERIFY(!cassette->pluginVersion.isEmpty());

    // Offline: the service is gone.
    service.stop();
    const Result replayed = runProgram(QStringLiteral(TILL_EXECUTABLE), {QStringLiteral("run"), QStringLiteral("--plugins"), plugins, scenario,
                                                                          QStringLiteral("--replay"), file});
    QVERIFY2(replayed.code == 0, qPrintable(replayed.out + replayed.err));
    QVERIFY2(replayed.out.contains(QStringLiteral("Result: passed")), qPrintable(replayed.out));
}

void TestCassettes::shellRecords()
{
    EmulatedTill till;
    tessaro::emulator::Emulator &service = till.emulator();
    const QString data = m_dir.filePath(QStringLiteral("shell-till"));
    QString error;
    QVERIFY2(till.start(data, &error), qPrintable(error));
    const QString file = m_dir.filePath(QStringLiteral("shell.json"));
    // The stand-in plug-in sends one request when a document closes.
    const QByteArray input = "new-return\n12\n12\n01.02.2024\nadd 100 2 5\nreason 1\n2\npay 1 10\nclose\nquit\n";
    const Result result = runProgram(QStringLiteral(TILL_EXECUTABLE),
                                     {QStringLiteral("shell"), QStringLiteral("--data"), data, QStringLiteral("--plugins"),
                                      QStringLiteral(TILL_FAKE_PLUGIN_DIR), QStringLiteral("--record"), file},
                                     input);
    QVERIFY2(result.code == 0, qPrintable(result.out + result.err));
    QVERIFY2(result.out.contains(QStringLiteral("Recorded %1 exchange(s) with the service in %2").arg(service.journal().size()).arg(file)),
             qPrintable(result.out));
    const auto cassette = CassetteFile::read(file, &error);
    QVERIFY2(cassette, qPrintable(error));
    QCOMPARE(cassette->exchanges.size(), service.journal().size());
    QVERIFY(!cassette->exchanges.isEmpty());
    QCOMPARE(cassette->exchanges.last().action, QStringLiteral("close"));
}

void TestCassettes::recordThenReplay_data()
{
    QTest::addColumn<QString>("name");
    for (const DemoRunner::Play &play : DemoRunner::bundled())
        QTest::newRow(qPrintable(play.name)) << play.name;
}

void TestCassettes::recordThenReplay()
{
    QFETCH(QString, name);
    const DemoRunner::Play play = cassetteplays::bundled(name);
    QTemporaryDir dir;
    cassetteplays::Recording recording;
    QString error;
    QVERIFY2(cassetteplays::record(play, dir.filePath(QStringLiteral("recorded")), &recording, &error), qPrintable(error));
    QCOMPARE(recording.cassette.exchanges.size(), recording.journal.size());
    QVERIFY(!recording.cassette.exchanges.isEmpty());

    // Through the file, as a team commits it.
    const QString file = dir.filePath(QStringLiteral("cassette.json"));
    QVERIFY2(CassetteFile::write(recording.cassette, file, &error), qPrintable(error));
    const auto cassette = CassetteFile::read(file, &error);
    QVERIFY2(cassette, qPrintable(error));

    Report replayed;
    QVERIFY2(cassetteplays::replay(play, *cassette, dir.filePath(QStringLiteral("replayed")), &replayed, &error), qPrintable(error));
    QCOMPARE(cassetteplays::verdicts(replayed), cassetteplays::verdicts(recording.report));
    QVERIFY2(replayed.passed(), qPrintable(replayed.allFailures().join(QLatin1Char('\n'))));
}

void TestCassettes::secretsNeverRecorded_data()
{
    const QString clientSecret = QStringLiteral("Known-Client-Secret-7f3a");
    const QString basic = QStringLiteral("Basic ") + QString::fromLatin1(QStringLiteral("till:%1").arg(clientSecret).toUtf8().toBase64());
    const QString appSecret = QStringLiteral("Known-App-Secret-c91e");
    QTest::addColumn<Settings>("config");
    QTest::addColumn<QByteArray>("emulator");
    QTest::addColumn<QStringList>("known");
    QTest::newRow("token") << Settings{{QStringLiteral("Tessaro:authorizationHeader"), basic}}
                           << QJsonDocument(QJsonObject{{QStringLiteral("clients"),
                                                         QJsonArray{QJsonObject{{QStringLiteral("client_id"), QStringLiteral("till")},
                                                                                {QStringLiteral("realm_id"), QStringLiteral("tessaro")},
                                                                                {QStringLiteral("authorization"), basic}}}}})
                                  .toJson()
                           << QStringList{clientSecret, basic.mid(6), QStringLiteral("till:") + clientSecret};
    QTest::newRow("gateway") << Settings{{QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false")},
                                                       {QStringLiteral("OrvelGate:tessaro"), QStringLiteral("true")},
                                                       {QStringLiteral("OrvelGate:appKey"), emulated::appKey},
                                                       {QStringLiteral("OrvelGate:appSecret"), appSecret},
                                                       {QStringLiteral("OrvelGate:xStage"), QStringLiteral("PreProd")}}
                             << QJsonDocument(QJsonObject{{QStringLiteral("auth"), QStringLiteral("gateway")},
                                                          {QStringLiteral("gateway"), QJsonObject{{QStringLiteral("appKey"), emulated::appKey},
                                                                                                 {QStringLiteral("appSecret"), appSecret}}}})
                                    .toJson()
                             << QStringList{appSecret};
}

void TestCassettes::secretsNeverRecorded()
{
    QFETCH(Settings, config);
    QFETCH(QByteArray, emulator);
    QFETCH(QStringList, known);
    QTemporaryDir dir;
    cassetteplays::Recording recording;
    QString error;
    // The closed shift: a token, two advice notes and a till opening.
    const DemoRunner::Play play = cassetteplays::bundled(QStringLiteral("03-closed-shift"));
    QJsonObject settings = QJsonDocument::fromJson(play.emulatorSettings).object();
    const QJsonObject authorisation = QJsonDocument::fromJson(emulator).object();
    for (auto it = authorisation.begin(); it != authorisation.end(); ++it)
        settings.insert(it.key(), it.value());
    QVERIFY2(cassetteplays::record(play, dir.filePath(QStringLiteral("till")), &recording, &error, config, QJsonDocument(settings).toJson()),
             qPrintable(error));
    QVERIFY2(recording.report.passed(), qPrintable(recording.report.allFailures().join(QLatin1Char('\n'))));

    // The secrets that went over the wire: tokens and signatures, as the service saw them.
    QStringList secrets = known;
    static const QRegularExpression credential(QStringLiteral("^(?:Bearer (.+)|.*Signature=([0-9a-f]+))$"));
    for (const tessaro::emulator::JournalEntry &entry : recording.journal) {
        const QRegularExpressionMatch match = credential.match(QString::fromUtf8(entry.exchange.header(QByteArrayLiteral("authorization"))));
        if (match.hasMatch())
            secrets << match.captured(1) + match.captured(2);
    }
    QVERIFY2(secrets.size() > known.size() + 1, "requests carried tokens or signatures");

    const QString file = dir.filePath(QStringLiteral("cassette.json"));
    QVERIFY2(CassetteFile::write(recording.cassette, file, &error), qPrintable(error));
    QFile written(file);
    QVERIFY(written.open(QIODevice::ReadOnly));
    const QByteArray bytes = written.readAll();
    QVERIFY(bytes.contains("secret-placeholder-"));
    for (const QString &secret : std::as_const(secrets)) {
        const QByteArray raw = secret.toUtf8();
        for (const QByteArray &form : {raw, raw.toBase64(), raw.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals),
                                       QUrl::toPercentEncoding(secret)})
            QVERIFY2(!bytes.contains(form), qPrintable(QStringLiteral("the cassette holds %1").arg(QString::fromUtf8(form))));
    }

    // Without the secrets the session still replays: a new token, new signatures.
    const auto cassette = CassetteFile::read(file, &error);
    QVERIFY2(cassette, qPrintable(error));
    Report replayed;
    QVERIFY2(cassetteplays::replay(play, *cassette, dir.filePath(QStringLiteral("replayed")), &replayed, &error, config), qPrintable(error));
    QVERIFY2(replayed.passed(), qPrintable(replayed.allFailures().join(QLatin1Char('\n'))));
}

void TestCassettes::changedRequestFailsReplay()
{
    QJsonObject json = committed(QStringLiteral("01-plain-return.json"));
    const QByteArray text = QJsonDocument(json).toJson().replace(R"("subsysNo": "100200")", R"("subsysNo": "100201")");
    QString error;
    const auto cassette = CassetteFile::read(write(QStringLiteral("changed.json"), text), &error);
    QVERIFY2(cassette, qPrintable(error));
    QTemporaryDir dir;
    Report report;
    QVERIFY2(cassetteplays::replay(cassetteplays::bundled(QStringLiteral("01-plain-return")), *cassette, dir.path(), &report, &error),
             qPrintable(error));
    QVERIFY(!report.passed());
    const QString failures = report.failures.join(QLatin1Char('\n'));
    QVERIFY2(failures.contains(QRegularExpression(QStringLiteral(
                 "no recorded request matches POST /advicenote; nearest: 2 POST /advicenote; body, byte [0-9]+: "
                 "recorded «[^»]*\"subsysNo\":\"100201\"[^»]*» sent «[^»]*\"subsysNo\":\"100200\""))),
             qPrintable(failures));
    // The client got a service error at once and showed it; nothing hung.
    bool shown = false;
    for (const ActionRecord &action : report.actions) {
        for (const DialogRecord &dialog : action.dialogs)
            shown = shown || dialog.text.contains(QStringLiteral("No recorded exchange matches this request"));
    }
    QVERIFY(shown);
}

// A cassette's header list of one [name, value] pair. Built by append: a
// QJsonArray braced around one QJsonArray is a copy of it for some compilers.
static QJsonArray headerList(const QString &name, const QString &value)
{
    QJsonArray list;
    list.append(QJsonArray{name, value});
    return list;
}

void TestCassettes::driftReport_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<bool>("withRules");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("line");
    QTest::newRow("status") << "status" << true << 1 << "  2 POST /advicenote  drifted: status: 201 → 200";
    QTest::newRow("key dropped") << "drop" << true << 1 << "  2 POST /advicenote  drifted: Key4: new";
    QTest::newRow("type") << "type" << true << 1 << "  2 POST /advicenote  drifted: invoiceID: type number → string";
    QTest::newRow("content type") << "type header" << true << 1 << "  2 POST /advicenote  drifted: header content-type: text/plain → application/json";
    QTest::newRow("content type parameters") << "charset" << true << 0 << "  2 POST /advicenote  same";
    QTest::newRow("uuid, rules") << "uuid" << true << 0 << "  2 POST /advicenote  same";
    QTest::newRow("uuid, no rules") << "uuid" << false << 1 << "  2 POST /advicenote  drifted: uuid: value \"00000000-0000-0000-0000-000000000000\" → \"";
}

void TestCassettes::driftReport()
{
    QFETCH(QString, edit);
    QFETCH(bool, withRules);
    QFETCH(int, code);
    QFETCH(QString, line);
    QJsonObject json = committed(QStringLiteral("01-plain-return.json"));
    QJsonArray exchanges = json.value(QStringLiteral("exchanges")).toArray();
    QJsonObject advice = exchanges.at(1).toObject();
    QJsonObject answer = advice.value(QStringLiteral("answer")).toObject();
    QJsonObject body = answer.value(QStringLiteral("body")).toObject();
    if (edit == QLatin1String("status"))
        answer.insert(QStringLiteral("status"), 201);
    else if (edit == QLatin1String("drop"))
        body.remove(QStringLiteral("Key4"));
    else if (edit == QLatin1String("type"))
        body.insert(QStringLiteral("invoiceID"), 12000001);
    else if (edit == QLatin1String("type header"))
        answer.insert(QStringLiteral("headers"), headerList(QStringLiteral("Content-Type"), QStringLiteral("text/plain")));
    else if (edit == QLatin1String("charset"))
        answer.insert(QStringLiteral("headers"), headerList(QStringLiteral("content-type"), QStringLiteral("application/json; charset=UTF-8")));
    else
        body.insert(QStringLiteral("uuid"), QStringLiteral("00000000-0000-0000-0000-000000000000"));
    answer.insert(QStringLiteral("body"), body);
    advice.insert(QStringLiteral("answer"), answer);
    exchanges[1] = advice;
    json.insert(QStringLiteral("exchanges"), exchanges);
    const QString file = write(QStringLiteral("drift-%1.json").arg(edit).replace(QLatin1Char(' '), QLatin1Char('-')), QJsonDocument(json).toJson());

    QStringList arguments{QStringLiteral("contract"), file};
    if (withRules)
        arguments << QStringLiteral("--rules") << QStringLiteral(TESSARO_CASSETTE_DIR "/rules.json");
    const Result result = runProgram(QStringLiteral(TILL_EXECUTABLE), arguments);
    QVERIFY2(result.code == code, qPrintable(result.out + result.err));
    QVERIFY2(result.out.contains(QStringLiteral("  1 POST /token  same\n")), qPrintable(result.out));
    QVERIFY2(result.out.contains(line), qPrintable(result.out));
    QVERIFY2(result.out.contains(code == 0 ? QStringLiteral("contract: 2 same, 0 drifted") : QStringLiteral("contract: 1 same, 1 drifted")),
             qPrintable(result.out));
}

void TestCassettes::newerFormatRefused_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("run --replay") << QStringLiteral(TILL_EXECUTABLE)
                                  << QStringList{QStringLiteral("run"), QStringLiteral(TILL_SCENARIO_DIR "/01-plain-return.json"), QStringLiteral("--replay")};
    QTest::newRow("contract") << QStringLiteral(TILL_EXECUTABLE) << QStringList{QStringLiteral("contract")};
    QTest::newRow("emulator --replay") << QStringLiteral(TESSARO_EMULATOR_PROGRAM) << QStringList{QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--replay")};
}

void TestCassettes::newerFormatRefused()
{
    QFETCH(QString, program);
    QFETCH(QStringList, arguments);
    QJsonObject json = committed(QStringLiteral("01-plain-return.json"));
    json.insert(QStringLiteral("cassetteVersion"), 2);
    const QString file = write(QStringLiteral("newer.json"), QJsonDocument(json).toJson());
    const Result result = runProgram(program, arguments << file);
    QVERIFY2(result.code == 2, qPrintable(result.out + result.err));
    QVERIFY2(result.err.contains(file + QStringLiteral(": the cassette has format version 2; this program reads up to version 1")),
             qPrintable(result.err));

    const Result garbled = runProgram(program, arguments.replaceInStrings(file, write(QStringLiteral("garbled.json"), "{\"cassetteVersion\": 1,")));
    QVERIFY2(garbled.code == 2, qPrintable(garbled.out + garbled.err));
    QVERIFY2(garbled.err.contains(QStringLiteral("not a cassette")), qPrintable(garbled.err));
}

void TestCassettes::onlyReadsAgainstAService()
{
    EmulatedTill till;
    tessaro::emulator::Emulator &service = till.emulator();
    QString error;
    QVERIFY2(till.start(m_dir.filePath(QStringLiteral("service-till")), &error), qPrintable(error));
    ContractCommand::Options options;
    options.cassette = QStringLiteral(TESSARO_CASSETTE_DIR "/01-plain-return.json");
    options.against = service.baseUrl().toString();
    options.tokenUrl = service.tokenUrl().toString();
    QString output;
    QTextStream out(&output);
    QCOMPARE(ContractCommand(options, &out, &out).run(), ExitCode::Passed);
    out.flush();
    QVERIFY2(output.contains(QStringLiteral("  1 POST /token  skipped (the till's credentials are needed: --data DIR)")), qPrintable(output));
    QCOMPARE(service.journal().size(), 0);

    // With the till's credentials the token request goes out, the advice note still not.
    options.dataFolder = till.folder().path();
    output.clear();
    QVERIFY2(ContractCommand(options, &out, &out).run() == ExitCode::Passed, qPrintable(output));
    out.flush();
    QVERIFY2(output.contains(QStringLiteral("only the token request and GETs are sent: --allow-writes sends the rest")), qPrintable(output));
    QVERIFY2(output.contains(QStringLiteral("  2 POST /advicenote  skipped (a write)")), qPrintable(output));
    QCOMPARE(service.journal().entriesFor(QStringLiteral("/advicenote")).size(), 0);
    QCOMPARE(service.journal().size(), 1);

    options.allowWrites = true;
    output.clear();
    ContractCommand(options, &out, &out).run();
    out.flush();
    QCOMPARE(service.journal().entriesFor(QStringLiteral("/advicenote")).size(), 1);
}

QTEST_GUILESS_MAIN(TestCassettes)
#include "tst_cassettes.moc"
