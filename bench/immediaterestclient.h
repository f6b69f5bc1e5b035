#pragma once

#include <restclient.h>

/// A RestClient that answers every exchange at once with the same JSON body,
/// keeping the last body posted: the network taken out of a measurement.
class ImmediateRestClient : public RestClient
{
public:
    explicit ImmediateRestClient(const QByteArray &answer);

    bool postRaw(const QUrl &url, const QByteArray &body, const Headers &headers) override;
    http::Response lastResponse() const override { return m_answer; }

    QJsonDocument lastBody() const { return QJsonDocument::fromJson(m_lastBody); }

private:
    http::Response m_answer;
    QByteArray m_lastBody;
};
