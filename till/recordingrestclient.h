#pragma once

#include <restclient.h>

namespace till {

class ActionLog;

/// The host's REST client, installed through MockFactory<RestClient>, that
/// also writes every exchange (method, address, bodies, outcome) into the
/// action log. The exchange itself is the host's own.
class RecordingRestClient : public RestClient
{
public:
    explicit RecordingRestClient(ActionLog *log);

    bool post(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool get(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool postRaw(const QUrl &url, const QByteArray &body, const Headers &headers) override;

private:
    void record(const QString &method, const QUrl &url, const QJsonValue &body);

    ActionLog *m_log;
};

} // namespace till
