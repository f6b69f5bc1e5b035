#include "servicejudge.h"

#include "checkreport.h"

#include <plugin/selfcheck/selfcheckprotocol.h>

#include <optional>

namespace till {

namespace {

std::optional<qint64> elapsed(const QJsonObject &step)
{
    if (!step.contains(QStringLiteral("ms")))
        return std::nullopt;
    return step.value(QStringLiteral("ms")).toInteger();
}

// "HTTP 401 (invalid_client)", or the transport's own words when nothing answered.
QString outcome(const QJsonObject &step)
{
    if (step.value(QStringLiteral("networkError")).toBool())
        return QStringLiteral("no answer: %1").arg(step.value(QStringLiteral("transportError")).toString());
    QString text = QStringLiteral("HTTP %1").arg(step.value(QStringLiteral("httpCode")).toInt());
    const QString said = step.value(QStringLiteral("serviceError")).toString();
    if (!said.isEmpty())
        text += QStringLiteral(" (\"%1\")").arg(said);
    return text;
}

int httpCode(const QJsonObject &step)
{
    return step.value(QStringLiteral("httpCode")).toInt();
}

bool isRefusal(int code)
{
    return code == 401 || code == 403;
}

// The answers of a server that has nothing at the address, or nothing to GET there.
bool isWrongAddressCode(int code)
{
    return code == 400 || code == 404 || code == 405;
}

// A text of absurd length (an address of 100 KB) is shown by its start only;
// both go in with one arg(), so that a "%0A" of the address stays as it is.
QString shortened(const QString &text)
{
    constexpr qsizetype shown = 160;
    return text.size() <= shown ? text : QStringLiteral("%1… (%2 characters)").arg(text.left(shown), QString::number(text.size()));
}

// A refusal in the gateway's words while the plug-in goes to the service without it.
QString gatewayOffHint()
{
    return QStringLiteral("the service sits behind the gateway: switch on OrvelGate:tessaro and set OrvelGate:appKey, "
                          "OrvelGate:appSecret and OrvelGate:xStage to what the gateway issued");
}

QString duration(qint64 seconds)
{
    const qint64 size = qAbs(seconds);
    if (size < 60)
        return QStringLiteral("%1 s").arg(size);
    return QStringLiteral("%1 min %2 s").arg(size / 60).arg(size % 60);
}

} // namespace

QString ServiceJudge::clockMessage()
{
    return QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время");
}

ServiceJudge::ServiceJudge(const QJsonObject &pluginReport, bool gatewayOn, int clockToleranceSeconds)
    : m_token(pluginReport.value(tessaro::selfcheck::report::Token).toObject())
    , m_request(pluginReport.value(tessaro::selfcheck::report::Request).toObject())
    , m_signing(pluginReport.value(tessaro::selfcheck::report::Signing).toObject())
    , m_gatewayOn(gatewayOn)
    , m_toleranceSeconds(clockToleranceSeconds)
{
}

void ServiceJudge::judgeToken(CheckReport *report) const
{
    const QString name = QStringLiteral("token endpoint");
    if (!m_token.value(QStringLiteral("used")).toBool()) {
        report->ok(name, m_gatewayOn ? QStringLiteral("not used: the gateway signs the requests") : QStringLiteral("not used"));
        return;
    }
    const std::optional<qint64> ms = elapsed(m_token);
    if (m_token.value(QStringLiteral("ok")).toBool()) {
        if (m_token.value(QStringLiteral("empty")).toBool()) {
            report->failure(name, QStringLiteral("answered without an access_token"),
                            QStringLiteral("Tessaro:tokenUrl names something that is no OAuth2 token endpoint"), ms);
            return;
        }
        const QJsonValue lifetime = m_token.value(QStringLiteral("lifetimeSeconds"));
        report->ok(name, lifetime.isDouble() ? QStringLiteral("token issued, valid for %1").arg(duration(lifetime.toInteger()))
                                             : QStringLiteral("token issued, lifetime not given"),
                   ms);
        return;
    }
    const int code = httpCode(m_token);
    QString hint = QStringLiteral("check Tessaro:tokenUrl and the way to it (above)");
    if (m_token.contains(QStringLiteral("gatewayError")) && !m_gatewayOn)
        hint = gatewayOffHint();
    else if (code == 400 || code == 401 || code == 403)
        hint = QStringLiteral("the token endpoint does not know these credentials: check Tessaro:clientId, "
                              "Tessaro:realmId and Tessaro:authorizationHeader");
    else if (code == 404 || code == 405)
        hint = QStringLiteral("nothing issues tokens at that address: check the path in Tessaro:tokenUrl");
    report->failure(name, QStringLiteral("no token: ") + outcome(m_token), hint, ms);
}

void ServiceJudge::judgeRequest(CheckReport *report) const
{
    const QString name = QStringLiteral("service request");
    const QString request = QStringLiteral("GET ") + shortened(m_request.value(QStringLiteral("path")).toString());
    if (!m_request.value(QStringLiteral("sent")).toBool()) {
        report->failure(name, request + QStringLiteral(": not sent, the till has no token"),
                        QStringLiteral("fix the token endpoint first"));
        return;
    }
    const std::optional<qint64> ms = elapsed(m_request);
    const QString seen = request + QStringLiteral(": ") + outcome(m_request);
    if (m_request.value(QStringLiteral("networkError")).toBool()) {
        report->failure(name, seen, QStringLiteral("check Tessaro:url, the way to the service and its certificate (above)"), ms);
    } else if (m_request.contains(QStringLiteral("gatewayError"))) {
        report->failure(name, seen + QStringLiteral(": refused by the gateway"),
                        m_gatewayOn ? QStringLiteral("see the gateway's verdict below") : gatewayOffHint(), ms);
    } else if (const int status = m_request.value(QStringLiteral("status")).toInt(); status == 3 || isRefusal(httpCode(m_request))) {
        QString hint = QStringLiteral("the service wants authorisation: switch on Tessaro:useTokenAuth or the gateway (OrvelGate:tessaro)");
        if (m_gatewayOn)
            hint = QStringLiteral("the service wants a token, not a gateway signature: switch off OrvelGate:tessaro and set the token settings (Tessaro:tokenUrl, Tessaro:clientId)");
        else if (m_token.value(QStringLiteral("used")).toBool())
            hint = QStringLiteral("the service does not take the tokens of Tessaro:tokenUrl: check that it and Tessaro:realmId belong to this service");
        report->failure(name, seen + QStringLiteral(": authorisation refused"), hint, ms);
    } else if (m_request.value(QStringLiteral("thrown")).toBool()) {
        report->failure(name, seen + QStringLiteral(": ") + m_request.value(QStringLiteral("message")).toString(),
                        QStringLiteral("see the service's answer"), ms);
    } else {
        judgeAnswer(name, seen, ms, report);
    }
}

void ServiceJudge::judgeAnswer(const QString &name, const QString &seen, std::optional<qint64> ms, CheckReport *report) const
{
    const int code = httpCode(m_request);
    const QString shape = m_request.value(QStringLiteral("answerShape")).toString();
    const bool json = shape == QLatin1String("object") || shape == QLatin1String("array");
    const QString reached = shortened(m_request.value(QStringLiteral("url")).toString());
    const QString checkUrl = QStringLiteral("check Tessaro:url: it must name the service's base address, to which the plug-in adds /messages/…");
    if (code >= 300 && code < 400) {
        report->failure(name, seen + QStringLiteral(": a redirect, which the plug-in never follows: every request of a return would end here"),
                        QStringLiteral("write the address the redirect leads to into Tessaro:url (https:// when http:// is redirected)"), ms);
    } else if (code >= 500) {
        report->failure(name, seen + QStringLiteral(": the service answered, but reports a failure of its own: every return would fail alike"),
                        QStringLiteral("ask the service's operators"), ms);
    } else if (isWrongAddressCode(code) && !json) {
        report->failure(name, seen + QStringLiteral(": the service answers %1 at %2, with no JSON").arg(code).arg(reached), checkUrl, ms);
    } else if (isWrongAddressCode(code)) {
        // The service's answer to a cart it does not know is its own: this may be it.
        report->warning(name, seen + QStringLiteral(": a JSON answer at %1; the service may answer so for a cart it does not know, "
                                                    "or nothing may be there")
                                         .arg(reached),
                        checkUrl + QStringLiteral("; if returns are refused with HTTP %1, the address is wrong").arg(code), ms);
    } else if (code >= 400) {
        report->failure(name, seen + QStringLiteral(": the service refuses the read at %1").arg(reached), checkUrl, ms);
    } else if (!json) {
        report->warning(name, seen + QStringLiteral(": the answer at %1 is no JSON, which the plug-in cannot read").arg(reached), checkUrl, ms);
    } else {
        report->ok(name, seen + QStringLiteral(": an authorised request gets through"), ms);
    }
}

void ServiceJudge::judgeSignature(CheckReport *report) const
{
    const QString name = QStringLiteral("gateway signature");
    if (!m_signing.value(QStringLiteral("on")).toBool()) {
        report->ok(name, QStringLiteral("not used (OrvelGate:tessaro is off)"));
        return;
    }
    if (!m_signing.value(QStringLiteral("signed")).toBool()) {
        report->failure(name, QStringLiteral("requests go unsigned: OrvelGate:appKey, OrvelGate:appSecret or OrvelGate:xStage is empty"),
                        QStringLiteral("set all three to the values the gateway issued"));
        return;
    }
    const QString scheme = QStringLiteral("SDK-HMAC-SHA256 over %1").arg(m_signing.value(QStringLiteral("signedHeaders")).toString());
    const QString refusal = m_request.value(QStringLiteral("gatewayError")).toString();
    if (refusal.isEmpty()) {
        if (!m_request.value(QStringLiteral("sent")).toBool() || m_request.value(QStringLiteral("networkError")).toBool())
            report->warning(name, scheme + QStringLiteral(": not judged, the request got no answer"), QStringLiteral("fix the way to the service first"));
        else
            report->ok(name, scheme + QStringLiteral(": accepted by the gateway"));
        return;
    }
    QString hint = QStringLiteral("compare the gateway settings (OrvelGate:*) with what the gateway issued");
    QString detail = QStringLiteral("%1: refused, \"%2\"").arg(scheme, refusal);
    if (refusal.contains(QLatin1String("signature expired"))) {
        // What the plug-in itself makes of the refusal: the cashier's message.
        const QString message = m_request.value(QStringLiteral("message")).toString();
        detail += QStringLiteral(": the till's clock is too far from the gateway's; the cashier sees \"%1\"")
                      .arg(message.isEmpty() ? clockMessage() : message);
        hint = QStringLiteral("set the till's date and time right, best by NTP (timedatectl set-ntp true)");
    } else if (refusal.contains(QLatin1String("access key"))) {
        hint = QStringLiteral("OrvelGate:appKey is not a key the gateway knows: copy it again from the gateway's issue");
    } else if (refusal.contains(QLatin1String("verify signature"))) {
        hint = QStringLiteral("OrvelGate:appSecret does not belong to OrvelGate:appKey: copy it again from the gateway's issue");
    }
    report->failure(name, detail, hint);
}

void ServiceJudge::judgeClock(const NetworkProbe::Outcome &service, CheckReport *report) const
{
    const QString name = QStringLiteral("clock offset");
    const QString hint = QStringLiteral("set the till's date and time right, best by NTP (timedatectl set-ntp true)");
    if (!service.reachable) {
        report->warning(name, QStringLiteral("not compared: the service cannot be reached"), QStringLiteral("fix the way to the service first"));
        return;
    }
    if (service.answerTooLarge) {
        report->warning(name, QStringLiteral("not compared: the head of the service's answer went on past %1 MiB unread")
                                  .arg(NetworkProbe::maxAnswerBytes / (1024 * 1024)),
                        QStringLiteral("check that Tessaro:url names the service; compare the till's clock with a time server"));
        return;
    }
    if (!service.serviceTime) {
        report->warning(name, QStringLiteral("not compared: the service's answer had no Date header"),
                        QStringLiteral("compare the till's clock with a time server"));
        return;
    }
    // The Date header drops the fraction of its second: its middle is the best guess.
    const qint64 offsetMs = service.serviceTime->addMSecs(500).msecsTo(service.localTime);
    const qint64 offset = (offsetMs + (offsetMs < 0 ? -500 : 500)) / 1000;
    const QString detail = offset == 0 ? QStringLiteral("the till's clock agrees with the service's to the second")
                                       : QStringLiteral("the till's clock is %1 %2 the service's")
                                             .arg(duration(offset), offset < 0 ? QStringLiteral("behind") : QStringLiteral("ahead of"));
    // The gateway's tolerance may be shorter than a minute.
    if (m_gatewayOn && qAbs(offset) > m_toleranceSeconds) {
        report->failure(name, QStringLiteral("%1, beyond the gateway's tolerance of %2: every request is refused and the cashier sees \"%3\"")
                                  .arg(detail, duration(m_toleranceSeconds), clockMessage()),
                        hint);
    } else if (qAbs(offset) <= 60) {
        report->ok(name, detail);
    } else {
        report->warning(name, detail + QStringLiteral(", more than a minute"), hint);
    }
}

} // namespace till
