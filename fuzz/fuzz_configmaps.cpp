// The client's mapping tables over arbitrary INI text: the bytes become the
// host configuration file, the client reads its settings and tables from it
// in its constructor, and every table entry must come from a section key that
// is an integer.
#include "fuzzsupport.h"

#include "client/interface.h"

#include <config.h>
#include <singleton.h>

#include <QDateTime>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

QTemporaryDir *folder = nullptr;

// The integer key names of a mapping section, as the client may use them.
QSet<int> integerKeys(const Config &config, const QString &section)
{
    QSet<int> keys;
    const QStringList names = config.keys(section);
    for (const QString &name : names) {
        bool ok = false;
        const int key = name.toInt(&ok, 10);
        if (ok)
            keys.insert(key);
    }
    return keys;
}

void checkTargets(const QMap<int, int> &map, const QSet<int> &serviceCodes, const char *what)
{
    for (const int serviceCode : map)
        fuzzRequire(serviceCodes.contains(serviceCode), what);
}

void checkLists(const QMap<int, QStringList> &map, const QSet<int> &keys, const char *what)
{
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
        fuzzRequire(keys.contains(entry.key()), what);
        for (const QString &value : entry.value())
            fuzzRequire(!value.isEmpty() && value == value.trimmed(), "list entries are trimmed and not empty");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    folder = new QTemporaryDir;
    return folder->isValid() ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // QSettings keeps what it read of a file until the file's size or time
    // changes: every input gets a time of its own, so none is read stale.
    // One file name keeps that cache from growing with every input.
    static qint64 serial = 0;
    const QString path = folder->filePath(QStringLiteral("config.ini"));
    {
        QFile file(path);
        fuzzRequire(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "temporary INI file");
        file.write(reinterpret_cast<const char *>(data), qint64(size));
        file.setFileTime(QDateTime::fromSecsSinceEpoch(++serial, Qt::UTC), QFileDevice::FileModificationTime);
    }

    auto *config = new Config(path);
    Singleton<Config>::setInstance(config);
    {
        const tessaro::Interface client;
        client.serviceUrl();
        client.tokenServiceUrl();
        client.usesTokenAuth();
        client.timeoutSeconds();
        checkTargets(client.paymentCodeMap(), integerKeys(*config, QStringLiteral("Tessaro.PaymentCodes")),
                     "payment codes map to a section key");
        checkTargets(client.vatCodeMap(), integerKeys(*config, QStringLiteral("Tessaro.VatCodes")),
                     "VAT codes map to a section key");
        checkLists(client.eanReasonMap(), integerKeys(*config, QStringLiteral("Tessaro.EanReasons")),
                   "EAN reasons come from section keys");
        checkLists(client.discardPaymentFieldMap(), integerKeys(*config, QStringLiteral("Tessaro.DiscardPaymentFields")),
                   "discarded payment fields come from section keys");
    }
    Singleton<Config>::reset();
    return 0;
}
