// The tessaro-emulator program: command line, settings file, the port on the
// first line of standard output, and serving.
#include "curlclient.h"

#include <tessaroversion.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestEmulatorProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void printsFreePortFirstAndServes();
    void helpListsOptions();
    void versionIsTheProjects();
    void refusesBadInput_data();
    void refusesBadInput();

private:
    QString writeConfig(const QString &name, const QByteArray &json);

    QTemporaryDir m_dir;
};

void TestEmulatorProgram::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

QString TestEmulatorProgram::writeConfig(const QString &name, const QByteArray &json)
{
    const QString fileName = m_dir.filePath(name);
    QFile file(fileName);
    if (file.open(QIODevice::WriteOnly))
        file.write(json);
    return fileName;
}

void TestEmulatorProgram::printsFreePortFirstAndServes()
{
    const QString config = writeConfig(QStringLiteral("serve.json"), R"({
        "basePath": "/api",
        "auth": "none",
        "messages": {"hello": ["Привет"]}
    })");
    QProcess program;
    program.start(QStringLiteral(TESSARO_EMULATOR_PROGRAM), {QStringLiteral("--port"), QStringLiteral("0"),
                                                             QStringLiteral("--config"), config});
    QVERIFY(program.waitForStarted(5000));
    while (!program.canReadLine())
        QVERIFY2(program.waitForReadyRead(5000), program.readAllStandardError().constData());
    bool ok = false;
    const uint port = program.readLine().trimmed().toUInt(&ok);
    QVERIFY(ok);
    QVERIFY(port > 0 && port < 65536);

    CurlClient client;
    const CurlResult result = client.get(QUrl(QStringLiteral("http://127.0.0.1:%1/api/messages/hello").arg(port)));
    QCOMPARE(result.status, 200L);
    QCOMPARE(result.array().first().toObject().value(QStringLiteral("message")).toString(), QStringLiteral("Привет"));

    program.terminate();
    QVERIFY(program.waitForFinished(5000));
}

void TestEmulatorProgram::helpListsOptions()
{
    QProcess program;
    program.start(QStringLiteral(TESSARO_EMULATOR_PROGRAM), {QStringLiteral("--help")});
    QVERIFY(program.waitForFinished(5000));
    QCOMPARE(program.exitCode(), 0);
    const QByteArray help = program.readAllStandardOutput();
    QVERIFY(help.contains("--port"));
    QVERIFY(help.contains("--config"));
}

void TestEmulatorProgram::versionIsTheProjects()
{
    QProcess program;
    program.start(QStringLiteral(TESSARO_EMULATOR_PROGRAM), {QStringLiteral("--version")});
    QVERIFY(program.waitForFinished(5000));
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.readAllStandardOutput(), QByteArrayLiteral("tessaro-emulator " TESSARO_VERSION "\n"));
}

void TestEmulatorProgram::refusesBadInput_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("unknown setting")
        << QStringList{QStringLiteral("--config"), writeConfig(QStringLiteral("typo.json"), R"({"bsePath": "/api"})")}
        << QByteArray("unknown setting 'bsePath'");
    QTest::newRow("gateway without key")
        << QStringList{QStringLiteral("--config"), writeConfig(QStringLiteral("gate.json"), R"({"auth": "gateway"})")}
        << QByteArray("gateway mode needs");
    QTest::newRow("not JSON")
        << QStringList{QStringLiteral("--config"), writeConfig(QStringLiteral("broken.json"), "{")}
        << QByteArray("is not a JSON object");
    QTest::newRow("missing file") << QStringList{QStringLiteral("--config"), m_dir.filePath(QStringLiteral("none.json"))}
                                  << QByteArray("cannot read");
    QTest::newRow("port out of range") << QStringList{QStringLiteral("--port"), QStringLiteral("70000")}
                                       << QByteArray("--port needs a number");
}

void TestEmulatorProgram::refusesBadInput()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    QProcess program;
    program.start(QStringLiteral(TESSARO_EMULATOR_PROGRAM), arguments);
    QVERIFY(program.waitForFinished(5000));
    QCOMPARE(program.exitCode(), 2);
    QVERIFY2(program.readAllStandardError().contains(error), error.constData());
    QVERIFY(program.readAllStandardOutput().isEmpty());
}

QTEST_GUILESS_MAIN(TestEmulatorProgram)
#include "tst_emulatorprogram.moc"
