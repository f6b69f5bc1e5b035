// A till's long day: one `tessaro-till run` of many plain returns (three
// positions each) in one till process, against the emulator in the process,
// the run's progress kept on disk after every action as the till does. The
// time and the heap per return must stay flat as the day grows: ×4 the
// returns, ×4 the time and the memory held. docs/performance.md has the figures.
#include "demorunner.h"
#include "report.h"

#include <benchmark/benchmark.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <malloc.h>
#include <sys/resource.h>

namespace {

QJsonObject position(int n)
{
    return {{QStringLiteral("code"), QString::number(100200 + n)},
            {QStringLiteral("barcode"), QStringLiteral("460000000001%1").arg(n)},
            {QStringLiteral("name"), QStringLiteral("Item %1").arg(n)},
            {QStringLiteral("vatRate"), 20},
            {QStringLiteral("vatIndex"), 0},
            {QStringLiteral("vatCodes"), QJsonArray{1}},
            {QStringLiteral("vatSums"), QJsonArray{10}}};
}

// A scenario of \a returns plain returns: open, invoice, three positions with
// quantity and price typed (each asks for a reason), payment, close.
QByteArray dayOfReturns(int returns)
{
    QJsonObject documents;
    QJsonArray answers;
    QJsonArray actions;
    for (int r = 0; r < returns; ++r) {
        const QString name = QStringLiteral("return-%1").arg(r);
        documents.insert(name, QJsonObject{{QStringLiteral("type"), QStringLiteral("return")},
                                           {QStringLiteral("card"), QStringLiteral("2770000000013")}});
        answers << QJsonObject{{QStringLiteral("form"), QJsonObject{{QStringLiteral("cashCode"), QStringLiteral("12")},
                                                                    {QStringLiteral("invoiceNumber"), QString::number(345 + r)},
                                                                    {QStringLiteral("storeNumber"), QStringLiteral("7")},
                                                                    {QStringLiteral("invoiceDate"), QStringLiteral("01.02.2024")}}}};
        actions << QJsonObject{{QStringLiteral("type"), QStringLiteral("bind")}, {QStringLiteral("document"), name}};
        actions << QJsonObject{{QStringLiteral("type"), QStringLiteral("input")}};
        for (int p = 1; p <= 3; ++p) {
            answers << QJsonObject{{QStringLiteral("choice"), QStringLiteral("Брак")}};
            actions << QJsonObject{{QStringLiteral("type"), QStringLiteral("add")}, {QStringLiteral("position"), position(p)},
                                   {QStringLiteral("quantity"), 2}, {QStringLiteral("price"), 20}};
        }
        actions << QJsonObject{{QStringLiteral("type"), QStringLiteral("pay")}, {QStringLiteral("code"), 1}, {QStringLiteral("amount"), 120}};
        actions << QJsonObject{{QStringLiteral("type"), QStringLiteral("close")}};
    }
    const QJsonObject till{{QStringLiteral("backReasons"), QJsonArray{QJsonObject{{QStringLiteral("code"), 1}, {QStringLiteral("name"), QStringLiteral("Брак")}},
                                                                      QJsonObject{{QStringLiteral("code"), 2}, {QStringLiteral("name"), QStringLiteral("Не подошёл размер")}}}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("name"), QStringLiteral("A day of returns")},
                                     {QStringLiteral("till"), till},
                                     {QStringLiteral("documents"), documents},
                                     {QStringLiteral("answers"), answers},
                                     {QStringLiteral("actions"), actions}})
        .toJson(QJsonDocument::Compact);
}

void BM_TillDay(benchmark::State &state)
{
    const int returns = int(state.range(0));
    const till::DemoRunner::Play play{QStringLiteral("day"), dayOfReturns(returns), {}};
    double heldBytes = 0;
    for (auto _ : state) {
        QTemporaryDir folder;
        till::Report report;
        QString error;
        const size_t before = mallinfo2().uordblks;
        if (!till::DemoRunner::play(play, folder.filePath(QStringLiteral("till")), QStringLiteral(TESSARO_BUILD_PLUGIN_DIR), &report, &error)) {
            state.SkipWithError(qPrintable(error));
            break;
        }
        if (!report.passed()) {
            state.SkipWithError(qPrintable(report.allFailures().first()));
            break;
        }
        // What the run leaves allocated while its report is still held.
        heldBytes = double(mallinfo2().uordblks) - double(before);
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["perReturn"] = benchmark::Counter(double(returns), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["heldMB"] = heldBytes / 1048576.0;
    state.counters["peakRssMB"] = double(usage.ru_maxrss) / 1024.0;
}
BENCHMARK(BM_TillDay)->Arg(100)->Arg(400)->Arg(1600)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

} // namespace
