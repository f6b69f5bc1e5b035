#include "networkprobe.h"

#include "checkreport.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QHostInfo>
#include <QLocale>
#include <QSslCertificate>
#include <QSslSocket>
#include <QTimer>

#include <memory>

namespace till {

namespace {

int defaultPort(const QUrl &url)
{
    return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
}

QString endpoint(const QUrl &url)
{
    return QStringLiteral("%1:%2").arg(url.host()).arg(defaultPort(url));
}

QString protocolName(QSsl::SslProtocol protocol)
{
    switch (protocol) {
    case QSsl::TlsV1_2:
        return QStringLiteral("TLS 1.2");
    case QSsl::TlsV1_3:
        return QStringLiteral("TLS 1.3");
    default:
        return QStringLiteral("TLS");
    }
}

QString joined(const QStringList &names)
{
    return names.isEmpty() ? QStringLiteral("(none)") : names.join(QStringLiteral(", "));
}

// The certificate's verdict: issuer, expiry and host name, and every reason
// the till's trusted authorities do not vouch for it.
void judgeCertificate(const QSslCertificate &certificate, const QList<QSslError> &errors, const QUrl &url,
                      CheckReport *report)
{
    const QString name = QStringLiteral("certificate");
    if (certificate.isNull()) {
        report->failure(name, QStringLiteral("the server showed no certificate"),
                        QStringLiteral("configure a certificate on the service's TLS endpoint"));
        return;
    }
    const QDateTime expiry = certificate.expiryDate();
    const qint64 daysLeft = QDateTime::currentDateTimeUtc().daysTo(expiry);
    bool hostMatches = true;
    QStringList problems;
    for (const QSslError &error : errors) {
        if (error.error() == QSslError::HostNameMismatch)
            hostMatches = false;
        problems << error.errorString();
    }
    const QString detail = QStringLiteral("issued to \"%1\" by \"%2\", valid until %3 (%4 days), host name %5 %6")
                               .arg(joined(certificate.subjectInfo(QSslCertificate::CommonName)),
                                    certificate.issuerDisplayName(), expiry.toString(QStringLiteral("yyyy-MM-dd")))
                               .arg(daysLeft)
                               .arg(url.host(), hostMatches ? QStringLiteral("matches") : QStringLiteral("does not match"));
    if (!problems.isEmpty()) {
        problems.removeDuplicates();
        report->failure(name, detail + QStringLiteral(": ") + problems.join(QStringLiteral("; ")),
                        QStringLiteral("the plug-in accepts only a certificate that a trusted authority issued for %1: "
                                       "install such a certificate on the service, or add its issuer to the till's "
                                       "trusted certificates (update-ca-certificates)")
                            .arg(url.host()));
    } else if (daysLeft < 30) {
        report->warning(name, detail, QStringLiteral("renew the service's certificate before it expires"));
    } else {
        report->ok(name, detail);
    }
}

// An HTTP date, "Sun, 06 Nov 1994 08:49:37 GMT"; Qt's RFC 2822 reading
// does not take the zone name "GMT".
QDateTime httpDate(const QString &text)
{
    QDateTime time = QLocale::c().toDateTime(text, QStringLiteral("ddd, dd MMM yyyy HH:mm:ss 'GMT'"));
    if (!time.isValid())
        return QDateTime::fromString(text, Qt::RFC2822Date).toUTC();
    time.setTimeSpec(Qt::UTC);
    return time;
}

} // namespace

NetworkProbe::NetworkProbe(int timeoutMs)
    : m_timeoutMs(timeoutMs)
{
}

NetworkProbe::Outcome NetworkProbe::probe(const QUrl &url, const QString &key, bool readDate, CheckReport *report) const
{
    const QList<QHostAddress> addresses = resolve(url.host(), key, report);
    if (addresses.isEmpty())
        return {};
    return probeAddresses(url, addresses, key, readDate, report);
}

NetworkProbe::Outcome NetworkProbe::probeAddresses(const QUrl &url, const QList<QHostAddress> &addresses,
                                                   const QString &key, bool readDate, CheckReport *report) const
{
    Outcome outcome;
    const bool tls = url.scheme() == QLatin1String("https");
    std::unique_ptr<QTcpSocket> socket = tls ? std::make_unique<QSslSocket>() : std::make_unique<QTcpSocket>();
    if (!connect(socket.get(), addresses, url, key, report))
        return outcome;
    if (tls && !encrypt(socket.get(), url, key, report))
        return outcome;
    outcome.reachable = true;
    if (readDate)
        this->readDate(socket.get(), url, &outcome);
    socket->abort();
    return outcome;
}

QList<QHostAddress> NetworkProbe::resolve(const QString &host, const QString &key, CheckReport *report) const
{
    const QString name = QStringLiteral("name resolution");
    QHostAddress literal;
    if (literal.setAddress(host)) {
        report->ok(name, QStringLiteral("%1 is an address: nothing to resolve").arg(host), 0);
        return {literal};
    }
    QElapsedTimer clock;
    clock.start();
    QEventLoop loop;
    std::optional<QHostInfo> answer;
    const int id = QHostInfo::lookupHost(host, &loop, [&answer, &loop](const QHostInfo &info) {
        answer = info;
        loop.quit();
    });
    QTimer::singleShot(m_timeoutMs, &loop, &QEventLoop::quit);
    if (!answer)
        loop.exec();
    const QString hint = QStringLiteral("check the host name in %1 and the till's name servers (/etc/resolv.conf)").arg(key);
    if (!answer) {
        QHostInfo::abortHostLookup(id);
        report->failure(name, QStringLiteral("%1: no answer within %2 ms").arg(host).arg(m_timeoutMs), hint, clock.elapsed());
        return {};
    }
    if (answer->error() != QHostInfo::NoError || answer->addresses().isEmpty()) {
        report->failure(name, QStringLiteral("%1: %2").arg(host, answer->errorString()), hint, clock.elapsed());
        return {};
    }
    const QList<QHostAddress> addresses = answer->addresses();
    QStringList shown;
    for (const QHostAddress &address : addresses)
        shown << address.toString();
    report->ok(name, QStringLiteral("%1 → %2").arg(host, shown.join(QStringLiteral(", "))), clock.elapsed());
    return addresses;
}

bool NetworkProbe::connect(QTcpSocket *socket, const QList<QHostAddress> &addresses, const QUrl &url,
                           const QString &key, CheckReport *report) const
{
    const QString name = QStringLiteral("TCP connection");
    QElapsedTimer clock;
    clock.start();
    // The step's time-out is shared: an address that refuses at once leaves
    // the rest of it to the next one.
    QStringList refused;
    for (const QHostAddress &address : addresses) {
        const qint64 left = m_timeoutMs - clock.elapsed();
        if (left <= 0)
            break;
        socket->connectToHost(address, quint16(defaultPort(url)));
        if (socket->waitForConnected(int(left))) {
            const QString tried = refused.isEmpty()
                ? QString()
                : QStringLiteral("; not at %1").arg(refused.join(QStringLiteral("; ")));
            report->ok(name, QStringLiteral("%1 (%2%3)").arg(endpoint(url), address.toString(), tried), clock.elapsed());
            return true;
        }
        refused << QStringLiteral("%1: %2").arg(address.toString(), socket->errorString());
        socket->abort();
    }
    if (refused.size() < addresses.size())
        refused << QStringLiteral("no time left within %1 ms for the other addresses").arg(m_timeoutMs);
    report->failure(name, QStringLiteral("%1: %2").arg(endpoint(url), refused.join(QStringLiteral("; "))),
                    QStringLiteral("is the service running there? Check the port in %1 and any firewall between "
                                   "the till and the service")
                        .arg(key),
                    clock.elapsed());
    return false;
}

bool NetworkProbe::encrypt(QTcpSocket *socket, const QUrl &url, const QString &key, CheckReport *report) const
{
    const QString name = QStringLiteral("TLS handshake");
    auto *tls = static_cast<QSslSocket *>(socket);
    if (!QSslSocket::supportsSsl()) {
        report->failure(name, QStringLiteral("this till has no TLS library"),
                        QStringLiteral("install the TLS support of Qt (the OpenSSL backend)"));
        return false;
    }
    tls->setPeerVerifyName(url.host());
    QList<QSslError> errors;
    // Carried on past certificate errors only to show the certificate; the
    // verdict below still fails it, as the plug-in's transport would.
    QObject::connect(tls, &QSslSocket::sslErrors, tls, [tls, &errors](const QList<QSslError> &found) {
        errors = found;
        tls->ignoreSslErrors();
    });
    QElapsedTimer clock;
    clock.start();
    tls->startClientEncryption();
    if (!tls->waitForEncrypted(m_timeoutMs)) {
        report->failure(name, QStringLiteral("%1: %2").arg(endpoint(url), tls->errorString()),
                        QStringLiteral("does the service speak TLS at that port? Check the scheme and port in %1").arg(key),
                        clock.elapsed());
        return false;
    }
    report->ok(name, QStringLiteral("%1, %2").arg(endpoint(url), protocolName(tls->sessionProtocol())), clock.elapsed());
    judgeCertificate(tls->peerCertificate(), errors, url, report);
    return true;
}

void NetworkProbe::readDate(QTcpSocket *socket, const QUrl &url, Outcome *outcome) const
{
    const QString path = url.path(QUrl::FullyEncoded).isEmpty() ? QStringLiteral("/") : url.path(QUrl::FullyEncoded);
    const QByteArray request = "GET " + path.toLatin1() + " HTTP/1.1\r\nHost: " + url.authority().toLatin1()
        + "\r\nUser-Agent: tessaro-till-check\r\nConnection: close\r\n\r\n";
    QElapsedTimer clock;
    clock.start();
    const QDateTime sent = QDateTime::currentDateTimeUtc();
    socket->write(request);
    QByteArray head;
    while (!head.contains("\r\n\r\n") && clock.elapsed() < m_timeoutMs) {
        if (head.size() >= maxAnswerBytes) {
            outcome->answerTooLarge = true;
            return;
        }
        if (!socket->waitForReadyRead(int(m_timeoutMs - clock.elapsed())))
            break;
        head += socket->read(maxAnswerBytes - head.size());
    }
    outcome->localTime = sent.addMSecs(clock.elapsed() / 2);
    const QList<QByteArray> lines = head.left(head.indexOf("\r\n\r\n")).split('\n');
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        if (colon <= 0 || line.left(colon).trimmed().toLower() != "date")
            continue;
        const QDateTime time = httpDate(QString::fromLatin1(line.mid(colon + 1).trimmed()));
        if (time.isValid())
            outcome->serviceTime = time;
    }
}

} // namespace till
