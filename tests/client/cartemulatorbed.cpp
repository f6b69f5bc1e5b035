#include "cartemulatorbed.h"

#include <QJsonObject>

using tessaro::emulator::EmulatorSettings;
using tessaro::emulator::JournalEntry;

const QString CartEmulatorBed::customerCard = QStringLiteral("67812345678");
const QString CartEmulatorBed::milkBarcode = QStringLiteral("4600000000012");
const QString CartEmulatorBed::breadCode = QStringLiteral("1002");
const QString CartEmulatorBed::invalidCoupon = QStringLiteral("2559999999999");

namespace {

EmulatorSettings settings()
{
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.customers.insert(CartEmulatorBed::customerCard,
                              QJsonObject{{"firstName", "Анна"}, {"lastName", "Петрова"}, {"custNo", 4711},
                                          {"creditPaymentAllowed", false}, {"points", 150}});
    settings.articles = {
        {CartEmulatorBed::milkBarcode, QStringLiteral("1001"), QStringLiteral("1001"), QStringLiteral("Молоко 1 л"), 89.9},
        {QStringLiteral("4600000000029"), CartEmulatorBed::breadCode, QStringLiteral("1002"), QStringLiteral("Хлеб"), 45.5},
    };
    settings.invalidCoupons = {CartEmulatorBed::invalidCoupon};
    settings.messages.insert(QStringLiteral("info"), {QStringLiteral("Акция: скидка 10%"), QStringLiteral("Второе сообщение")});
    settings.payloads.insert(QStringLiteral("demo"), QJsonObject{{"receipt", "demo payload"}});
    return settings;
}

} // namespace

CartEmulatorBed::CartEmulatorBed(const QString &extraIni)
    : m_emulator(settings())
{
    m_emulator.startInThread();
    const EmulatorSettings::Client client = m_emulator.settings().clients.first();
    const QString ini = QStringLiteral("[Tessaro]\n"
                                       "url=\"%1\"\n"
                                       "tokenUrl=\"%2\"\n"
                                       "clientId=\"%3\"\n"
                                       "realmId=\"%4\"\n"
                                       "authorizationHeader=\"%5\"\n")
                            .arg(m_emulator.baseUrl().toString(), m_emulator.tokenUrl().toString(), client.clientId,
                                 client.realmId, client.authorization);
    m_host = std::make_unique<TestHost>(ini + extraIni);
}

CartEmulatorBed::~CartEmulatorBed()
{
    m_host.reset();
    m_emulator.stop();
}

tessaro::emulator::Cart CartEmulatorBed::cart(const QString &uuid)
{
    return m_emulator.state().carts.find(uuid).value_or(tessaro::emulator::Cart());
}

int CartEmulatorBed::applied(const QString &pathEnd)
{
    const QList<JournalEntry> entries = m_emulator.journal().entriesFor(pathEnd);
    return int(std::count_if(entries.cbegin(), entries.cend(), [](const JournalEntry &entry) {
        return (entry.outcome == JournalEntry::Outcome::Answered && entry.status == 200)
            || entry.fault == QLatin1String("close-after-apply");
    }));
}

int CartEmulatorBed::received(const QString &pathEnd)
{
    return m_emulator.journal().entriesFor(pathEnd).size();
}
