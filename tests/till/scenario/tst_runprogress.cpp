#include "runprogress.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace till;

class TestRunProgress : public QObject
{
    Q_OBJECT

private slots:
    void savingAddsToTheFile();
    void resumesAfterARestart();
    void aFinishedRunStartsAnew();
    void ignoresATornLastLine();
    void refusesAnUnfinishedRunOfTheOlderFormat();
    void forgetsAFinishedRunOfTheOlderFormat();
    void clearForgetsTheRun();

private:
    static ActionRecord action(int index)
    {
        ActionRecord record;
        record.index = index;
        record.type = QStringLiteral("add");
        record.title = QStringLiteral("add %1").arg(index);
        record.result = 2;
        record.notes << QStringLiteral("note %1").arg(index);
        return record;
    }
    static QByteArray content(const QString &file)
    {
        QFile read(file);
        return read.open(QIODevice::ReadOnly) ? read.readAll() : QByteArray();
    }
    // Where a till of the older kind kept the same run's progress.
    static QString olderFile(const RunProgress &progress)
    {
        const QFileInfo info(progress.fileName());
        return info.dir().filePath(info.completeBaseName() + QStringLiteral(".json"));
    }

    const QByteArray m_scenario = "{\"name\": \"a day\"}";
};

void TestRunProgress::savingAddsToTheFile()
{
    QTemporaryDir dir;
    RunProgress progress(dir.path(), m_scenario);
    QString error;
    QVERIFY2(progress.load(&error), qPrintable(error));
    progress.setRun(4);
    QVERIFY2(progress.save(&error), qPrintable(error));
    QByteArray before = content(progress.fileName());
    QVERIFY(!before.isEmpty());
    for (int i = 0; i < 3; ++i) {
        progress.recordAction(action(i), i + 1);
        QVERIFY2(progress.save(&error), qPrintable(error));
        const QByteArray after = content(progress.fileName());
        // What was saved stays as it was: the new action goes at the end.
        QVERIFY2(after.startsWith(before), after.constData());
        QVERIFY(after.size() > before.size());
        before = after;
    }
    QCOMPARE(QFileInfo(progress.fileName()).permissions() & ~(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser),
             QFileDevice::Permissions());
}

void TestRunProgress::resumesAfterARestart()
{
    QTemporaryDir dir;
    QString error;
    {
        RunProgress progress(dir.path(), m_scenario);
        QVERIFY(progress.load(&error));
        QVERIFY(!progress.isResumed());
        progress.setRun(7);
        ActionRecord start;
        start.index = 0;
        start.type = QStringLiteral("start");
        progress.recordEvent(start);
        QVERIFY(progress.save(&error));
        progress.recordAction(action(0), 1);
        QVERIFY(progress.save(&error));
        progress.recordAction(action(1), 3);
        QVERIFY(progress.save(&error));
    }
    RunProgress progress(dir.path(), m_scenario);
    QVERIFY2(progress.load(&error), qPrintable(error));
    QVERIFY(progress.isResumed());
    QCOMPARE(progress.run(), 7);
    QCOMPARE(progress.done(), 2);
    QCOMPARE(progress.answers(), 3);
    const QList<ActionRecord> records = progress.records();
    QCOMPARE(records.size(), 3);
    QCOMPARE(records.at(0).type, QStringLiteral("start"));
    QCOMPARE(records.at(2).title, QStringLiteral("add 1"));
    QCOMPARE(records.at(2).notes, QStringList{QStringLiteral("note 1")});

    // The restarted till goes on where it was.
    progress.recordAction(action(2), 4);
    QVERIFY(progress.save(&error));
    RunProgress again(dir.path(), m_scenario);
    QVERIFY(again.load(&error));
    QCOMPARE(again.done(), 3);
    QCOMPARE(again.answers(), 4);
    QCOMPARE(again.records().size(), 4);
}

void TestRunProgress::aFinishedRunStartsAnew()
{
    QTemporaryDir dir;
    QString error;
    {
        RunProgress progress(dir.path(), m_scenario);
        QVERIFY(progress.load(&error));
        progress.setRun(1);
        progress.recordAction(action(0), 1);
        progress.finish();
        QVERIFY(progress.save(&error));
    }
    RunProgress progress(dir.path(), m_scenario);
    QVERIFY(progress.load(&error));
    QVERIFY(!progress.isResumed());
    QCOMPARE(progress.done(), 0);
    QVERIFY(progress.records().isEmpty());
    progress.setRun(2);
    progress.recordAction(action(0), 1);
    QVERIFY(progress.save(&error));
    // The new run's file holds the new run alone.
    RunProgress resumed(dir.path(), m_scenario);
    QVERIFY(resumed.load(&error));
    QVERIFY(resumed.isResumed());
    QCOMPARE(resumed.run(), 2);
    QCOMPARE(resumed.records().size(), 1);
}

void TestRunProgress::ignoresATornLastLine()
{
    QTemporaryDir dir;
    QString error;
    QString file;
    {
        RunProgress progress(dir.path(), m_scenario);
        QVERIFY(progress.load(&error));
        progress.setRun(3);
        progress.recordAction(action(0), 1);
        progress.recordAction(action(1), 2);
        QVERIFY(progress.save(&error));
        file = progress.fileName();
    }
    // The till was killed while it wrote the third action.
    QFile torn(file);
    QVERIFY(torn.open(QIODevice::Append));
    torn.write("{\"action\": {\"index\": 2, \"ty");
    torn.close();

    RunProgress progress(dir.path(), m_scenario);
    QVERIFY2(progress.load(&error), qPrintable(error));
    QVERIFY(progress.isResumed());
    QCOMPARE(progress.done(), 2);
    QCOMPARE(progress.answers(), 2);
    QCOMPARE(progress.records().size(), 2);
    progress.recordAction(action(2), 3);
    QVERIFY(progress.save(&error));

    RunProgress again(dir.path(), m_scenario);
    QVERIFY2(again.load(&error), qPrintable(error));
    QCOMPARE(again.done(), 3);
    QCOMPARE(again.records().size(), 3);
    QCOMPARE(again.records().last().title, QStringLiteral("add 2"));
}

void TestRunProgress::refusesAnUnfinishedRunOfTheOlderFormat()
{
    QTemporaryDir dir;
    RunProgress progress(dir.path(), m_scenario);
    QFile older(olderFile(progress));
    QVERIFY(older.open(QIODevice::WriteOnly));
    older.write(R"({"run": 2, "done": 1, "answers": 0, "finished": false, "records": [{"index": 0, "type": "bind"}]})");
    older.close();
    QString error;
    QVERIFY(!progress.load(&error));
    QCOMPARE(error, QStringLiteral("%1 holds an unfinished run saved by an older till, which this one cannot continue; "
                                   "start the scenario over with --again")
                        .arg(olderFile(progress)));
}

void TestRunProgress::forgetsAFinishedRunOfTheOlderFormat()
{
    QTemporaryDir dir;
    RunProgress progress(dir.path(), m_scenario);
    QFile older(olderFile(progress));
    QVERIFY(older.open(QIODevice::WriteOnly));
    older.write(R"({"run": 2, "done": 1, "answers": 0, "finished": true, "records": []})");
    older.close();
    QString error;
    QVERIFY2(progress.load(&error), qPrintable(error));
    QVERIFY(!progress.isResumed());
    QVERIFY(!QFile::exists(olderFile(progress)));
}

void TestRunProgress::clearForgetsTheRun()
{
    QTemporaryDir dir;
    QString error;
    RunProgress progress(dir.path(), m_scenario);
    QVERIFY(progress.load(&error));
    progress.setRun(5);
    progress.recordAction(action(0), 1);
    QVERIFY(progress.save(&error));
    QFile older(olderFile(progress));
    QVERIFY(older.open(QIODevice::WriteOnly));
    older.write(R"({"run": 2, "done": 1, "finished": false})");
    older.close();
    progress.clear();
    QVERIFY(!QFile::exists(progress.fileName()));
    QVERIFY(!QFile::exists(olderFile(progress)));
    RunProgress fresh(dir.path(), m_scenario);
    QVERIFY2(fresh.load(&error), qPrintable(error));
    QVERIFY(!fresh.isResumed());
}

QTEST_GUILESS_MAIN(TestRunProgress)
#include "tst_runprogress.moc"
