// The gateway signature of a typical request (a cart update through the
// gateway) beside its floor: the two SHA-256 digests and the HMAC that any
// signer of this scheme computes, over inputs built in advance.
#include "typicalbodies.h"

#include "client/gate.h"

#include <testing/testhost.h>

#include <benchmark/benchmark.h>

#include <QCryptographicHash>
#include <QMessageAuthenticationCode>
#include <QUrl>

namespace {

const QString gatewayConfig = QStringLiteral("[OrvelGate]\ntessaro=true\nappKey=till-app-key\n"
                                             "appSecret=0123456789abcdef0123456789abcdef\nxStage=PreProd\n");

QUrl requestUrl()
{
    return QUrl(QStringLiteral("https://gw.example.ru/tessaro/api/v1/cart/%1/update?lang=ru").arg(typicalbodies::cartUuid()));
}

QHash<QString, QString> callerHeaders()
{
    return {{QStringLiteral("Content-Type"), QStringLiteral("application/json")},
            {QStringLiteral("X-Request-ID"), QStringLiteral("6f1c2d3e-0000-4000-8000-000000000001")}};
}

void BM_GateHeaders(benchmark::State &state)
{
    const TestHost host(gatewayConfig);
    const QUrl url = requestUrl();
    const QByteArray body = typicalbodies::cartUpdateRequestBytes();
    const QHash<QString, QString> headers = callerHeaders();
    for (auto _ : state)
        benchmark::DoNotOptimize(orvel::getGateHeaders(url, body, headers, false));
}
BENCHMARK(BM_GateHeaders);

void BM_GateFloor(benchmark::State &state)
{
    const QByteArray body = typicalbodies::cartUpdateRequestBytes();
    const QByteArray canonical = QByteArrayLiteral("POST\n/tessaro/api/v1/cart/6f1c2d3e-7a8b-4c9d-8e0f-112233445566/update/\n"
                                                   "lang=ru\nenv:PreProd\nhost:gw.example.ru\nx-sdk-date:20240131T235959Z\n"
                                                   "x-stage:PreProd\n\nenv;host;x-sdk-date;x-stage\n")
        + QByteArray(64, 'a');
    const QByteArray secret = QByteArrayLiteral("0123456789abcdef0123456789abcdef");
    for (auto _ : state) {
        benchmark::DoNotOptimize(QCryptographicHash::hash(body, QCryptographicHash::Sha256).toHex());
        const QByteArray digest = QCryptographicHash::hash(canonical, QCryptographicHash::Sha256).toHex();
        const QByteArray toSign = QByteArrayLiteral("SDK-HMAC-SHA256\n20240131T235959Z\n") + digest;
        benchmark::DoNotOptimize(QMessageAuthenticationCode::hash(toSign, secret, QCryptographicHash::Sha256).toHex());
    }
}
BENCHMARK(BM_GateFloor);

} // namespace
