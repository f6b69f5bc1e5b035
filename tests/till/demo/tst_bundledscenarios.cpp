#include "demorunner.h"

#include <QTemporaryDir>
#include <QTest>

using namespace till;

/// The bundled scenarios, with the real plug-in, against the emulator: every
/// expectation of every scenario must hold.
class TestBundledScenarios : public QObject
{
    Q_OBJECT

private slots:
    void scenarioHolds_data();
    void scenarioHolds();
};

void TestBundledScenarios::scenarioHolds_data()
{
    QTest::addColumn<int>("index");
    const QList<DemoRunner::Play> plays = DemoRunner::bundled();
    QVERIFY(plays.size() >= 5);
    for (int i = 0; i < plays.size(); ++i)
        QTest::newRow(qPrintable(plays.at(i).name)) << i;
}

void TestBundledScenarios::scenarioHolds()
{
    QFETCH(int, index);
    const DemoRunner::Play play = DemoRunner::bundled().at(index);
    QTemporaryDir dir;
    Report report;
    QString error;
    QVERIFY2(DemoRunner::play(play, dir.filePath(QStringLiteral("till")), QStringLiteral(TILL_PLUGIN_DIR), &report, &error), qPrintable(error));
    const QStringList failures = report.allFailures();
    QVERIFY2(failures.isEmpty(), qPrintable(failures.join(QLatin1Char('\n'))));
}

QTEST_GUILESS_MAIN(TestBundledScenarios)
#include "tst_bundledscenarios.moc"
