// The emulator's HTTP handling on a raw socket: "Expect: 100-continue",
// keep-alive and connection close by protocol version.
#include "emulator/emulator.h"

#include <QTcpSocket>
#include <QTest>

#include <memory>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;

class TestEmulatorHttp : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void answersExpectContinueBeforeBody();
    void connectionHandling_data();
    void connectionHandling();
    void answersCarryTheClockAsDate_data();
    void answersCarryTheClockAsDate();

private:
    /// Reads one whole answer (head and Content-Length bytes of body).
    static QByteArray readAnswer(QTcpSocket &socket);

    std::unique_ptr<Emulator> m_emulator;
};

void TestEmulatorHttp::init()
{
    EmulatorSettings settings;
    settings.authMode = EmulatorSettings::AuthMode::None;
    m_emulator = std::make_unique<Emulator>(settings);
    QVERIFY(m_emulator->startInThread() != 0);
}

void TestEmulatorHttp::cleanup()
{
    m_emulator.reset();
}

QByteArray TestEmulatorHttp::readAnswer(QTcpSocket &socket)
{
    QByteArray data;
    while (true) {
        const qsizetype headEnd = data.indexOf("\r\n\r\n");
        if (headEnd >= 0) {
            const qsizetype lengthAt = data.indexOf("Content-Length: ");
            const qsizetype length = data.mid(lengthAt + 16, data.indexOf("\r\n", lengthAt) - lengthAt - 16).toLongLong();
            if (data.size() >= headEnd + 4 + length)
                return data;
        }
        if (!socket.waitForReadyRead(5000))
            return data;
        data += socket.readAll();
    }
}

void TestEmulatorHttp::answersExpectContinueBeforeBody()
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_emulator->port());
    QVERIFY(socket.waitForConnected(5000));
    const QByteArray body = R"({"storeNo":1,"tillNo":2})";
    socket.write("POST /cart/create HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\n"
                 "Expect: 100-continue\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n");
    QVERIFY(socket.waitForReadyRead(5000));
    QCOMPARE(socket.readAll(), QByteArray("HTTP/1.1 100 Continue\r\n\r\n"));
    socket.write(body);
    const QByteArray answer = readAnswer(socket);
    QVERIFY2(answer.startsWith("HTTP/1.1 200 OK\r\n"), answer.constData());
    QCOMPARE(m_emulator->state().carts.carts().size(), 1);
}

void TestEmulatorHttp::connectionHandling_data()
{
    QTest::addColumn<QByteArray>("version");
    QTest::addColumn<QByteArray>("connection");
    QTest::addColumn<bool>("staysOpen");
    QTest::newRow("1.1") << QByteArray("HTTP/1.1") << QByteArray() << true;
    QTest::newRow("1.1 close") << QByteArray("HTTP/1.1") << QByteArray("Connection: close\r\n") << false;
    QTest::newRow("1.0") << QByteArray("HTTP/1.0") << QByteArray() << false;
    QTest::newRow("1.0 keep-alive") << QByteArray("HTTP/1.0") << QByteArray("Connection: Keep-Alive\r\n") << true;
}

void TestEmulatorHttp::connectionHandling()
{
    QFETCH(QByteArray, version);
    QFETCH(QByteArray, connection);
    QFETCH(bool, staysOpen);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_emulator->port());
    QVERIFY(socket.waitForConnected(5000));
    const QByteArray request = "GET /messages/1 " + version + "\r\nHost: 127.0.0.1\r\n" + connection + "\r\n";
    socket.write(request);
    const QByteArray first = readAnswer(socket);
    QVERIFY2(first.startsWith("HTTP/1.1 200 OK\r\n"), first.constData());
    QVERIFY(first.endsWith("\r\n\r\n[]"));
    QCOMPARE(first.contains("Connection: Keep-Alive\r\n"), staysOpen);
    if (staysOpen) {
        socket.write(request);
        QVERIFY(readAnswer(socket).startsWith("HTTP/1.1 200 OK\r\n"));
        QCOMPARE(m_emulator->journal().size(), 2);
    } else {
        QVERIFY(socket.state() == QAbstractSocket::UnconnectedState || socket.waitForDisconnected(5000));
    }
}

void TestEmulatorHttp::answersCarryTheClockAsDate_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("service path") << QByteArray("/messages/1");
    QTest::newRow("unknown path") << QByteArray("/nowhere");
    QTest::newRow("emulator's own path") << QByteArray("/_emulator/clock");
}

void TestEmulatorHttp::answersCarryTheClockAsDate()
{
    QFETCH(QByteArray, path);
    m_emulator->clock().setNow(QDateTime(QDate(2024, 1, 31), QTime(23, 59, 59), Qt::UTC));
    m_emulator->clock().advance(20 * 60);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, m_emulator->port());
    QVERIFY(socket.waitForConnected(5000));
    socket.write("GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    const QByteArray answer = readAnswer(socket);
    QVERIFY2(answer.contains("\r\nDate: Thu, 01 Feb 2024 00:19:59 GMT\r\n"), answer.constData());
}

QTEST_GUILESS_MAIN(TestEmulatorHttp)
#include "tst_emulatorhttp.moc"
