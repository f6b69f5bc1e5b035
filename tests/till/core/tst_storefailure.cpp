#include "actionlog.h"
#include "actionplayer.h"
#include "cashierscript.h"
#include "emulatedtill.h"
#include "jsonfile.h"
#include "scenarioparser.h"
#include "till.h"
#include "tillactions.h"
#include "tilldatafolder.h"

#include <support/filesizelimit.h>

#include <documentsdao.h>
#include <singleton.h>
#include <emulator/emulator.h>
#include <emulator/journalentry.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>


using namespace till;
using tessaro::emulator::JournalEntry;

/// The real plug-in on a till whose disk fills up at the moment a return
/// closes: the till's store and the plug-in's own save fail, and neither
/// passes in silence.
class TestStoreFailure : public QObject
{
    Q_OBJECT

private slots:
    void fullDiskAtCloseIsShownAndLosesNothing();
    void shiftRecordAHookCannotWriteFailsTheAction();
    void jsonFileOnAFullDiskFailsAndKeepsTheLastCopy_data();
    void jsonFileOnAFullDiskFailsAndKeepsTheLastCopy();
};

namespace {

const QByteArray scenario = R"({
    "name": "A return closed on a full disk",
    "documents": {
        "return": {"type": "return", "card": "2770000000013",
                   "properties": {"invoiceInfo": {"cashCode": "12", "invoiceNumber": "401", "storeNumber": "7", "invoiceDate": "2024-02-01"}}}
    },
    "answers": [{"choice": 0}],
    "actions": [
        {"type": "bind", "document": "return"},
        {"type": "add", "position": {"code": "100200"}, "quantity": 2, "price": 75},
        {"type": "pay", "code": 1, "amount": 150}
    ]
})";

// The document file as the till reads it: a truncated one is no object at all.
QJsonObject documentOnDisk(const TillDataFolder &folder, const QString &id)
{
    QJsonObject document;
    QString error;
    if (!JsonFile::read(folder.documentsDir() + QLatin1Char('/') + id + QStringLiteral(".json"), &document, &error))
        qWarning("%s", qPrintable(error));
    return document;
}

QStringList dialogIds(const ActionRecord &record)
{
    QStringList ids;
    for (const DialogRecord &dialog : record.dialogs)
        ids << dialog.id;
    return ids;
}

} // namespace

namespace {

/// A till with the real plug-in and a return ready to close: bound, one
/// position with its reason, paid; the service is an emulator in this process.
struct ReturnToClose
{
    explicit ReturnToClose(const tessaro::emulator::EmulatorSettings &settings = {})
        : service(settings)
        , emulator(service.emulator())
        , folder(service.folder())
        , played(ScenarioParser().parse(scenario).value_or(Scenario()))
        , cashier(played.answers)
        , till(folder, &cashier, &log)
        , actions(&till, &log)
    {
        QString error;
        ready = service.start(&error) && till.start(QStringLiteral(TILL_PLUGIN_DIR), played.till, &error);
        ActionPlayer player(played, 0, &till, &actions, &log);
        for (int i = 0; ready && i < played.actions.size(); ++i)
            ready = player.play(played.actions.at(i), i).record.failures.isEmpty();
        if (!ready)
            qWarning("the return is not ready to close: %s", qPrintable(error));
    }

    EmulatedTill service;
    tessaro::emulator::Emulator &emulator;
    const TillDataFolder &folder;
    Scenario played;
    CashierScript cashier;
    ActionLog log;
    Till till;
    TillActions actions;
    bool ready = false;
};

} // namespace

void TestStoreFailure::fullDiskAtCloseIsShownAndLosesNothing()
{
    ReturnToClose bed;
    QVERIFY(bed.ready);
    tessaro::emulator::Emulator &emulator = bed.emulator;
    const TillDataFolder &folder = bed.folder;
    Till &till = bed.till;
    TillActions &actions = bed.actions;
    ActionLog &log = bed.log;
    const QString id = till.currentDocument()->getId();

    log.begin(3, QStringLiteral("close"), QString());
    std::optional<int> result;
    {
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression(QStringLiteral("^Не удалось сохранить документ с номером инвойса возврата ")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^documents store ")));
        const FileSizeLimit full(1024);
        QVERIFY(full.isSet());
        result = actions.close(false);
    }
    const ActionRecord refused = log.finish();

    // The service settled the return, but the till could not record the
    // close: the cashier is told, the record fails, the document stays open.
    QCOMPARE(result, std::optional<int>(EContext::Stop));
    QCOMPARE(dialogIds(refused), (QStringList{QStringLiteral("tessaroProgress"), QStringLiteral("tillStoreError")}));
    QCOMPARE(refused.dialogs.constLast().kind, QStringLiteral("error"));
    // The plug-in's own save, the host's close and the till's save of the
    // open document after the action: one message, every failure recorded.
    const QString document = QStringLiteral("the till's store failed: the document %1 could not be written").arg(id);
    QCOMPARE(refused.failures.size(), 3);
    QCOMPARE(refused.failures.at(0), document);
    QVERIFY2(refused.failures.at(1).startsWith(QStringLiteral("the till's store failed: the payments could not be recorded")),
             qPrintable(refused.failures.at(1)));
    QCOMPARE(refused.failures.at(2), document);
    QVERIFY(!till.currentDocument()->isClosed());
    QCOMPARE(DocumentsDao(folder.databaseFile()).getPaymentTotal(1, 1).toDouble(), 0.0);
    const QJsonObject kept = documentOnDisk(folder, id);
    QCOMPARE(kept.value(QStringLiteral("payments")).toArray().size(), 1);
    QVERIFY(!kept.value(QStringLiteral("closed")).toBool());

    // With room again the close goes through on the answer the document kept.
    log.begin(4, QStringLiteral("close"), QString());
    QCOMPARE(actions.close(false), std::optional<int>(EContext::Continue));
    const ActionRecord closed = log.finish();
    QVERIFY(closed.failures.isEmpty());
    QVERIFY(closed.requests.isEmpty());
    QCOMPARE(DocumentsDao(folder.databaseFile()).getPaymentTotal(1, 1).toDouble(), 150.0);
    const QJsonObject onDisk = documentOnDisk(folder, id);
    QVERIFY(onDisk.value(QStringLiteral("closed")).toBool());
    QVERIFY(onDisk.value(QStringLiteral("pluginData")).toObject().value(QStringLiteral("27")).toObject().contains(QStringLiteral("invoiceIDRaw")));
    const QList<JournalEntry> notes = emulator.journal().entriesFor(QStringLiteral("/advicenote"));
    QCOMPARE(notes.size(), 1);
}

void TestStoreFailure::shiftRecordAHookCannotWriteFailsTheAction()
{
    tessaro::emulator::EmulatorSettings closedShift;
    closedShift.tills << EmulatedTill::serviceTill(false);
    ReturnToClose bed(closedShift);
    QVERIFY(bed.ready);
    // The till's store cannot be written from now on: its folder is gone.
    const QString database = bed.service.filePath(QStringLiteral("gone/till.db"));
    Singleton<DocumentsDao>::setInstance(new DocumentsDao(database));

    // The service's shift is closed: the close hook opens it, and the plug-in's
    // shift record fails; the printer then refuses the close, so the host writes nothing.
    bed.log.begin(3, QStringLiteral("close"), QString());
    QTest::ignoreMessage(QtCriticalMsg, "Не удалось сохранить запись смены tillOpen");
    QCOMPARE(bed.actions.close(true), std::optional<int>(EContext::Stop));
    const ActionRecord record = bed.log.finish();
    QCOMPARE(dialogIds(record), (QStringList{QStringLiteral("tessaroProgress"), QStringLiteral("tessaroProgress"),
                                             QStringLiteral("tillPrinterError"), QStringLiteral("tillStoreError")}));
    QCOMPARE(record.failures.size(), 1);
    QVERIFY2(record.failures.constFirst().startsWith(QStringLiteral("the till's store failed: %1: ").arg(database)), qPrintable(record.failures.constFirst()));
}

void TestStoreFailure::jsonFileOnAFullDiskFailsAndKeepsTheLastCopy_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("buffered") << 3000;
    QTest::newRow("unbuffered") << 40000;
}

void TestStoreFailure::jsonFileOnAFullDiskFailsAndKeepsTheLastCopy()
{
    QFETCH(int, size);
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("state.json"));
    QString error;
    QVERIFY(JsonFile::write(path, {{QStringLiteral("shift"), 1}}, &error));
    {
        const FileSizeLimit full(1024);
        QVERIFY(full.isSet());
        QVERIFY(!JsonFile::write(path, {{QStringLiteral("shift"), QString(size, QLatin1Char('2'))}}, &error));
    }
    QVERIFY2(error.startsWith(QStringLiteral("cannot write ") + path), qPrintable(error));
    QJsonObject kept;
    QVERIFY(JsonFile::read(path, &kept, &error));
    QCOMPARE(kept, (QJsonObject{{QStringLiteral("shift"), 1}}));
}

QTEST_GUILESS_MAIN(TestStoreFailure)
#include "tst_storefailure.moc"
