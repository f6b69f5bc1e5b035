#pragma once

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMutex>

#include <optional>

namespace tessaro::emulator {

/// Cash put into (typeCode 2) or taken out of (typeCode 1) the tills. A deposit
/// sent again with the same "X-Request-ID" is recognised and answered as the
/// first time, without counting it twice.
class DepositBook
{
public:
    /// The answer given to an earlier deposit with that request id.
    std::optional<QJsonObject> answerFor(const QString &requestId) const;
    /// Keeps a deposit and returns its answer: the body's fields plus
    /// "depositId" (and "requestId" when one was sent).
    QJsonObject add(const QJsonObject &body, const QString &requestId);
    /// Every answer given, in order.
    QList<QJsonObject> deposits() const;
    QJsonArray toJson() const;

private:
    mutable QMutex m_mutex;
    QList<QJsonObject> m_deposits;
    QHash<QString, int> m_byRequestId;
};

} // namespace tessaro::emulator
