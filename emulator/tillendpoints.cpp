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

} // namespace

TillEndpoints::TillEndpoints(ServiceState &state, const Clock &clock)
    : m_state(state)
    , m_clock(clock)
{
}

Reply TillEndpoints::open(const QJsonObject &body)
{
    const QStringList missing = RequiredFields::missing(
        body, {QStringLiteral("storeNo"), QStringLiteral("tillNo"), QStringLiteral("operatorID")});
    if (!missing.isEmpty())
        return ServiceAnswers::missedFields(missing);
    if (m_state.shifts.isOpen(storeOf(body), tillOf(body)))
        return ServiceAnswers::shiftAlreadyOpened();

    const int shiftNo = m_state.shifts.open(storeOf(body), tillOf(body));
    return Reply::json(200, QJsonObject{
        {QStringLiteral("storeNo"), storeOf(body)},
        {QStringLiteral("tillNo"), tillOf(body)},
        {QStringLiteral("shiftNo"), shiftNo},
        {QStringLiteral("operatorID"), body.value(QStringLiteral("operatorID"))},
        {QStringLiteral("openedAt"), m_clock.now().toString(Qt::ISODate)},
    });
}

Reply TillEndpoints::close(const QJsonObject &body)
{
    QStringList missing = RequiredFields::missing(
        body, {QStringLiteral("storeNo"), QStringLiteral("tillNo"), QStringLiteral("payments")});
    if (missing.isEmpty() && !body.value(QStringLiteral("payments")).isArray())
        return ServiceAnswers::invalidDataType();
    missing += RequiredFields::missingInEach(body, QStringLiteral("payments"),
                                             {QStringLiteral("paymentCode"), QStringLiteral("paymentCount"),
                                              QStringLiteral("paymentAmount")});
    if (!missing.isEmpty())
        return ServiceAnswers::missedFields(missing);
    if (!m_state.shifts.isOpen(storeOf(body), tillOf(body)))
        return ServiceAnswers::shiftAlreadyClosed();

    const int shiftNo = m_state.shifts.close(storeOf(body), tillOf(body));
    return Reply::json(200, QJsonObject{
        {QStringLiteral("storeNo"), storeOf(body)},
        {QStringLiteral("tillNo"), tillOf(body)},
        {QStringLiteral("shiftNo"), shiftNo},
        {QStringLiteral("closedAt"), m_clock.now().toString(Qt::ISODate)},
    });
}

Reply TillEndpoints::deposit(const QJsonObject &body, const QString &requestId)
{
    const QStringList missing = RequiredFields::missing(
        body, {QStringLiteral("storeNo"), QStringLiteral("tillNo"), QStringLiteral("operatorID"),
               QStringLiteral("typeCode"), QStringLiteral("amount")});
    if (!missing.isEmpty())
        return ServiceAnswers::missedFields(missing);
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
