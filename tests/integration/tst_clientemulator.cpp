#include "client/interface.h"
#include "emulator/emulator.h"
#include "responses/response.h"
#include "responses/shiftclosedexception.h"

#include <documentsdao.h>
#include <session.h>
#include <singleton.h>
#include <testing/testhost.h>
#include <valutcollection.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;
using tessaro::emulator::JournalEntry;

class TestClientEmulator : public QObject
{
    Q_OBJECT

private slots:
    void tokenIsFetchedOnceThenReused();
    void expiredTokenIsFetchedAgainAndRequestRepeated();
    void tillOpenOnOpenShiftCountsAsSuccess();
    void tillOpenOpensClosedShift();
    void tillCloseSendsFoldedPayments();
    void gatewaySignaturesAreAccepted();
    void gatewayClockOffGivesDateMessage();

private:
    static EmulatorSettings settings(EmulatorSettings::AuthMode mode);
    static QString config(const Emulator &emulator, bool gateway);
    static QStringList journalPaths(Emulator &emulator);
};

EmulatorSettings TestClientEmulator::settings(EmulatorSettings::AuthMode mode)
{
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.authMode = mode;
    settings.clients = {{QStringLiteral("till-7-12"), QStringLiteral("tessaro"), QStringLiteral("Basic dGlsbDpzZWNyZXQ=")}};
    settings.appKey = QStringLiteral("gate-key");
    settings.appSecret = QStringLiteral("gate-secret");
    return settings;
}

QString TestClientEmulator::config(const Emulator &emulator, bool gateway)
{
    QString text = QStringLiteral("[Tessaro]\nurl=%1\ntokenUrl=%2\nclientId=till-7-12\nrealmId=tessaro\n"
                                  "authorizationHeader=Basic dGlsbDpzZWNyZXQ=\ntimeout=5\n"
                                  "[Tessaro.PaymentCodes]\n1=0,5\n")
                       .arg(emulator.baseUrl().toString(), emulator.tokenUrl().toString());
    if (gateway)
        text += QStringLiteral("[OrvelGate]\ntessaro=true\nappKey=gate-key\nappSecret=gate-secret\nxStage=PreProd\n");
    return text;
}

QStringList TestClientEmulator::journalPaths(Emulator &emulator)
{
    QStringList paths;
    const auto entries = emulator.journal().entries();
    for (const JournalEntry &entry : entries)
        paths << QString::fromLatin1(entry.exchange.method) + QLatin1Char(' ') + entry.exchange.path;
    return paths;
}

void TestClientEmulator::tokenIsFetchedOnceThenReused()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Token));
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, false));
    tessaro::Interface client;

    client.tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0).checkStatus();
    const QString token = client.currentToken();
    QVERIFY(!token.isEmpty());
    QVERIFY(client.tillClose().success());
    QCOMPARE(client.currentToken(), token);
    QCOMPARE(journalPaths(emulator),
             (QStringList{"POST /token", "POST /api/till/open", "POST /api/till/close"}));
}

void TestClientEmulator::expiredTokenIsFetchedAgainAndRequestRepeated()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Token));
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, false));
    tessaro::Interface client;
    client.tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0);
    const QString firstToken = client.currentToken();

    emulator.clock().setNow(emulator.clock().now().addSecs(2 * 3600));
    const tessaro::Response answer = client.tillClose();

    QVERIFY(answer.success());
    QVERIFY(client.currentToken() != firstToken);
    QCOMPARE(journalPaths(emulator),
             (QStringList{"POST /token", "POST /api/till/open", "POST /api/till/close", "POST /token", "POST /api/till/close"}));
    QCOMPARE(emulator.journal().entries().at(2).status, 401);
}

void TestClientEmulator::tillOpenOnOpenShiftCountsAsSuccess()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Token));
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, false));
    tessaro::Interface client;

    const tessaro::Response answer = client.tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0);
    QCOMPARE(answer.status(), tessaro::Response::ShiftAlreadyOpened);
    answer.checkStatus();
}

void TestClientEmulator::tillOpenOpensClosedShift()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Token));
    emulator.state().shifts.setOpen(7, 12, false);
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, false));
    tessaro::Interface client;

    QCOMPARE(client.tillClose().status(), tessaro::Response::ShiftClosed);
    QVERIFY_THROWS_EXCEPTION(tessaro::ShiftClosedException, client.tillClose().checkStatus());
    QVERIFY(client.tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0).success());
    QVERIFY(emulator.state().shifts.isOpen(7, 12));
}

void TestClientEmulator::tillCloseSendsFoldedPayments()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Token));
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, false));
    auto *valuts = Singleton<ValutCollection>::instance();
    valuts->addValut({0, QStringLiteral("Наличные"), 1});
    valuts->addValut({5, QStringLiteral("Подарочная карта"), 3});
    Singleton<DocumentsDao>::instance()->addPayment(1, 0, 100.0);
    Singleton<DocumentsDao>::instance()->addPayment(1, 5, 20.5);
    tessaro::Interface client;

    QVERIFY(client.tillClose().success());

    const auto closes = emulator.journal().entriesFor(QStringLiteral("/till/close"));
    QCOMPARE(closes.size(), 1);
    const QJsonObject body = QJsonDocument::fromJson(closes.first().exchange.body).object();
    QCOMPARE(body.value(QStringLiteral("storeNo")).toInt(), 7);
    QCOMPARE(body.value(QStringLiteral("tillNo")).toInt(), 12);
    const QJsonArray payments = body.value(QStringLiteral("payments")).toArray();
    QCOMPARE(payments.size(), 1);
    QCOMPARE(payments.first().toObject(), (QJsonObject{{QStringLiteral("paymentCode"), 1},
                                                      {QStringLiteral("paymentCount"), 2},
                                                      {QStringLiteral("paymentAmount"), 120.5}}));
}

void TestClientEmulator::gatewaySignaturesAreAccepted()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Gateway));
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, true));
    host.clock()->setNow(emulator.clock().now());
    tessaro::Interface client;

    QVERIFY(!client.usesTokenAuth());
    QCOMPARE(client.tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0).status(),
             tessaro::Response::ShiftAlreadyOpened);
    QVERIFY(client.tillClose().success());
    const auto entries = emulator.journal().entries();
    QCOMPARE(entries.size(), 2);
    for (const JournalEntry &entry : entries) {
        QVERIFY(entry.exchange.header("Authorization").startsWith("SDK-HMAC-SHA256 Access=gate-key, "));
        QVERIFY(entry.status != 401);
    }
}

void TestClientEmulator::gatewayClockOffGivesDateMessage()
{
    Emulator emulator(settings(EmulatorSettings::AuthMode::Gateway));
    QVERIFY(emulator.startInThread());
    TestHost host(config(emulator, true));
    host.clock()->setNow(emulator.clock().now().addSecs(-16 * 60));
    tessaro::Interface client;

    const tessaro::Response answer = client.tillClose();
    QCOMPARE(answer.status(), tessaro::Response::TokenError);
    QCOMPARE(answer.errorMessage().id(), QStringLiteral("tessaroGateSignatureError"));
    QCOMPARE(answer.errorMessage().text(), QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время"));
}

QTEST_GUILESS_MAIN(TestClientEmulator)
#include "tst_clientemulator.moc"
