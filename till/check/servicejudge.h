#pragma once

#include "networkprobe.h"

#include <QJsonObject>

#include <optional>

namespace till {

class CheckReport;

/// Judges what the plug-in met on its way to the service (the "token",
/// "request" and "signing" of its own check) and the till's clock against the
/// service's.
///
/// The request is "/messages/<id>" with an identifier no cart has. A JSON
/// answer of 2xx proves that an authorised request gets through; a redirect
/// (never followed by the plug-in), a 5xx, or a 400, 404 or 405 without JSON
/// is a failure, since every return would meet it too; a JSON 400, 404 or 405
/// is a warning that shows the address reached (it may be the service's answer
/// to an unknown cart). A refusal in the words of the other authorisation
/// scheme (a gateway's while the gateway is off) names the switch to change. A clock more than a minute off is a warning; with the gateway
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
    /// The answer to an authorised read that no refusal stopped: its status and body.
    void judgeAnswer(const QString &name, const QString &seen, std::optional<qint64> ms, CheckReport *report) const;

    QJsonObject m_token;
    QJsonObject m_request;
    QJsonObject m_signing;
    bool m_gatewayOn;
    int m_toleranceSeconds;
};

} // namespace till
