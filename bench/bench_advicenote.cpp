// The return's advice note: its body and digest for returns of 1, 100, 1,000
// and 10,000 positions beside the floor (Qt's own serialisation of the same
// body, built in advance, to indented JSON and its MD5), and the document
// close hook of a 1,000-position return with the network replaced by an
// immediate answer.
#include "immediaterestclient.h"

#include "client/interface.h"
#include "plugin/backplugin.h"
#include "responses/advicenoteresponse.h"
#include "returns/invoiceinfo.h"
#include "tests/returnroad/returndocuments.h"

#include <control/action.h>
#include <mockfactory.h>
#include <savetofilelogic.h>
#include <testing/testhost.h>

#include <benchmark/benchmark.h>

#include <QCryptographicHash>
#include <QJsonDocument>

namespace {

const QByteArray serviceAnswer = R"({"uuid":"5d0c7f2e","Key4":"0/0/0012/000077","invoiceID":"000012000077"})";

// The client settings of the return-road tests, without token authorisation.
const QString settings = QStringLiteral("[Tessaro]\nurl=http://127.0.0.1:9/api\nuseTokenAuth=false\n"
                                        "[Tessaro.VatCodes]\n5=3\n[Tessaro.PaymentCodes]\n2=3\n");

class NoSave : public SaveToFileLogic
{
public:
    bool save(const QSharedPointer<AbstractDocument> &, const QStringList &) override { return true; }
};

// A plain return of \a count positions of 20 % VAT, paid out by card.
QSharedPointer<BackDocument> returnOf(int count)
{
    const auto document = ReturnDocuments::startPlainReturn();
    document->setDocumentProperty(QStringLiteral("invoiceInfo"), ReturnDocuments::invoiceInfo());
    double total = 0.0;
    for (int posnum = 1; posnum <= count; ++posnum) {
        const double sum = 10.0 + posnum % 97;
        const auto position = ReturnDocuments::position(posnum, QStringLiteral("%1").arg(100000 + posnum), 1.0 + posnum % 3, sum);
        position->setVatRate(20.0);
        position->setActualVatIndex(1);
        position->setVatCodesArray({1, 3});
        position->setVatSumsArray({0.0, sum / 6.0});
        document->addGoodsItem(position);
        total += sum;
    }
    document->addMoneyItem(ReturnDocuments::payment(3, MoneyItem::BankCard, total));
    return document;
}

InvoiceInfo invoice()
{
    InvoiceInfo info;
    info.cashCode = QStringLiteral("0012");
    info.invoiceNumber = QStringLiteral("000345");
    info.storeNumber = QStringLiteral("0007");
    info.invoiceDate = QDate(2024, 2, 1);
    return info;
}

// Body and digest: the answer given already carries this return's digest, so
// the client builds and digests the body and sends nothing.
void BM_AdviceNoteBodyAndDigest(benchmark::State &state)
{
    const TestHost host(settings);
    MockFactory<RestClient>::setInstance(QSharedPointer<ImmediateRestClient>::create(serviceAnswer));
    tessaro::Interface client;
    const auto document = returnOf(int(state.range(0)));
    const tessaro::AdviceNoteResponse sent = client.adviceNote(document, invoice(), tessaro::AdviceNoteResponse());
    for (auto _ : state)
        benchmark::DoNotOptimize(client.adviceNote(document, invoice(), sent));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_AdviceNoteBodyAndDigest)->Arg(1)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

void BM_AdviceNoteFloor(benchmark::State &state)
{
    const TestHost host(settings);
    const auto network = QSharedPointer<ImmediateRestClient>::create(serviceAnswer);
    MockFactory<RestClient>::setInstance(network);
    tessaro::Interface client;
    client.adviceNote(returnOf(int(state.range(0))), invoice(), tessaro::AdviceNoteResponse());
    const QJsonObject body = network->lastBody().object();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            QCryptographicHash::hash(QJsonDocument(body).toJson(QJsonDocument::Indented), QCryptographicHash::Md5).toHex());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_AdviceNoteFloor)->Arg(1)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// The whole hook: the stored answer is dropped before each close, so every
// close builds, digests, sends and keeps the advice note.
void BM_DocumentClose(benchmark::State &state)
{
    const TestHost host(settings);
    MockFactory<RestClient>::setInstance(QSharedPointer<ImmediateRestClient>::create(serviceAnswer));
    MockFactory<SaveToFileLogic>::setInstance(QSharedPointer<NoSave>::create());
    tessaro::BackPlugin plugin;
    plugin.init();
    const auto document = returnOf(int(state.range(0)));
    plugin.setDocument(document);
    const control::Action close(control::AttemptToDocumentClose, {});
    for (auto _ : state) {
        state.PauseTiming();
        plugin.setPluginData(QStringLiteral("adviceNoteResponse"), QVariant());
        state.ResumeTiming();
        if (plugin.beforeAttemptToDocumentClose(close) != EContext::Continue)
            state.SkipWithError("the return did not close");
    }
}
BENCHMARK(BM_DocumentClose)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace
