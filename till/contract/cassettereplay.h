#pragma once

#include <contracts/cassette.h>

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>

namespace tessaro::emulator {
class Emulator;
}

namespace till {

/// Plays a recorded session offline: an emulator in this process answers
/// from the cassette on a free loopback port, at the paths the session was
/// recorded at, and afterwards tells every request the till sent that was
/// not recorded (with the first byte that differs) and every recorded
/// request the till did not send.
class CassetteReplay
{
public:
    CassetteReplay();
    ~CassetteReplay();
    CassetteReplay(const CassetteReplay &) = delete;
    CassetteReplay &operator=(const CassetteReplay &) = delete;

    /// Starts answering from \a cassette; false with \a error when it cannot listen.
    bool start(const tessaro::contracts::Cassette &cassette, QString *error);

    /// The service's and the token's addresses on the replay.
    QString serviceUrl() const;
    QString tokenUrl() const;
    /// The configuration that points a till at the replay.
    QMap<QString, QString> config() const;

    /// What makes the replay fail: the requests that matched no recorded
    /// one, then the recorded requests never sent. Empty when the till sent
    /// exactly the recorded requests.
    QStringList failures() const;

private:
    QString onReplay(const QString &recordedUrl) const;

    std::unique_ptr<tessaro::emulator::Emulator> m_emulator;
    tessaro::contracts::Cassette m_cassette;
};

} // namespace till
