#include "cassettereplay.h"

#include <emulator/emulator.h>

#include <QUrl>

namespace till {

CassetteReplay::CassetteReplay() = default;

CassetteReplay::~CassetteReplay() = default;

bool CassetteReplay::start(const tessaro::contracts::Cassette &cassette, QString *error)
{
    m_cassette = cassette;
    m_emulator = std::make_unique<tessaro::emulator::Emulator>();
    m_emulator->replay(cassette);
    if (m_emulator->startInThread(0) == 0) {
        *error = QStringLiteral("the replay cannot listen on the loopback interface");
        return false;
    }
    return true;
}

QString CassetteReplay::onReplay(const QString &recordedUrl) const
{
    // Same path and query, on the replay's address.
    QUrl url(recordedUrl);
    const QUrl base = m_emulator->baseUrl();
    url.setScheme(base.scheme());
    url.setHost(base.host());
    url.setPort(base.port());
    url.setUserInfo(QString());
    return url.toString();
}

QString CassetteReplay::serviceUrl() const
{
    return onReplay(m_cassette.serviceUrl);
}

QString CassetteReplay::tokenUrl() const
{
    return onReplay(m_cassette.tokenUrl);
}

QMap<QString, QString> CassetteReplay::config() const
{
    return {{QStringLiteral("Tessaro:url"), serviceUrl()}, {QStringLiteral("Tessaro:tokenUrl"), tokenUrl()}};
}

QStringList CassetteReplay::failures() const
{
    QStringList failures;
    const tessaro::emulator::CassettePlayer *player = m_emulator ? m_emulator->player() : nullptr;
    if (!player)
        return failures;
    for (const QString &mismatch : player->mismatches())
        failures << QStringLiteral("replay: ") + mismatch;
    for (const QString &unsent : player->unsent())
        failures << QStringLiteral("replay: the recorded request %1 was not sent").arg(unsent);
    return failures;
}

} // namespace till
