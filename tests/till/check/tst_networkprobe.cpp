#include "checkreport.h"
#include "networkprobe.h"

#include <support/scriptedhttpserver.h>

#include <QTcpServer>
#include <QTest>

using till::CheckReport;
using till::NetworkProbe;

/// The probe's way to a service whose name resolves to several addresses:
/// "localhost" is ::1 and 127.0.0.1 on a stock Debian till, and a service
/// listening on one of them only must still be found, as the plug-in's
/// transport finds it.
class TestNetworkProbe : public QObject
{
    Q_OBJECT

private slots:
    void laterAddressIsTriedWhenAnEarlierOneRefuses();
    void everyRefusingAddressIsNamed();
    void endlessAnswerHeadIsLeftUnread();

private:
    static CheckReport::Item item(const CheckReport &report, const QString &name);
};

CheckReport::Item TestNetworkProbe::item(const CheckReport &report, const QString &name)
{
    const QList<CheckReport::Item> items = report.items();
    for (const CheckReport::Item &item : items) {
        if (item.name == name)
            return item;
    }
    return {};
}

void TestNetworkProbe::laterAddressIsTriedWhenAnEarlierOneRefuses()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress(QStringLiteral("127.0.0.1"))));
    const QUrl url(QStringLiteral("http://tessaro.test:%1/api").arg(server.serverPort()));
    // Every 127/8 address is the loopback, but nothing listens on 127.0.0.2.
    const QList<QHostAddress> addresses{QHostAddress(QStringLiteral("127.0.0.2")),
                                        QHostAddress(QStringLiteral("127.0.0.1"))};

    CheckReport report;
    const NetworkProbe::Outcome outcome =
        NetworkProbe(5000).probeAddresses(url, addresses, QStringLiteral("Tessaro:url"), false, &report);

    QVERIFY(outcome.reachable);
    const CheckReport::Item connection = item(report, QStringLiteral("TCP connection"));
    QCOMPARE(connection.level, CheckReport::Level::Ok);
    QVERIFY2(connection.detail.contains(QStringLiteral("127.0.0.1")), qPrintable(connection.detail));
    QVERIFY2(connection.detail.contains(QStringLiteral("127.0.0.2: Connection refused")), qPrintable(connection.detail));
}

void TestNetworkProbe::everyRefusingAddressIsNamed()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress(QStringLiteral("127.0.0.1"))));
    const QUrl url(QStringLiteral("http://tessaro.test:%1/api").arg(server.serverPort()));
    server.close();
    const QList<QHostAddress> addresses{QHostAddress(QStringLiteral("127.0.0.2")),
                                        QHostAddress(QStringLiteral("127.0.0.1"))};

    CheckReport report;
    const NetworkProbe::Outcome outcome =
        NetworkProbe(5000).probeAddresses(url, addresses, QStringLiteral("Tessaro:url"), false, &report);

    QVERIFY(!outcome.reachable);
    const CheckReport::Item connection = item(report, QStringLiteral("TCP connection"));
    QCOMPARE(connection.level, CheckReport::Level::Failure);
    QVERIFY2(connection.detail.contains(QStringLiteral("127.0.0.2: Connection refused")), qPrintable(connection.detail));
    QVERIFY2(connection.detail.contains(QStringLiteral("127.0.0.1: Connection refused")), qPrintable(connection.detail));
    QVERIFY(connection.hint.contains(QStringLiteral("Tessaro:url")));
}

void TestNetworkProbe::endlessAnswerHeadIsLeftUnread()
{
    // A head longer than the bound, whose Date comes only after it.
    ScriptedHttpServer server;
    QVERIFY(server.start() != 0);
    const QByteArray filler(NetworkProbe::maxAnswerBytes + 1024 * 1024, 'a');
    server.setDefaultAnswer(ScriptedHttpServer::Answer::reply(
        200, QByteArray(), {{"X-Filler", filler}, {"Date", "Wed, 25 Nov 2026 18:00:00 GMT"}}));

    CheckReport report;
    const NetworkProbe::Outcome outcome = NetworkProbe(30000).probeAddresses(
        server.url(QStringLiteral("/api")), {QHostAddress(QStringLiteral("127.0.0.1"))}, QStringLiteral("Tessaro:url"), true, &report);

    QVERIFY(outcome.reachable);
    QVERIFY(!outcome.serviceTime);
    QVERIFY(outcome.answerTooLarge);
}

QTEST_GUILESS_MAIN(TestNetworkProbe)
#include "tst_networkprobe.moc"
