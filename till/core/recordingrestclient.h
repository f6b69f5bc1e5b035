#pragma once

#include <restclient.h>

#include <QElapsedTimer>

namespace till {

class ActionLog;
class CassetteRecorder;

/// The host's REST client, installed through MockFactory<RestClient>, that
/// also writes every exchange (method, address, bodies, outcome) into the
/// action log and, when given a recorder, into a cassette. The exchange
/// itself is the host's own.
class RecordingRestClient : public RestClient
{
public:
    explicit RecordingRestClient(ActionLog *log, CassetteRecorder *recorder = nullptr);

    bool post(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool get(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool postRaw(const QUrl &url, const QByteArray &body, const Headers &headers) override;

private:
    void record(const QString &method, const QUrl &url, const QJsonValue &body, const Headers &headers, const QByteArray &sent);

    ActionLog *m_log;
    CassetteRecorder *m_recorder;
    /// Times the exchange under way, for the cassette.
    QElapsedTimer m_timer;
};

} // namespace till
