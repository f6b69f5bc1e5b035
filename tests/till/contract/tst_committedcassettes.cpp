#include "cassetteplays.h"
#include "contractcommand.h"

#include <contracts/cassettefile.h>

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

using namespace till;

/// Every cassette committed under tests/data/cassettes replays offline with
/// the plug-in as built (the client still sends exactly the recorded
/// requests and every expectation holds), and the emulator still answers
/// its requests by the recorded contract.
class TestCommittedCassettes : public QObject
{
    Q_OBJECT

private slots:
    void replays_data();
    void replays();
    void emulatorKeepsTheContract_data() { replays_data(); }
    void emulatorKeepsTheContract();
    void answersKeepTheirHeaders_data() { replays_data(); }
    void answersKeepTheirHeaders();

private:
    static QDir folder() { return QDir(QStringLiteral(TESSARO_CASSETTE_DIR)); }
};

void TestCommittedCassettes::replays_data()
{
    QTest::addColumn<QString>("file");
    const QStringList files = folder().entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    int cassettes = 0;
    for (const QString &file : files) {
        if (file == QLatin1String("rules.json"))
            continue;
        QTest::newRow(qPrintable(file)) << folder().filePath(file);
        ++cassettes;
    }
    QVERIFY(cassettes >= 5);
}

void TestCommittedCassettes::replays()
{
    QFETCH(QString, file);
    QString error;
    const auto cassette = tessaro::contracts::CassetteFile::read(file, &error);
    QVERIFY2(cassette, qPrintable(error));
    const DemoRunner::Play play = cassetteplays::bundled(QFileInfo(file).completeBaseName());
    QVERIFY2(!play.scenario.isEmpty(), "a committed cassette is named after a bundled scenario");
    QTemporaryDir dir;
    Report report;
    QVERIFY2(cassetteplays::replay(play, *cassette, dir.filePath(QStringLiteral("till")), &report, &error), qPrintable(error));
    QVERIFY2(report.passed(), qPrintable(report.allFailures().join(QLatin1Char('\n'))));
}

void TestCommittedCassettes::emulatorKeepsTheContract()
{
    QFETCH(QString, file);
    const DemoRunner::Play play = cassetteplays::bundled(QFileInfo(file).completeBaseName());
    QTemporaryDir dir;
    ContractCommand::Options options;
    options.cassette = file;
    options.rulesFile = folder().filePath(QStringLiteral("rules.json"));
    if (!play.emulatorSettings.isEmpty()) {
        options.emulatorSettings = dir.filePath(QStringLiteral("emulator.json"));
        QFile settings(options.emulatorSettings);
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write(play.emulatorSettings);
    }
    QString output;
    QTextStream out(&output);
    QTextStream err(&output);
    const ExitCode code = ContractCommand(options, &out, &err).run();
    out.flush();
    QVERIFY2(code == ExitCode::Passed, qPrintable(output));
    QVERIFY2(output.contains(QStringLiteral(" 0 drifted, 0 skipped")), qPrintable(output));
}

void TestCommittedCassettes::answersKeepTheirHeaders()
{
    QFETCH(QString, file);
    QString error;
    const auto cassette = tessaro::contracts::CassetteFile::read(file, &error);
    QVERIFY2(cassette, qPrintable(error));
    for (const tessaro::contracts::CassetteExchange &exchange : cassette->exchanges) {
        if (exchange.networkError)
            continue;
        const auto type = tessaro::contracts::CassetteExchange::header(exchange.responseHeaders, QStringLiteral("Content-Type"));
        QVERIFY2(type && type->startsWith(QLatin1String("application/json")), qPrintable(exchange.method + QLatin1Char(' ') + exchange.path));
    }
}

QTEST_GUILESS_MAIN(TestCommittedCassettes)
#include "tst_committedcassettes.moc"
