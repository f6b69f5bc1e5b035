#pragma once

#include "contracts/cassette.h"
#include "contracts/driftrules.h"

#include <QList>
#include <QString>

namespace tessaro::contracts {

/// Finds the recorded exchange that a request sent now stands for: the
/// first one not yet used, in recorded order, with the same method, path,
/// query, headers and body. What the cassette says may vary is not compared:
/// its placeholders (a secret, a signature) stand for any text, its volatile
/// headers and volatile body fields are left out. A request that matches
/// none is told the nearest recorded one and the first difference, down to
/// the byte, so that a change of the client's requests is never silent.
class RequestMatcher
{
public:
    struct Result
    {
        /// The matching exchange's index; -1 when none matches.
        int index = -1;
        /// When none matches: the nearest recorded exchange (-1 when the
        /// cassette is used up) and how the request differs from it.
        int nearest = -1;
        QString difference;
    };

    explicit RequestMatcher(const Cassette &cassette);

    /// Matches \a request (its method, path, query, request headers and
    /// body) and marks the match used.
    Result match(const CassetteExchange &request);
    /// The exchanges no request has matched yet.
    QList<int> unused() const;
    const Cassette &cassette() const { return m_cassette; }

    /// How \a sent differs from \a recorded, in the cassette's terms; empty
    /// when it does not.
    QString difference(const CassetteExchange &recorded, const CassetteExchange &sent) const;

private:
    QString headerDifference(const CassetteExchange &recorded, const CassetteExchange &sent) const;
    QString bodyDifference(const QByteArray &recorded, const QByteArray &sent) const;
    bool isVolatileHeader(const QString &name) const;

    Cassette m_cassette;
    DriftRules m_volatileFields;
    QList<bool> m_used;
    /// The first exchange not yet used: requests mostly come in recorded order.
    int m_next = 0;
};

} // namespace tessaro::contracts
