#include "runprogress.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

using namespace till;

class TestRunProgress : public QObject
{
    Q_OBJECT

private slots:
    void loadReadsTheJournal_data();
    void loadReadsTheJournal();
    void savingAddsToTheFile();
    void saveWritesWhatWasRecorded_data();
    void saveWritesWhatWasRecorded();
    void aFailedSaveLosesNothing();
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
    // One line of the journal.
    static QByteArray line(const QJsonObject &object)
    {
        return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    }
    static QByteArray actionLine(int index, int answers)
    {
        return line({{QStringLiteral("action"), action(index).toJson()}, {QStringLiteral("done"), index + 1}, {QStringLiteral("answers"), answers}});
    }
    // The journal's lines, each by its kind and numbers ("action 0 done 1 answers 1").
    static QStringList journal(const QString &file)
    {
        QStringList lines;
        const QList<QByteArray> written = content(file).split('\n');
        for (const QByteArray &text : written) {
            const QJsonObject object = QJsonDocument::fromJson(text).object();
            if (object.contains(QStringLiteral("run")))
                lines << QStringLiteral("run %1").arg(object.value(QStringLiteral("run")).toInt());
            else if (object.contains(QStringLiteral("action")))
                lines << QStringLiteral("action %1 done %2 answers %3")
                             .arg(object.value(QStringLiteral("action")).toObject().value(QStringLiteral("index")).toInt())
                             .arg(object.value(QStringLiteral("done")).toInt())
                             .arg(object.value(QStringLiteral("answers")).toInt());
            else if (object.contains(QStringLiteral("event")))
                lines << QStringLiteral("event");
            else if (object.value(QStringLiteral("finished")).toBool())
                lines << QStringLiteral("finished");
        }
        return lines;
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

void TestRunProgress::loadReadsTheJournal_data()
{
    // The journal as the till left it; a null one is no file at all.
    QTest::addColumn<QByteArray>("journal");
    QTest::addColumn<bool>("loaded");
    QTest::addColumn<bool>("resumed");
    QTest::addColumn<int>("run");
    QTest::addColumn<int>("done");
    QTest::addColumn<int>("answers");
    QTest::addColumn<QStringList>("titles");
    // What the journal holds after the load, or the error with %1 for its name.
    QTest::addColumn<QByteArray>("kept");
    QTest::addColumn<QString>("error");

    const QByteArray run = line({{QStringLiteral("run"), 3}});
    const QByteArray finished = line({{QStringLiteral("finished"), true}});
    ActionRecord start;
    start.type = QStringLiteral("start");
    start.title = QStringLiteral("till started");
    const QByteArray event = line({{QStringLiteral("event"), start.toJson()}});
    const QByteArray actions = actionLine(0, 1) + actionLine(1, 3);
    const QStringList none;
    const QStringList both{QStringLiteral("add 0"), QStringLiteral("add 1")};

    QTest::newRow("no journal") << QByteArray() << true << false << 0 << 0 << 0 << none << QByteArray() << QString();
    QTest::newRow("empty journal") << QByteArray("") << true << false << 0 << 0 << 0 << none << QByteArray("") << QString();
    QTest::newRow("run begun") << run << true << true << 3 << 0 << 0 << none << run << QString();
    QTest::newRow("actions done") << run + actions << true << true << 3 << 2 << 3 << both << run + actions << QString();
    QTest::newRow("start and actions") << run + event + actions << true << true << 3 << 2 << 3
                                       << QStringList{QStringLiteral("till started"), QStringLiteral("add 0"), QStringLiteral("add 1")}
                                       << run + event + actions << QString();
    QTest::newRow("run finished") << run + actions + finished << true << false << 0 << 0 << 0 << none << run + actions + finished << QString();
    QTest::newRow("first line torn") << run.left(5) << true << false << 0 << 0 << 0 << none << run.left(5) << QString();
    QTest::newRow("last line torn") << run + actions + actionLine(2, 4).left(20) << true << true << 3 << 2 << 3 << both << run + actions << QString();
    QTest::newRow("last line without its end") << run + actions + actionLine(2, 4).chopped(1) << true << true << 3 << 2 << 3 << both
                                               << run + actions << QString();
    QTest::newRow("last line damaged") << run + actions + QByteArray("{\"action\": }\n") << true << true << 3 << 2 << 3 << both
                                       << run + actions << QString();
    QTest::newRow("finish torn") << run + actions + finished.left(6) << true << true << 3 << 2 << 3 << both << run + actions << QString();
    const QByteArray damaged = run + QByteArray("{\"action\": }\n") + actionLine(1, 3);
    QTest::newRow("line damaged before the last") << damaged << false << false << 0 << 0 << 0 << none << damaged
                                                  << QStringLiteral("%1 is damaged at line 2");
    const QByteArray blank = run + QByteArray("\n") + actions;
    QTest::newRow("blank line") << blank << false << false << 0 << 0 << 0 << none << blank << QStringLiteral("%1 is damaged at line 2");
    const QByteArray array = run + actionLine(0, 1) + QByteArray("[1, 2]\n") + actionLine(1, 3);
    QTest::newRow("line that is no object") << array << false << false << 0 << 0 << 0 << none << array << QStringLiteral("%1 is damaged at line 3");
    QTest::newRow("actions without a run") << actions << true << false << 0 << 0 << 0 << none << actions << QString();
}

void TestRunProgress::loadReadsTheJournal()
{
    QFETCH(QByteArray, journal);
    QFETCH(bool, loaded);
    QFETCH(bool, resumed);
    QFETCH(int, run);
    QFETCH(int, done);
    QFETCH(int, answers);
    QFETCH(QStringList, titles);
    QFETCH(QByteArray, kept);
    QFETCH(QString, error);
    QTemporaryDir dir;
    RunProgress progress(dir.path(), m_scenario);
    if (!journal.isNull()) {
        QFile file(progress.fileName());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(journal), journal.size());
    }
    QString said;
    QCOMPARE(progress.load(&said), loaded);
    QCOMPARE(said, error.isEmpty() ? QString() : error.arg(progress.fileName()));
    QCOMPARE(progress.isResumed(), resumed);
    QCOMPARE(progress.run(), run);
    QCOMPARE(progress.done(), done);
    QCOMPARE(progress.answers(), answers);
    QStringList read;
    const QList<ActionRecord> records = progress.records();
    for (const ActionRecord &record : records)
        read << record.title;
    QCOMPARE(read, titles);
    QCOMPARE(QFile::exists(progress.fileName()), !journal.isNull());
    if (!journal.isNull())
        QCOMPARE(content(progress.fileName()), kept);
}

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

void TestRunProgress::saveWritesWhatWasRecorded_data()
{
    // What the till does: "run N", "action INDEX ANSWERS", "event", "finish", "save", "clear".
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<QStringList>("lines");

    QTest::newRow("nothing saved") << QStringList{"run 4", "action 0 1"} << QStringList{};
    QTest::newRow("run begun") << QStringList{"run 4", "save"} << QStringList{"run 4"};
    QTest::newRow("saved twice, written once") << QStringList{"run 4", "action 0 1", "save", "save"}
                                               << QStringList{"run 4", "action 0 done 1 answers 1"};
    QTest::newRow("actions saved one by one") << QStringList{"run 4", "action 0 1", "save", "action 1 3", "save"}
                                              << QStringList{"run 4", "action 0 done 1 answers 1", "action 1 done 2 answers 3"};
    QTest::newRow("start of the till") << QStringList{"run 4", "event", "action 0 2", "save"}
                                       << QStringList{"run 4", "event", "action 0 done 1 answers 2"};
    QTest::newRow("finish saved once") << QStringList{"run 4", "action 0 1", "finish", "save", "save"}
                                       << QStringList{"run 4", "action 0 done 1 answers 1", "finished"};
    QTest::newRow("finish after a save") << QStringList{"run 4", "action 0 1", "save", "finish", "save"}
                                         << QStringList{"run 4", "action 0 done 1 answers 1", "finished"};
    QTest::newRow("cleared, then run again") << QStringList{"run 1", "action 0 1", "save", "clear", "run 2", "action 0 1", "save"}
                                             << QStringList{"run 2", "action 0 done 1 answers 1"};
    QTest::newRow("cleared before its save") << QStringList{"run 1", "action 0 1", "clear", "save"} << QStringList{"run 0"};
}

void TestRunProgress::saveWritesWhatWasRecorded()
{
    QFETCH(QStringList, steps);
    QFETCH(QStringList, lines);
    QTemporaryDir dir;
    RunProgress progress(dir.path(), m_scenario);
    QString error;
    QVERIFY2(progress.load(&error), qPrintable(error));
    for (const QString &step : std::as_const(steps)) {
        const QStringList words = step.split(QLatin1Char(' '));
        if (words.first() == QLatin1String("run"))
            progress.setRun(words.at(1).toInt());
        else if (words.first() == QLatin1String("action"))
            progress.recordAction(action(words.at(1).toInt()), words.at(2).toInt());
        else if (words.first() == QLatin1String("event"))
            progress.recordEvent(ActionRecord());
        else if (words.first() == QLatin1String("finish"))
            progress.finish();
        else if (words.first() == QLatin1String("clear"))
            progress.clear();
        else
            QVERIFY2(progress.save(&error), qPrintable(error));
    }
    QCOMPARE(journal(progress.fileName()), lines);
}

void TestRunProgress::aFailedSaveLosesNothing()
{
    QTemporaryDir dir;
    // The progress folder cannot be made while a file stands in its place.
    const QString folder = dir.filePath(QStringLiteral("progress"));
    QFile blocker(folder);
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    RunProgress progress(folder, m_scenario);
    QString error;
    QVERIFY2(progress.load(&error), qPrintable(error));
    progress.setRun(6);
    progress.recordAction(action(0), 1);
    progress.finish();
    QVERIFY(!progress.save(&error));
    QVERIFY(!error.isEmpty());

    QVERIFY(QFile::remove(folder));
    error.clear();
    QVERIFY2(progress.save(&error), qPrintable(error));
    QCOMPARE(journal(progress.fileName()), (QStringList{"run 6", "action 0 done 1 answers 1", "finished"}));
}

QTEST_GUILESS_MAIN(TestRunProgress)
#include "tst_runprogress.moc"
