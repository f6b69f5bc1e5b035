#pragma once

#include <restclient.h>

/// A RestClient that answers every exchange at once with the same JSON body,
/// keeping the last body posted: the network taken out of a measurement.
class ImmediateRestClient : public RestClient
{
public:
    explicit ImmediateRestClient(const QByteArray &answer);

    bool post(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    http::Response lastResponse() const override { return m_answer; }

    QJsonDocument lastBody() const { return m_lastBody; }

private:
    http::Response m_answer;
    QJsonDocument m_lastBody;
};
