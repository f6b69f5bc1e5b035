// The gateway signer over arbitrary URLs, queries, headers and bodies: the
// caller's headers come back with the gateway's signed headers added, and the
// emulator's independent verifier accepts the signature of every request that
// HTTP could carry unchanged.
//
// Input lines: the URL; the verb (GET, anything else is a POST); the caller's
// headers as "name: value" up to an empty line; the rest is the body.
#include "fuzzsupport.h"
#include "lineinput.h"

#include "client/gate.h"
#include "emulator/exchange.h"
#include "emulator/gatewayverifier.h"

#include <config.h>
#include <currenttime.h>
#include <mockfactory.h>
#include <singleton.h>

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

const QString appKey = QStringLiteral("fuzz-key");
const QString appSecret = QStringLiteral("fuzz-secret");
const QDateTime signingTime = QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC);

class FixedTime : public CurrentTime
{
public:
    QDateTime now() const override { return signingTime; }
};

bool isGatewayHeader(const QString &name)
{
    static const QStringList names = {QStringLiteral("host"), QStringLiteral("x-sdk-date"), QStringLiteral("x-stage"),
                                      QStringLiteral("env"), QStringLiteral("Authorization")};
    return names.contains(name);
}

// What an HTTP request carries unchanged: token names, printable ASCII values
// without surrounding blanks (servers strip them), and one spelling per name.
bool travelsUnchanged(const QHash<QString, QString> &headers)
{
    static const QRegularExpression token(QStringLiteral("^[A-Za-z0-9!#$%&'*+.^_`|~-]+$"));
    static const QRegularExpression value(QStringLiteral("^([\\x21-\\x7e]([\\x20-\\x7e]*[\\x21-\\x7e])?)?$"));
    QSet<QString> lowerNames;
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        if (!token.match(it.key()).hasMatch() || !value.match(it.value()).hasMatch())
            return false;
        const QString lower = it.key().toLower();
        if (lowerNames.contains(lower) || (lower != it.key() && (isGatewayHeader(lower) || lower == QLatin1String("x-api-key")
                                                                 || lower == QLatin1String("authorization"))))
            return false;
        lowerNames.insert(lower);
    }
    return true;
}

void checkWithVerifier(const QUrl &url, const QByteArray &body, const QHash<QString, QString> &sent, bool get)
{
    // The URL as the server parses it from the request line.
    const QUrl wire = QUrl::fromEncoded(url.toEncoded());
    tessaro::emulator::Exchange exchange;
    exchange.method = get ? QByteArrayLiteral("GET") : QByteArrayLiteral("POST");
    exchange.path = wire.path();
    exchange.query = wire.query(QUrl::FullyEncoded);
    for (auto it = sent.cbegin(); it != sent.cend(); ++it)
        exchange.headers.append({it.key().toUtf8(), it.value().toUtf8()});
    if (!get)
        exchange.body = body;
    exchange.receivedAt = signingTime;

    const tessaro::emulator::GatewayVerifier verifier(appKey, appSecret, 300);
    fuzzRequire(!verifier.refusal(exchange, signingTime).has_value(), "the emulator refuses the client's signature");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    static QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("gate.ini"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    file.write(QStringLiteral("[OrvelGate]\ntessaro=true\nappKey=%1\nappSecret=%2\nxStage=PreProd\n")
                   .arg(appKey, appSecret)
                   .toUtf8());
    file.close();
    Singleton<Config>::setInstance(new Config(path));
    MockFactory<CurrentTime>::setCreator([] { return QSharedPointer<FixedTime>::create(); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    LineInput input(data, size);
    const QUrl url(QString::fromUtf8(input.takeLine()));
    const bool get = input.takeLine() == "GET";
    QHash<QString, QString> headers;
    for (QByteArray line = input.takeLine(); !line.isEmpty(); line = input.takeLine()) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            headers.insert(QString::fromUtf8(line.left(colon)), QString::fromUtf8(line.mid(colon + 1)).trimmed());
    }
    const QByteArray body = input.rest();

    const QHash<QString, QString> sent = orvel::getGateHeaders(url, body, headers, get);
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        if (!isGatewayHeader(it.key()))
            fuzzRequire(sent.value(it.key()) == it.value(), "a caller's header is sent unchanged");
    }
    fuzzRequire(sent.value(QStringLiteral("Authorization"))
                    .startsWith(QStringLiteral("SDK-HMAC-SHA256 Access=%1, SignedHeaders=").arg(appKey)),
                "the request is signed");
    fuzzRequire(sent.value(QStringLiteral("x-sdk-date")) == QLatin1String("20240131T235959Z"), "x-sdk-date is the clock's UTC time");

    if (travelsUnchanged(headers) && url.isValid() && !url.host().isEmpty())
        checkWithVerifier(url, body, sent, get);
    return 0;
}
