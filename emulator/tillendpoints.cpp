#include "emulator/tillendpoints.h"

#include "emulator/clock.h"
#include "emulator/requiredfields.h"
#include "emulator/serviceanswers.h"
#include "emulator/servicestate.h"

namespace tessaro::emulator {

namespace {

int storeOf(const QJsonObject &body)
{
    return body.value(QStringLiteral("storeNo")).toInt();
}

int tillOf(const QJsonObject &body)
{
    return body.value(QStringLiteral("tillNo")).toInt();
}

// The till, the shift's number and when it opened or closed.
QJsonObject shiftAnswer(const QJsonObject &body, int shiftNo, const QString &timeKey, const QDateTime &time)
{
    return {
        {QStringLiteral("storeNo"), storeOf(body)},
        {QStringLiteral("tillNo"), tillOf(body)},
        {QStringLiteral("shiftNo"), shiftNo},
        {timeKey, time.toString(Qt::ISODate)},
    };
}

} // namespace

TillEndpoints::TillEndpoints(ServiceState &state, const Clock &clock)
    : m_state(state)
    , m_clock(clock)
{
}

Reply TillEndpoints::open(const QJsonObject &body)
{
    if (const auto refusal = RequiredFields::refusal(
        body, {QStringLiteral("storeNo"), QStringLiteral("tillNo"), QStringLiteral("operatorID")}))
        return *refusal;
    if (m_state.shifts.isOpen(storeOf(body), tillOf(body)))
        return ServiceAnswers::shiftAlreadyOpened();

    const int shiftNo = m_state.shifts.open(storeOf(body), tillOf(body));
    QJsonObject answer = shiftAnswer(body, shiftNo, QStringLiteral("openedAt"), m_clock.now());
    answer.insert(QStringLiteral("operatorID"), body.value(QStringLiteral("operatorID")));
    return Reply::json(200, answer);
}

Reply TillEndpoints::close(const QJsonObject &body)
{
    if (const auto refusal = RequiredFields::refusal(
            body, {QStringLiteral("storeNo"), QStringLiteral("tillNo"), QStringLiteral("payments")},
            QStringLiteral("payments"),
            {QStringLiteral("paymentCode"), QStringLiteral("paymentCount"), QStringLiteral("paymentAmount")}))
        return *refusal;
    if (!m_state.shifts.isOpen(storeOf(body), tillOf(body)))
        return ServiceAnswers::shiftAlreadyClosed();

    const int shiftNo = m_state.shifts.close(storeOf(body), tillOf(body));
    return Reply::json(200, shiftAnswer(body, shiftNo, QStringLiteral("closedAt"), m_clock.now()));
}

Reply TillEndpoints::deposit(const QJsonObject &body, const QString &requestId)
{
    if (const auto refusal = RequiredFields::refusal(
        body, {QStringLiteral("storeNo"), QStringLiteral("tillNo"), QStringLiteral("operatorID"),
               QStringLiteral("typeCode"), QStringLiteral("amount")}))
        return *refusal;
    const int typeCode = body.value(QStringLiteral("typeCode")).toInt();
    if (typeCode != 1 && typeCode != 2)
        return ServiceAnswers::invalidDataType();
    if (const auto earlier = m_state.deposits.answerFor(requestId))
        return Reply::json(200, *earlier);
    if (!m_state.shifts.isOpen(storeOf(body), tillOf(body)))
        return ServiceAnswers::shiftClosed();
    return Reply::json(200, m_state.deposits.add(body, requestId));
}

} // namespace tessaro::emulator
