#include "simulationworkerpool.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTest>
#include <QTextStream>

using namespace till;

/// Workers are small shell scripts that write what a worker writes (a line as
/// a session begins, one with its outcome) and end as the case needs.
class TestSimulationWorkerPool : public QObject
{
    Q_OBJECT

private slots:
    void addsEveryWorkersSessions();
    void workerEndings_data();
    void workerEndings();
    void crashedWorkerGoesOnAtItsNextSession();
    void workerThatCannotStart();

private:
    struct Run
    {
        SimulationReport report{7};
        QString err;
        QList<int> starts;
    };

    static QString begin(int index) { return QStringLiteral("echo '{\"begin\": %1, \"seed\": %2}'; ").arg(index).arg(100 + index); }

    static QString outcome(int index)
    {
        SessionOutcome played;
        played.seed = quint64(100 + index);
        played.steps = 3;
        QJsonObject line = played.toJson();
        line.insert(QStringLiteral("index"), index);
        return QStringLiteral("echo '%1'; ").arg(QString::fromUtf8(QJsonDocument(line).toJson(QJsonDocument::Compact)));
    }

    /// Runs \a jobs workers over \a total sessions; \a script gives a worker's shell script by its first session.
    static void run(Run *result, int jobs, int total, const std::function<QString(int first)> &script, const QString &program = QStringLiteral("/bin/sh"))
    {
        SimulationWorkerPool::Setup setup;
        setup.program = program;
        setup.jobs = jobs;
        setup.total = total;
        setup.arguments = [result, script](int first) {
            result->starts << first;
            return QStringList{QStringLiteral("-c"), script(first)};
        };
        setup.replayCommand = [](quint64 seed) { return QStringLiteral("replay %1").arg(seed); };
        QTextStream err(&result->err);
        QElapsedTimer clock;
        clock.start();
        SimulationWorkerPool(setup, &result->report, &err).run(clock);
    }
};

void TestSimulationWorkerPool::addsEveryWorkersSessions()
{
    Run result;
    run(&result, 2, 4, [](int first) { return begin(first) + outcome(first) + begin(first + 2) + outcome(first + 2); });
    QCOMPARE(result.starts, (QList<int>{0, 1}));
    QCOMPARE(result.report.sessions(), 4);
    QCOMPARE(result.report.violations(), 0);
    QVERIFY(result.report.failures().isEmpty());
    QCOMPARE(result.err, QString());
}

void TestSimulationWorkerPool::workerEndings_data()
{
    QTest::addColumn<QString>("ending");
    QTest::addColumn<bool>("inSession");
    QTest::addColumn<QString>("invariant");
    QTest::addColumn<QString>("detail");
    QTest::newRow("killed inside a session") << QStringLiteral("kill -9 $$") << true << QStringLiteral("no-crash")
                                             << QStringLiteral("the till process crashed");
    QTest::newRow("ended inside a session") << QStringLiteral("exit 3") << true << QStringLiteral("no-crash")
                                            << QStringLiteral("the till process ended with exit code 3");
    QTest::newRow("ended badly after its sessions") << QStringLiteral("exit 1") << false << QStringLiteral("no-sanitizer-report")
                                                    << QStringLiteral("a worker ended with exit code 1 after its sessions");
    QTest::newRow("killed after its sessions") << QStringLiteral("kill -9 $$") << false << QStringLiteral("no-sanitizer-report")
                                               << QStringLiteral("a worker ended with a crash after its sessions");
}

void TestSimulationWorkerPool::workerEndings()
{
    QFETCH(QString, ending);
    QFETCH(bool, inSession);
    QFETCH(QString, invariant);
    QFETCH(QString, detail);
    Run result;
    run(&result, 1, 1, [&](int first) { return begin(first) + (inSession ? QString() : outcome(first)) + ending; });
    QCOMPARE(result.starts, QList<int>{0});
    QCOMPARE(result.report.sessions(), 1);
    QCOMPARE(result.report.violations(), 1);
    QCOMPARE(result.report.failures().size(), 1);
    const SimulationReport::Failure failure = result.report.failures().first();
    QCOMPARE(failure.invariant, invariant);
    QCOMPARE(failure.detail, detail);
    QCOMPARE(failure.seed, inSession ? quint64(100) : quint64(0));
    QCOMPARE(failure.replay, inSession ? QStringLiteral("replay 100") : QString());
    QVERIFY2(result.err.contains(detail), qPrintable(result.err));
}

void TestSimulationWorkerPool::crashedWorkerGoesOnAtItsNextSession()
{
    Run result;
    run(&result, 1, 3, [](int first) { return first == 0 ? begin(0) + QStringLiteral("kill -9 $$") : begin(first) + outcome(first) + begin(first + 1) + outcome(first + 1); });
    QCOMPARE(result.starts, (QList<int>{0, 1}));
    QCOMPARE(result.report.sessions(), 3);
    QCOMPARE(result.report.violations(), 1);
    QCOMPARE(result.report.failures().first().seed, quint64(100));
}

void TestSimulationWorkerPool::workerThatCannotStart()
{
    Run result;
    run(&result, 2, 2, [](int) { return QString(); }, QStringLiteral("/nonexistent/tessaro-till"));
    QCOMPARE(result.report.sessions(), 0);
    QCOMPARE(result.report.violations(), 2);
    QCOMPARE(result.report.failures().first().invariant, QStringLiteral("setup"));
    QCOMPARE(result.report.failures().first().detail, QStringLiteral("a worker could not start: /nonexistent/tessaro-till"));
}

QTEST_GUILESS_MAIN(TestSimulationWorkerPool)
#include "tst_simulationworkerpool.moc"
