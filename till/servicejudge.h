#pragma once

#include "networkprobe.h"

#include <QJsonObject>

namespace till {

class CheckReport;

/// Judges what the plug-in met on its way to the service (the "token",
/// "request" and "signing" of its own check) and the till's clock against the
/// service's.
///
/// The request is "/messages/<id>" with an identifier no cart has: any answer
/// but an authorisation or signature refusal proves that an authorised request
/// gets through. A clock more than a minute off is a warning; with the gateway
/// on, beyond the gateway's tolerance it is a failure, since every signed
/// request is then refused and the cashier sees the date-and-time message.
class ServiceJudge
{
public:
    /// The message the cashier sees when the gateway refuses a signature as expired.
    static QString clockMessage();

    ServiceJudge(const QJsonObject &pluginReport, bool gatewayOn, int clockToleranceSeconds);

    void judgeToken(CheckReport *report) const;
    void judgeRequest(CheckReport *report) const;
    void judgeSignature(CheckReport *report) const;
    /// \a service: the probe of the service's address, with its Date header.
    void judgeClock(const NetworkProbe::Outcome &service, CheckReport *report) const;

private:
    QJsonObject m_token;
    QJsonObject m_request;
    QJsonObject m_signing;
    bool m_gatewayOn;
    int m_toleranceSeconds;
};

} // namespace till
