#include "exitcode.h"

#include <QTest>

using namespace till;

Q_DECLARE_METATYPE(ExitCode)

class TestExitCode : public QObject
{
    Q_OBJECT

private slots:
    void statusIsTheTablesNumber_data();
    void statusIsTheTablesNumber();
    void verdict_data();
    void verdict();
};

void TestExitCode::statusIsTheTablesNumber_data()
{
    QTest::addColumn<ExitCode>("code");
    QTest::addColumn<int>("status");
    QTest::newRow("passed") << ExitCode::Passed << 0;
    QTest::newRow("failed") << ExitCode::Failed << 1;
    QTest::newRow("bad input") << ExitCode::BadInput << 2;
    QTest::newRow("cannot run") << ExitCode::CannotRun << 3;
}

void TestExitCode::statusIsTheTablesNumber()
{
    QFETCH(ExitCode, code);
    QFETCH(int, status);
    QCOMPARE(exitStatus(code), status);
}

void TestExitCode::verdict_data()
{
    QTest::addColumn<int>("warnings");
    QTest::addColumn<int>("failures");
    QTest::addColumn<ExitCode>("code");
    QTest::newRow("all ok") << 0 << 0 << ExitCode::Passed;
    QTest::newRow("a warning") << 1 << 0 << ExitCode::Failed;
    QTest::newRow("warnings") << 3 << 0 << ExitCode::Failed;
    QTest::newRow("a failure") << 0 << 1 << ExitCode::BadInput;
    QTest::newRow("a failure and warnings") << 2 << 1 << ExitCode::BadInput;
}

void TestExitCode::verdict()
{
    QFETCH(int, warnings);
    QFETCH(int, failures);
    QFETCH(ExitCode, code);
    QCOMPARE(verdictExitCode(warnings, failures), code);
}

QTEST_GUILESS_MAIN(TestExitCode)
#include "tst_exitcode.moc"
