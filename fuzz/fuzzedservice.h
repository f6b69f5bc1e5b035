#pragma once

#include <restclient.h>

class FuzzedInput;

/// The Tessaro service and its token endpoint, answered in process from the
/// fuzzer's bytes instead of over the network: installed as the host's REST
/// client, it answers every exchange with a well-formed answer of the kind
/// the path asks for, a known service text, JSON built from the bytes with
/// any HTTP status, or a lost connection. Nothing is sent anywhere.
class FuzzedService : public RestClient
{
public:
    explicit FuzzedService(FuzzedInput *input);

    bool post(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool get(const QUrl &url, const QJsonDocument &body, const Headers &headers) override;
    bool postRaw(const QUrl &url, const QByteArray &body, const Headers &headers) override;
    http::Response lastResponse() const override;

private:
    bool answer(const QUrl &url);

    FuzzedInput *m_input;
    http::Response m_last;
};
