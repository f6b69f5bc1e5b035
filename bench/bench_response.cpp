// The status of typical service answers beside its floor: reading the three
// fields ("error", "status", "message") that any classification of an answer
// has to look at.
#include "typicalbodies.h"

#include "responses/cartupdateresponse.h"
#include "responses/response.h"

#include <http/response.h>

#include <benchmark/benchmark.h>


namespace {

// The answers by kind: the argument of each benchmark picks one.
QByteArray answer(int kind)
{
    switch (kind) {
    case 0:
        return typicalbodies::cartUpdateAnswer();
    case 1:
        return QByteArrayLiteral(R"({"error":"invalid_token","error_description":"Token is not active"})");
    case 2:
        return QByteArrayLiteral(R"({"status":"The shift is closed"})");
    default:
        return QByteArrayLiteral(R"({"message":"Item wasn't found","unique":false})");
    }
}

const char *const kindNames[] = {"cart", "token error", "shift closed", "service error"};

tessaro::Response responseOf(int kind)
{
    http::Response reply;
    reply.setBody(answer(kind));
    reply.setHttpCode(200);
    return tessaro::Response(reply);
}

void BM_ResponseStatus(benchmark::State &state)
{
    const tessaro::Response response = responseOf(int(state.range(0)));
    state.SetLabel(kindNames[state.range(0)]);
    for (auto _ : state)
        benchmark::DoNotOptimize(response.status());
}
BENCHMARK(BM_ResponseStatus)->DenseRange(0, 3);

void BM_CartUpdateStatus(benchmark::State &state)
{
    const tessaro::CartUpdateResponse response(responseOf(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(response.status());
}
BENCHMARK(BM_CartUpdateStatus);

void BM_ResponseStatusFloor(benchmark::State &state)
{
    const QJsonObject object = responseOf(int(state.range(0))).jsonObject();
    state.SetLabel(kindNames[state.range(0)]);
    for (auto _ : state) {
        benchmark::DoNotOptimize(object.value(QLatin1String("error")).toString());
        benchmark::DoNotOptimize(object.value(QLatin1String("status")).toString());
        benchmark::DoNotOptimize(object.value(QLatin1String("message")).toString());
    }
}
BENCHMARK(BM_ResponseStatusFloor)->DenseRange(0, 3);

} // namespace
