#pragma once

#include "emulator/reply.h"

#include <contracts/requestmatcher.h>

#include <QMutex>
#include <QStringList>

#include <optional>

namespace tessaro::emulator {

class Exchange;

/// Answers from a cassette instead of the service's state: each request gets
/// the recorded answer of the recorded request it matches (RequestMatcher).
/// A request that matches none gets a service error (HTTP 500 with a
/// "message"), which the client reports at once instead of waiting, and the
/// nearest recorded request with the first difference is noted.
///
/// Safe to use from any thread.
class CassettePlayer
{
public:
    /// What to do with one request.
    struct Answer
    {
        /// The answer to send; none when the recorded exchange had no answer
        /// (the connection is closed, as it was then).
        std::optional<Reply> reply;
        /// For the journal: which recorded exchange answered, or why none did.
        QString note;
    };

    explicit CassettePlayer(const contracts::Cassette &cassette);

    Answer answer(const Exchange &exchange);

    /// One line per request that matched no recorded one, in arrival order.
    QStringList mismatches() const;
    /// The recorded requests that were never sent, as "3 POST /advicenote".
    QStringList unsent() const;

    /// \a exchange in the cassette's terms.
    static contracts::CassetteExchange request(const Exchange &exchange);

private:
    mutable QMutex m_mutex;
    contracts::RequestMatcher m_matcher;
    QStringList m_mismatches;
};

} // namespace tessaro::emulator
