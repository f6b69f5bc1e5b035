#include "reportwords.h"

#include <QTest>

using namespace till;

Q_DECLARE_METATYPE(ExitCode)

class TestReportWords : public QObject
{
    Q_OBJECT

private slots:
    void verdict_data();
    void verdict();
    void count_data();
    void count();
    void aNounThatStaysTheSame();
    void failureStandsUnderItsLine();
    void tallyJoinsTheCounts();
    void exitCode_data();
    void exitCode();
};

void TestReportWords::verdict_data()
{
    QTest::addColumn<bool>("passed");
    QTest::addColumn<QString>("word");
    QTest::newRow("passed") << true << QStringLiteral("passed");
    QTest::newRow("failed") << false << QStringLiteral("FAILED");
}

void TestReportWords::verdict()
{
    QFETCH(bool, passed);
    QFETCH(QString, word);
    QCOMPARE(ReportWords::verdict(passed), word);
}

void TestReportWords::count_data()
{
    QTest::addColumn<qint64>("count");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << qint64(0) << QStringLiteral("0 warnings");
    QTest::newRow("one") << qint64(1) << QStringLiteral("1 warning");
    QTest::newRow("two") << qint64(2) << QStringLiteral("2 warnings");
    QTest::newRow("many") << qint64(29294) << QStringLiteral("29294 warnings");
}

void TestReportWords::count()
{
    QFETCH(qint64, count);
    QFETCH(QString, text);
    QCOMPARE(ReportWords::count(count, QStringLiteral("warning"), QStringLiteral("warnings")), text);
}

void TestReportWords::aNounThatStaysTheSame()
{
    QCOMPARE(ReportWords::count(1, QStringLiteral("dialog(s)")), QStringLiteral("1 dialog(s)"));
    QCOMPARE(ReportWords::count(3, QStringLiteral("dialog(s)")), QStringLiteral("3 dialog(s)"));
}

void TestReportWords::failureStandsUnderItsLine()
{
    QCOMPARE(ReportWords::failure(QStringLiteral("result: expected 2, found 0")), QStringLiteral("FAILED  result: expected 2, found 0"));
}

void TestReportWords::tallyJoinsTheCounts()
{
    QCOMPARE(ReportWords::tally({QStringLiteral("5 passed"), QStringLiteral("0 failed")}), QStringLiteral("5 passed, 0 failed"));
    QCOMPARE(ReportWords::tally({QStringLiteral("1 ok")}), QStringLiteral("1 ok"));
}

void TestReportWords::exitCode_data()
{
    QTest::addColumn<ExitCode>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("passed") << ExitCode::Passed << QStringLiteral("(exit code 0)");
    QTest::newRow("failed") << ExitCode::Failed << QStringLiteral("(exit code 1)");
    QTest::newRow("bad input") << ExitCode::BadInput << QStringLiteral("(exit code 2)");
    QTest::newRow("cannot run") << ExitCode::CannotRun << QStringLiteral("(exit code 3)");
}

void TestReportWords::exitCode()
{
    QFETCH(ExitCode, code);
    QFETCH(QString, text);
    QCOMPARE(ReportWords::exitCode(code), text);
}

QTEST_GUILESS_MAIN(TestReportWords)
#include "tst_reportwords.moc"
