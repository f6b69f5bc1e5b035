#include "emulatedtill.h"
#include "tilldatafolder.h"

#include <documentsdao.h>
#include <documentserializer.h>
#include <emulator/emulator.h>
#include <emulator/fault.h>
#include <emulator/journalentry.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace till;
using tessaro::emulator::Fault;
using tessaro::emulator::JournalEntry;

/// The real plug-in on a till that is killed (SIGKILL) in the middle of a
/// scenario and started again with the same command on the same data folder.
class TestKilledTill : public QObject
{
    Q_OBJECT

private slots:
    void killedTillFinishesTheScenario();
    void killedRightAfterTheCloseHookKeepsThePluginsSave();
};

namespace {

const QByteArray scenario = R"({
    "name": "Two returns, killed while the first closes",
    "documents": {
        "first": {"type": "return", "card": "2770000000013",
                  "properties": {"invoiceInfo": {"cashCode": "12", "invoiceNumber": "401", "storeNumber": "7", "invoiceDate": "2024-02-01"}}},
        "second": {"type": "return", "card": "2770000000013",
                   "properties": {"invoiceInfo": {"cashCode": "12", "invoiceNumber": "402", "storeNumber": "7", "invoiceDate": "2024-02-01"}}}
    },
    "answers": [{"choice": 0}, {"choice": 1}],
    "actions": [
        {"type": "bind", "document": "first"},
        {"type": "add", "position": {"code": "100200"}, "quantity": 2, "price": 75, "expect": {"result": 2}},
        {"type": "pay", "code": 1, "amount": 150, "expect": {"result": 2}},
        {"type": "close", "expect": {"result": 2}},
        {"type": "bind", "document": "second"},
        {"type": "add", "position": {"code": "100300"}, "quantity": 3, "price": 40, "expect": {"result": 2}},
        {"type": "pay", "code": 1, "amount": 120, "expect": {"result": 2}},
        {"type": "close", "expect": {"result": 2}}
    ],
    "expect": {"paymentTotals": {"1": 270},
               "documents": {"first": {"closed": true, "payments": 1, "positions": [{"posnum": 1, "data": {"tessaro": {"backReason": 1}}}]},
                             "second": {"closed": true, "payments": 1, "positions": [{"posnum": 1, "data": {"tessaro": {"backReason": 2}}}]}}}
})";

QJsonObject documentOnDisk(const TillDataFolder &folder, const QString &id)
{
    QFile file(folder.documentsDir() + QLatin1Char('/') + id + QStringLiteral(".json"));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

/// The scenario's till in a temporary folder, against an emulator in this process.
struct ScenarioTill
{
    ScenarioTill()
        : emulator(service.emulator())
        , folder(service.folder())
        , file(service.filePath(QStringLiteral("scenario.json")))
    {
        QString error;
        QFile out(file);
        ready = service.start(&error) && out.open(QIODevice::WriteOnly) && out.write(scenario) == scenario.size();
    }

    /// The command line of tessaro-till run on this till, with \a options.
    QStringList arguments(const QStringList &options = {}) const
    {
        return QStringList{QStringLiteral("run")} + options
            + QStringList{QStringLiteral("--data"), folder.path(), QStringLiteral("--plugins"), QStringLiteral(TILL_PLUGIN_DIR), file};
    }

    /// Every advice note the service met: its outcome and the original invoice's number.
    QStringList adviceNotes()
    {
        QStringList notes;
        for (const JournalEntry &entry : emulator.journal().entriesFor(QStringLiteral("/advicenote"))) {
            const QJsonObject original =
                entry.exchange.jsonObject().value(QStringLiteral("header")).toObject().value(QStringLiteral("originalInvoice")).toObject();
            notes.append(JournalEntry::outcomeName(entry.outcome) + QLatin1Char(' ') + original.value(QStringLiteral("invoiceNo")).toString());
        }
        return notes;
    }

    EmulatedTill service;
    tessaro::emulator::Emulator &emulator;
    const TillDataFolder &folder;
    QString file;
    bool ready = false;
};

} // namespace

void TestKilledTill::killedTillFinishesTheScenario()
{
    ScenarioTill bed;
    QVERIFY(bed.ready);
    tessaro::emulator::Emulator &emulator = bed.emulator;
    const TillDataFolder &folder = bed.folder;
    const QStringList arguments = bed.arguments();

    // Killed while it waits for the answer to the first return's advice note,
    // which the service holds without applying it.
    emulator.faults().add(Fault(Fault::Kind::Hang, QStringLiteral("/advicenote")));
    QProcess till;
    till.start(QStringLiteral(TILL_EXECUTABLE), arguments);
    QTRY_COMPARE_WITH_TIMEOUT(emulator.journal().entriesFor(QStringLiteral("/advicenote")).size(), 1, 30000);
    till.kill();
    QVERIFY(till.waitForFinished(30000));
    QCOMPARE(till.exitStatus(), QProcess::CrashExit);
    const QByteArray seen = till.readAllStandardOutput();
    QVERIFY2(seen.contains("[3/8] pay 150 in currency 1 → 2"), seen.constData());
    QVERIFY2(!seen.contains("[4/8]"), seen.constData());

    // The same command finishes the scenario.
    QProcess again;
    again.start(QStringLiteral(TILL_EXECUTABLE), arguments);
    QVERIFY(again.waitForFinished(60000));
    const QString output = QString::fromUtf8(again.readAllStandardOutput());
    QVERIFY2(again.exitCode() == 0, qPrintable(output + QString::fromUtf8(again.readAllStandardError())));
    QVERIFY(output.endsWith(QStringLiteral("Result: passed\n")));

    // Nothing stored was lost, nothing was stored twice.
    const QJsonObject first = documentOnDisk(folder, QStringLiteral("run0001-first"));
    QCOMPARE(first.value(QStringLiteral("closed")).toBool(), true);
    QCOMPARE(first.value(QStringLiteral("payments")).toArray().size(), 1);
    QCOMPARE(first.value(QStringLiteral("goods")).toArray().size(), 1);
    QCOMPARE(first.value(QStringLiteral("properties")).toObject().value(QStringLiteral("invoiceInfo")).toObject().value(QStringLiteral("invoiceNumber")).toString(),
             QStringLiteral("401"));
    const QJsonObject second = documentOnDisk(folder, QStringLiteral("run0001-second"));
    QCOMPARE(second.value(QStringLiteral("closed")).toBool(), true);
    QCOMPARE(DocumentsDao(folder.databaseFile()).getPaymentTotal(1, 1).toDouble(), 270.0);

    // The held advice note again, then the second return's: each return's
    // advice note applied once.
    QCOMPARE(bed.adviceNotes(), QStringList({QStringLiteral("hung 401"), QStringLiteral("answered 401"), QStringLiteral("answered 402")}));
}

void TestKilledTill::killedRightAfterTheCloseHookKeepsThePluginsSave()
{
    ScenarioTill bed;
    QVERIFY(bed.ready);
    const TillDataFolder &folder = bed.folder;
    const QStringList arguments = bed.arguments({QStringLiteral("--strict-host")});

    // Dies as soon as the first return's close hook has let the close go on:
    // the host has saved nothing since the payment.
    QProcess till;
    till.start(QStringLiteral(TILL_EXECUTABLE), arguments + QStringList{QStringLiteral("--kill-after-hook"), QStringLiteral("211")});
    QVERIFY(till.waitForFinished(60000));
    QCOMPARE(till.exitStatus(), QProcess::CrashExit);
    const QByteArray seen = till.readAllStandardOutput();
    QVERIFY2(seen.contains("[3/8] pay 150 in currency 1 → 2"), seen.constData());
    QVERIFY2(!seen.contains("[4/8]"), seen.constData());

    // Only the plug-in's own save holds the return invoice number.
    const QJsonObject killed = documentOnDisk(folder, QStringLiteral("run0001-first"));
    QCOMPARE(killed.value(QStringLiteral("closed")).toBool(), false);
    QVERIFY(killed.value(QStringLiteral("pluginData")).toObject().value(QStringLiteral("27")).toObject().contains(QStringLiteral("invoiceIDRaw")));

    QProcess again;
    again.start(QStringLiteral(TILL_EXECUTABLE), arguments);
    QVERIFY(again.waitForFinished(60000));
    const QString output = QString::fromUtf8(again.readAllStandardOutput());
    QVERIFY2(again.exitCode() == 0, qPrintable(output + QString::fromUtf8(again.readAllStandardError())));
    QCOMPARE(DocumentsDao(folder.databaseFile()).getPaymentTotal(1, 1).toDouble(), 270.0);

    // The close after the restart reuses the kept answer: each return's advice note went once.
    QCOMPARE(bed.adviceNotes(), QStringList({QStringLiteral("answered 401"), QStringLiteral("answered 402")}));
}

QTEST_GUILESS_MAIN(TestKilledTill)
#include "tst_killedtill.moc"
