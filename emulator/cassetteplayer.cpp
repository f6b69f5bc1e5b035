#include "emulator/cassetteplayer.h"

#include "emulator/exchange.h"

#include <contracts/placeholdermap.h>

#include <QJsonObject>
#include <QMutexLocker>

namespace tessaro::emulator {

namespace {

QString named(int index, const contracts::CassetteExchange &exchange)
{
    return QStringLiteral("%1 %2 %3").arg(index + 1).arg(exchange.method, exchange.path);
}

// The recorded answer's headers worth sending again: not the content type,
// which the reply carries itself; not those the server sets for this answer
// and this connection; not those that held a secret the cassette does not.
QList<QPair<QByteArray, QByteArray>> repeatable(const contracts::CassetteExchange::Headers &recorded)
{
    static const QStringList serverSet{QStringLiteral("Content-Type"), QStringLiteral("Content-Length"),
                                       QStringLiteral("Transfer-Encoding"), QStringLiteral("Connection"),
                                       QStringLiteral("Keep-Alive"), QStringLiteral("Date"),
                                       QStringLiteral("Trailer"), QStringLiteral("Upgrade")};
    QList<QPair<QByteArray, QByteArray>> headers;
    for (const auto &[name, value] : recorded) {
        if (!serverSet.contains(name, Qt::CaseInsensitive) && !contracts::PlaceholderMap::holdsPlaceholder(value))
            headers.append({name.toLatin1(), value.toUtf8()});
    }
    return headers;
}

} // namespace

CassettePlayer::CassettePlayer(const contracts::Cassette &cassette)
    : m_matcher(cassette)
{
}

contracts::CassetteExchange CassettePlayer::request(const Exchange &exchange)
{
    contracts::CassetteExchange request;
    request.method = QString::fromLatin1(exchange.method);
    request.path = exchange.path;
    request.query = exchange.query;
    for (const auto &[name, value] : exchange.headers)
        request.requestHeaders.append({QString::fromLatin1(name), QString::fromUtf8(value)});
    request.requestBody = exchange.body;
    return request;
}

CassettePlayer::Answer CassettePlayer::answer(const Exchange &exchange)
{
    const contracts::CassetteExchange sent = request(exchange);
    const QMutexLocker locker(&m_mutex);
    const contracts::RequestMatcher::Result result = m_matcher.match(sent);
    Answer answer;
    if (result.index < 0) {
        const QString nearest = result.nearest >= 0 ? named(result.nearest, m_matcher.cassette().exchanges.at(result.nearest))
                                                    : QStringLiteral("none");
        answer.note = QStringLiteral("no recorded request matches %1 %2; nearest: %3; %4")
                          .arg(sent.method, sent.path, nearest, result.difference);
        m_mismatches << answer.note;
        answer.reply = Reply::json(500, QJsonObject{{QStringLiteral("message"), QStringLiteral("No recorded exchange matches this request")},
                                                    {QStringLiteral("replay"), answer.note}});
        return answer;
    }
    const contracts::CassetteExchange &recorded = m_matcher.cassette().exchanges.at(result.index);
    answer.note = QStringLiteral("replayed %1").arg(named(result.index, recorded));
    if (!recorded.networkError) {
        const QString type = contracts::CassetteExchange::header(recorded.responseHeaders, QStringLiteral("Content-Type"))
                                 .value_or(QStringLiteral("application/json"));
        answer.reply = Reply(recorded.status, recorded.responseBody, type.toLatin1());
        answer.reply->setHeaders(repeatable(recorded.responseHeaders));
    }
    return answer;
}

QStringList CassettePlayer::mismatches() const
{
    const QMutexLocker locker(&m_mutex);
    return m_mismatches;
}

QStringList CassettePlayer::unsent() const
{
    const QMutexLocker locker(&m_mutex);
    QStringList list;
    for (const int index : m_matcher.unused())
        list << named(index, m_matcher.cassette().exchanges.at(index));
    return list;
}

} // namespace tessaro::emulator
