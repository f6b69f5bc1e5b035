#include "faultplanner.h"

namespace till {

FaultPlanner::FaultPlanner(quint64 seed, double rate, int timeoutMs)
    : m_drawn(true)
    , m_rate(rate)
    , m_timeoutMs(timeoutMs)
    , m_random(seed)
{
}

FaultPlanner::FaultPlanner(const QList<SessionFault> &faults)
    : m_planned(faults)
{
}

std::optional<SessionFault> FaultPlanner::next(const QString &path)
{
    const int ordinal = m_counts.value(path);
    m_counts.insert(path, ordinal + 1);
    std::optional<SessionFault> fault;
    for (auto it = m_planned.begin(); it != m_planned.end(); ++it) {
        if (it->path == path && it->ordinal == ordinal) {
            fault = *it;
            m_planned.erase(it);
            break;
        }
    }
    if (!fault && m_drawn && std::uniform_real_distribution<double>(0.0, 1.0)(m_random) < m_rate)
        fault = draw(path, ordinal);
    if (fault)
        m_struck << *fault;
    return fault;
}

SessionFault FaultPlanner::draw(const QString &path, int ordinal)
{
    static const QStringList kinds{
        QStringLiteral("hang"),           QStringLiteral("delay"),          QStringLiteral("close-before-apply"),
        QStringLiteral("close-after-apply"), QStringLiteral("reset"),       QStringLiteral("truncated-json"),
        QStringLiteral("malformed-json"), QStringLiteral("empty-body"),     QStringLiteral("http-status"),
        QStringLiteral("http-status"),    QStringLiteral("invalid-token"),  QStringLiteral("shift-closed"),
        QStringLiteral("shift-closed"),   SessionFault::unreachable(),
    };
    SessionFault fault;
    fault.path = path;
    fault.ordinal = ordinal;
    fault.kind = kinds.at(std::uniform_int_distribution<int>(0, int(kinds.size()) - 1)(m_random));
    if (fault.kind == QLatin1String("delay")) {
        fault.delayMs = std::uniform_int_distribution<int>(1, qMax(1, m_timeoutMs / 10))(m_random);
    } else if (fault.kind == QLatin1String("http-status")) {
        static const QList<QPair<int, QByteArray>> answers{
            {500, R"({"message": "Internal Server Error"})"},
            {400, R"({"message": "Invalid data type"})"},
            {404, R"({"message": "Item wasn't found"})"},
            {503, QByteArray()},
            {500, R"({"error": "Filter threw Exception"})"},
            {401, R"({"error_msg": "signature expired"})"},
        };
        const auto &answer = answers.at(std::uniform_int_distribution<int>(0, int(answers.size()) - 1)(m_random));
        fault.status = answer.first;
        fault.body = answer.second;
    } else if (fault.kind == QLatin1String("shift-closed") && std::uniform_int_distribution<int>(0, 1)(m_random) == 1) {
        // Closed twice in a row: the retry after the till opening meets it again.
        SessionFault again = fault;
        again.ordinal = ordinal + 1;
        m_planned << again;
    }
    return fault;
}

} // namespace till
