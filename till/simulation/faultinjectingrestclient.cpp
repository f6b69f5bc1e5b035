#include "faultinjectingrestclient.h"

#include "faultplanner.h"

#include <emulator/emulator.h>

namespace till {

namespace {

/// A loopback port nothing listens on: the connection is refused at once.
constexpr int refusingPort = 1;

} // namespace

FaultInjectingRestClient::FaultInjectingRestClient(ActionLog *log, FaultPlanner *planner, tessaro::emulator::Emulator *emulator)
    : RecordingRestClient(log)
    , m_planner(planner)
    , m_emulator(emulator)
{
}

QUrl FaultInjectingRestClient::arm(const QUrl &url)
{
    const QString basePath = m_emulator->settings().basePath;
    QString path = url.path();
    if (!basePath.isEmpty() && path.startsWith(basePath) && path != m_emulator->settings().tokenPath)
        path = path.mid(basePath.size());
    const std::optional<SessionFault> planned = m_planner->next(path);
    if (!planned)
        return url;
    if (planned->unreachable) {
        QUrl refused = url;
        refused.setPort(refusingPort);
        return refused;
    }
    tessaro::emulator::Fault fault(planned->kind, path, 1);
    fault.delayMs = planned->delayMs;
    fault.status = planned->status;
    fault.body = planned->body;
    m_emulator->faults().add(fault);
    return url;
}

bool FaultInjectingRestClient::post(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    return RecordingRestClient::post(arm(url), body, headers);
}

bool FaultInjectingRestClient::get(const QUrl &url, const QJsonDocument &body, const Headers &headers)
{
    return RecordingRestClient::get(arm(url), body, headers);
}

bool FaultInjectingRestClient::postRaw(const QUrl &url, const QByteArray &body, const Headers &headers)
{
    return RecordingRestClient::postRaw(arm(url), body, headers);
}

} // namespace till
