#pragma once

#include <restclient.h>

#include <QDateTime>
#include <QHostAddress>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

class QTcpSocket;

namespace till {

class CheckReport;

/// The way to one endpoint of the service, step by step, each step timed:
/// name resolution, TCP connection and, for https, the TLS handshake and the
/// certificate (issuer, expiry, host name). Optionally one plain GET of the
/// endpoint's path on the same connection, for the answer's "Date" header.
///
/// The GET carries no credentials and changes nothing: it is only there to
/// read the service's clock. Every step waits at most the time-out given, and
/// no answer is read beyond maxAnswerBytes.
class NetworkProbe
{
public:
    /// The most any probe of the check reads of one answer: the host
    /// transport's own default bound.
    static constexpr qint64 maxAnswerBytes = RestClient::DefaultMaxAnswerSize;

    struct Outcome
    {
        /// TCP (and, for https, TLS) came up.
        bool reachable = false;
        /// The service's clock, from the "Date" header, when it sent one.
        std::optional<QDateTime> serviceTime;
        /// The till's clock in the middle of the GET's round trip.
        QDateTime localTime;
        /// The answer's head went on past maxAnswerBytes, and was left unread.
        bool answerTooLarge = false;
    };

    explicit NetworkProbe(int timeoutMs);

    /// Probes \a url, adding one line per step to \a report; \a key is the
    /// configuration key that names the address, for the hints.
    Outcome probe(const QUrl &url, const QString &key, bool readDate, CheckReport *report) const;
    /// Probes \a url at \a addresses, the ones its host name resolved to:
    /// they are tried in order until one connects, as the plug-in's transport
    /// does ("localhost" is ::1, then 127.0.0.1 on a stock Debian till).
    Outcome probeAddresses(const QUrl &url, const QList<QHostAddress> &addresses, const QString &key, bool readDate,
                           CheckReport *report) const;

private:
    /// The host's addresses; none when it does not resolve.
    QList<QHostAddress> resolve(const QString &host, const QString &key, CheckReport *report) const;
    bool connect(QTcpSocket *socket, const QList<QHostAddress> &addresses, const QUrl &url, const QString &key,
                 CheckReport *report) const;
    bool encrypt(QTcpSocket *socket, const QUrl &url, const QString &key, CheckReport *report) const;
    void readDate(QTcpSocket *socket, const QUrl &url, Outcome *outcome) const;

    int m_timeoutMs;
};

} // namespace till
