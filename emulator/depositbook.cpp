#include "emulator/depositbook.h"

#include <QMutexLocker>

namespace tessaro::emulator {

std::optional<QJsonObject> DepositBook::answerFor(const QString &requestId) const
{
    const QMutexLocker locker(&m_mutex);
    const auto it = m_byRequestId.constFind(requestId);
    if (requestId.isEmpty() || it == m_byRequestId.cend())
        return std::nullopt;
    return m_deposits.at(*it);
}

QJsonObject DepositBook::add(const QJsonObject &body, const QString &requestId)
{
    const QMutexLocker locker(&m_mutex);
    QJsonObject answer = body;
    answer.insert(QStringLiteral("depositId"), int(m_deposits.size()) + 1);
    if (!requestId.isEmpty()) {
        answer.insert(QStringLiteral("requestId"), requestId);
        m_byRequestId.insert(requestId, int(m_deposits.size()));
    }
    m_deposits.append(answer);
    return answer;
}

QList<QJsonObject> DepositBook::deposits() const
{
    const QMutexLocker locker(&m_mutex);
    return m_deposits;
}

QJsonArray DepositBook::toJson() const
{
    QJsonArray array;
    for (const QJsonObject &deposit : deposits())
        array.append(deposit);
    return array;
}

} // namespace tessaro::emulator
