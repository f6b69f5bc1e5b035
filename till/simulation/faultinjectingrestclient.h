#pragma once

#include "recordingrestclient.h"

namespace tessaro::emulator {
class Emulator;
}

namespace till {

class FaultPlanner;

/// The till's REST client in the simulation: before each request it asks the
/// fault planner whether the service fails it, and if so arms that fault in
/// the emulator for exactly this request, or sends the request to a port
/// where nothing listens (the service unreachable). Records like the till's own.
class FaultInjectingRestClient : public RecordingRestClient
{
public:
    FaultInjectingRestClient(ActionLog *log, FaultPlanner *planner, tessaro::emulator::Emulator *emulator);

    bool post(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool get(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool postRaw(const QUrl &url, const QByteArray &body, const Headers &headers) override;

private:
    /// Arms the fault for a request to \a url; returns where to send it.
    QUrl arm(const QUrl &url);

    FaultPlanner *m_planner;
    tessaro::emulator::Emulator *m_emulator;
};

} // namespace till
