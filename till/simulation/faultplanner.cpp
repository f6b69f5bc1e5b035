#include "faultplanner.h"

#include <array>

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
    using Kind = SessionFault::Kind;
    // Equal chances for each entry; error statuses and a closed shift come up
    // twice as often. Nothing stands for the service unreachable.
    static constexpr std::array<std::optional<Kind>, 14> kinds{
        Kind::Hang,          Kind::Delay,         Kind::CloseBeforeApply, Kind::CloseAfterApply, Kind::Reset,
        Kind::TruncatedJson, Kind::MalformedJson, Kind::EmptyBody,        Kind::HttpStatus,      Kind::HttpStatus,
        Kind::InvalidToken,  Kind::ShiftClosed,   Kind::ShiftClosed,      std::nullopt,
    };
    SessionFault fault;
    fault.path = path;
    fault.ordinal = ordinal;
    const std::optional<Kind> drawn = kinds.at(std::size_t(std::uniform_int_distribution<int>(0, int(kinds.size()) - 1)(m_random)));
    fault.unreachable = !drawn.has_value();
    fault.kind = drawn.value_or(Kind::Reset);
    if (fault.kind == Kind::Delay) {
        fault.delayMs = std::uniform_int_distribution<int>(1, qMax(1, m_timeoutMs / 10))(m_random);
    } else if (fault.kind == Kind::HttpStatus) {
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
    } else if (fault.kind == Kind::ShiftClosed && std::uniform_int_distribution<int>(0, 1)(m_random) == 1) {
        // Closed twice in a row: the retry after the till opening meets it again.
        SessionFault again = fault;
        again.ordinal = ordinal + 1;
        m_planned << again;
    }
    return fault;
}

} // namespace till
