#include "emulatedtill.h"
#include "emulatedtillconstants.h"
#include "tilldatafolder.h"

#include <emulator/emulator.h>
#include <support/folderstate.h>
#include <support/scriptedhttpserver.h>
#include <tessaroversion.h>

#include <QEventLoop>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSettings>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;
using tessaro::emulator::JournalEntry;

/// tessaro-till check against the service emulator, with the real plug-in:
/// a correct till passes, and every broken one is named by the check.
class TestTillCheck : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void correctTillPasses_data();
    void correctTillPasses();
    void brokenTillIsNamed_data();
    void brokenTillIsNamed();
    void gatewayOffBeforeAGatewayNamesTheSwitch();
    void selfSignedCertificateIsNamed_data();
    void selfSignedCertificateIsNamed();
    void unreachablePortIsNamed();
    void clockShiftedBeyondTheGatewaysToleranceIsNamed();
    void clockShiftedWithoutGatewayIsAWarning();
    void jsonSaysTheSameForMonitoring();
    void configFileWithDictionariesIsChecked();
    void changesNothingAndAsksOnlyToRead();
    void wrongCommandLineIsRefused();
    void pluginWithoutItsCheckIsNamed();
    void serviceErrorTextReachesTheTerminalEscaped();
    void apiKeysInAddressesAreMasked_data();
    void apiKeysInAddressesAreMasked();

private:
    struct Result
    {
        int exitCode = -1;
        QString out;
        QString err;
    };

    /// Starts the emulator with token or gateway authorisation, and a till for it.
    void startEmulator(EmulatorSettings::AuthMode mode);
    /// The emulator's till, its till.ini changed by \a settings ("Section/key"
    /// to a value; an empty value removes the key).
    QString makeTill(const QMap<QString, QString> &settings = {}, bool gateway = false);
    /// Runs the command; the test's event loop turns meanwhile, for servers of its own.
    Result check(const QStringList &arguments);
    Result checkTill(const QStringList &extra = {});
    /// Everything a check must never show: the credentials and every token the service issued.
    QStringList secrets() const;
    void verifyNoSecret(const Result &result) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<till::EmulatedTill> m_service;
    QString m_data;
};

namespace {

const QString authorization = QStringLiteral("Basic ") + till::emulated::clientCredentials;
const QString appSecret = QStringLiteral("gate-secret-4711");

/// The lines of a check's text whose level and name are these.
QString line(const QString &text, const QString &level, const QString &name)
{
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &candidate : lines) {
        const QStringList words = candidate.simplified().split(QLatin1Char(' '));
        if (words.size() >= 2 && words.at(0) == level && candidate.simplified().mid(level.size() + 1).startsWith(name))
            return candidate;
    }
    return QString();
}

/// The warnings and failures of a check's text, and its summary: what a failed test shows.
QByteArray findings(const QString &text)
{
    QStringList kept;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &candidate : lines) {
        const QString simple = candidate.simplified();
        if (simple.startsWith(QLatin1String("warning ")) || simple.startsWith(QLatin1String("failure "))
            || simple.startsWith(QLatin1String("Summary")))
            kept << simple;
    }
    return kept.join(QLatin1Char('\n')).toUtf8();
}

} // namespace

void TestTillCheck::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_data = m_dir->filePath(QStringLiteral("till"));
}

void TestTillCheck::cleanup()
{
    m_service.reset();
}

void TestTillCheck::startEmulator(EmulatorSettings::AuthMode mode)
{
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.authMode = mode;
    settings.clients = {{QStringLiteral("till"), QStringLiteral("tessaro"), authorization}};
    settings.appKey = till::emulated::appKey;
    settings.appSecret = appSecret;
    m_service = std::make_unique<till::EmulatedTill>(settings);
    QString error;
    QVERIFY2(m_service->start(m_data, &error), qPrintable(error));
}

QString TestTillCheck::makeTill(const QMap<QString, QString> &settings, bool gateway)
{
    const till::TillDataFolder &folder = m_service->folder();
    QSettings ini(folder.configFile(), QSettings::IniFormat);
    if (gateway) {
        ini.setValue(QStringLiteral("OrvelGate/tessaro"), true);
        ini.setValue(QStringLiteral("OrvelGate/appKey"), till::emulated::appKey);
        ini.setValue(QStringLiteral("OrvelGate/appSecret"), appSecret);
        ini.setValue(QStringLiteral("OrvelGate/xStage"), QStringLiteral("PreProd"));
    }
    QMap<QString, QString> lines;
    for (auto it = settings.cbegin(); it != settings.cend(); ++it) {
        if (it.key().startsWith(QLatin1String("raw:")))
            lines.insert(it.key().mid(4).replace(QLatin1String("\\n"), QLatin1String("\n")), it.value());
        else if (it.value().isEmpty())
            ini.remove(it.key());
        else
            ini.setValue(it.key(), it.value());
    }
    ini.sync();
    // Lines as a person writes them, which QSettings would quote.
    if (!lines.isEmpty()) {
        QFile file(folder.configFile());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(folder.configFile()));
        QString text = QString::fromUtf8(file.readAll());
        file.close();
        for (auto it = lines.cbegin(); it != lines.cend(); ++it)
            text.replace(it.key(), QString(it.value()).replace(QLatin1String("\\n"), QLatin1String("\n")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(text.toUtf8()) < 0)
            qFatal("cannot write %s", qPrintable(folder.configFile()));
    }
    return m_data;
}

TestTillCheck::Result TestTillCheck::check(const QStringList &arguments)
{
    QProcess process;
    QEventLoop loop;
    connect(&process, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    process.start(QStringLiteral(TILL_EXECUTABLE), QStringList{QStringLiteral("check")} + arguments);
    loop.exec();
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()), QString::fromUtf8(process.readAllStandardError())};
}

TestTillCheck::Result TestTillCheck::checkTill(const QStringList &extra)
{
    return check(QStringList{QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_PLUGIN_DIR)} + extra);
}

QStringList TestTillCheck::secrets() const
{
    QStringList found{till::emulated::clientCredentials, appSecret};
    if (!m_service)
        return found;
    const auto entries = m_service->emulator().journal().entries();
    for (const JournalEntry &entry : entries) {
        const QByteArray bearer = entry.exchange.header(QByteArrayLiteral("authorization"));
        if (bearer.startsWith("Bearer ") && bearer.size() > 7)
            found << QString::fromLatin1(bearer.mid(7));
    }
    return found;
}

void TestTillCheck::verifyNoSecret(const Result &result) const
{
    const QStringList all = secrets();
    for (const QString &secret : all) {
        QVERIFY2(!result.out.contains(secret), qPrintable(secret));
        QVERIFY2(!result.err.contains(secret), qPrintable(secret));
    }
}


void TestTillCheck::correctTillPasses_data()
{
    QTest::addColumn<bool>("gateway");
    QTest::newRow("token") << false;
    QTest::newRow("gateway") << true;
}

void TestTillCheck::correctTillPasses()
{
    QFETCH(bool, gateway);
    startEmulator(gateway ? EmulatorSettings::AuthMode::Gateway : EmulatorSettings::AuthMode::Token);
    makeTill({}, gateway);
    const Result result = checkTill();
    QVERIFY2(result.exitCode == 0, findings(result.out + result.err).constData());
    QVERIFY2(result.out.contains(QStringLiteral(" 0 warnings, 0 failures")), findings(result.out).constData());
    QVERIFY(!line(result.out, QStringLiteral("ok"), QStringLiteral("service request")).isEmpty());
    QVERIFY(!line(result.out, QStringLiteral("ok"), QStringLiteral("clock offset")).isEmpty());
    // Every setting the plug-in reads is shown, with the value it takes.
    QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("Tessaro:typeTill")).contains(QStringLiteral("0 (default)")));
    QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("Tessaro:nameTypeTill")).contains(QStringLiteral("RegularSales (default)")));
    QVERIFY(!line(result.out, QStringLiteral("ok"), QStringLiteral("Tessaro:hostName")).isEmpty());
    QVERIFY(!line(result.out, QStringLiteral("ok"), QStringLiteral("Tessaro:validationCoupon ")).isEmpty());
    QVERIFY(!line(result.out, QStringLiteral("ok"), QStringLiteral("Tessaro:onlineCheckEanReasonCode")).isEmpty());
    QVERIFY2(line(result.out, QStringLiteral("ok"), QStringLiteral("versions"))
                 .endsWith(QStringLiteral("tessaro-till " TESSARO_VERSION ", plug-in TessaroBack " TESSARO_VERSION)),
             qPrintable(result.out));
    if (gateway) {
        QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("gateway signature")).contains(QStringLiteral("accepted")));
    } else {
        QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("token endpoint")).contains(QStringLiteral("valid for 60 min 0 s")));
        QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("Tessaro:authorizationHeader")).contains(QStringLiteral("Basic *** (22 characters)")));
    }
    verifyNoSecret(result);
}

void TestTillCheck::brokenTillIsNamed_data()
{
    QTest::addColumn<bool>("gateway");
    QTest::addColumn<QVariantMap>("settings");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("level");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("says");

    const auto set = [](const QString &key, const QString &value) { return QVariantMap{{key, value}}; };
    QTest::newRow("wrong secret") << false << set(QStringLiteral("Tessaro/authorizationHeader"), QStringLiteral("Basic d3Jvbmc6c2VjcmV0"))
                                  << 2 << "failure" << "token endpoint" << "no token: HTTP 401 (\"invalid_client\")";
    QTest::newRow("wrong token address") << false << set(QStringLiteral("Tessaro/tokenUrl"), QStringLiteral("TOKEN/tokne"))
                                         << 2 << "failure" << "token endpoint" << "no token: HTTP 404";
    QTest::newRow("gateway key mismatch") << true << set(QStringLiteral("OrvelGate/appKey"), QStringLiteral("gate-kee"))
                                          << 2 << "failure" << "gateway signature" << "refused, \"unknown access key\"";
    QTest::newRow("gateway secret mismatch") << true << set(QStringLiteral("OrvelGate/appSecret"), QStringLiteral("gate-secret-4712"))
                                             << 2 << "failure" << "gateway signature" << "refused, \"verify signature failed\"";
    QTest::newRow("gateway key with a blank") << true << set(QStringLiteral("OrvelGate/appKey"), till::emulated::appKey + QLatin1Char(' '))
                                              << 2 << "failure" << "OrvelGate:appKey" << "*** (9 characters): blanks stand around it";
    QTest::newRow("gateway without secret") << true << set(QStringLiteral("OrvelGate/appSecret"), QString())
                                            << 2 << "failure" << "gateway signature" << "requests go unsigned";
    QTest::newRow("time-out of 0") << false << set(QStringLiteral("Tessaro/timeout"), QStringLiteral("0"))
                                   << 2 << "failure" << "Tessaro:timeout" << "0 is no time-out: the transport waits up to its cap of 2 min 0 s";
    QTest::newRow("time-out beyond the transport's cap") << false << set(QStringLiteral("Tessaro/timeout"), QStringLiteral("2147484"))
                                                         << 1 << "warning" << "Tessaro:timeout" << "each request waits at most 2 min 0 s";
    QTest::newRow("wrong base path") << false << set(QStringLiteral("Tessaro/url"), QStringLiteral("ROOT/v2"))
                                     << 1 << "warning" << "service request" << "HTTP 404 (\"Not found\"): a JSON answer at http://";
    QTest::newRow("base path with a trailing slash") << false << set(QStringLiteral("Tessaro/url"), QStringLiteral("ROOT/api/"))
                                                     << 1 << "warning" << "Tessaro:url" << "ends with \"/\": requests go to …/api//messages/…";
    QTest::newRow("base path with %00") << false << set(QStringLiteral("Tessaro/url"), QStringLiteral("ROOT/api%00"))
                                        << 2 << "failure" << "Tessaro:url" << "holds a control character";
    QTest::newRow("base path with a blank") << false << set(QStringLiteral("Tessaro/url"), QStringLiteral("ROOT/a pi"))
                                            << 2 << "failure" << "Tessaro:url" << "holds a blank";
    QTest::newRow("base path of 100 KB") << false << set(QStringLiteral("Tessaro/url"), QStringLiteral("ROOT/") + QString(100 * 1024, QLatin1Char('a')))
                                         << 2 << "failure" << "Tessaro:url" << "102";
    QTest::newRow("receipt-number mask that is no regular expression")
        << false << set(QStringLiteral("Tessaro.ReceiptNumber.2/mask"), QStringLiteral("0*(?<result\\d{1,12}"))
        << 2 << "failure" << "Tessaro.ReceiptNumber.2:mask" << "\"0*(?<result\\d{1,12}\" is no regular expression";
    QTest::newRow("VAT codes cut at a semicolon") << false << set(QStringLiteral("raw:[Tessaro.VatCodes]\\n1=1\\n"), QStringLiteral("[Tessaro.VatCodes]\\n1=1\\n5=2;3\\n"))
                                                  << 2 << "failure" << "[Tessaro.VatCodes] 5" << "\"2;3\" is cut at \";\"";
    QTest::newRow("gateway off before a gateway") << true << set(QStringLiteral("OrvelGate/tessaro"), QStringLiteral("false"))
                                                  << 2 << "failure" << "service request" << "refused by the gateway";
    QTest::newRow("time-out above a minute") << false << set(QStringLiteral("Tessaro/timeout"), QStringLiteral("90"))
                                             << 1 << "warning" << "Tessaro:timeout" << "90 s";
    QTest::newRow("missing payment code") << false << set(QStringLiteral("Tessaro.PaymentCodes/3"), QString())
                                          << 2 << "failure" << "[Tessaro.PaymentCodes]" << "3 (Подарочный сертификат)";
    QTest::newRow("token auth without client id") << false << set(QStringLiteral("Tessaro/clientId"), QString())
                                                  << 2 << "failure" << "Tessaro:clientId" << "empty, but token authorisation is on";
    QTest::newRow("url without scheme") << false << set(QStringLiteral("Tessaro/url"), QStringLiteral("localhost:8080/api"))
                                        << 2 << "failure" << "Tessaro:url" << "does not start with http:// or https://";
    QTest::newRow("plain http to another host") << false << QVariantMap{{QStringLiteral("Tessaro/url"), QStringLiteral("http://tessaro.invalid/api")},
                                                                        {QStringLiteral("Tessaro/timeout"), QStringLiteral("1")}}
                                                << 2 << "warning" << "Tessaro:url" << "plain http to tessaro.invalid";
    QTest::newRow("section key not an integer") << false << set(QStringLiteral("Tessaro.VatCodes/abc"), QStringLiteral("4"))
                                                << 1 << "warning" << "[Tessaro.VatCodes]" << "ignores the keys that are not whole numbers: \"abc\"";
    QTest::newRow("VAT code without a till code") << false << set(QStringLiteral("Tessaro.VatCodes/3"), QStringLiteral("x"))
                                                  << 1 << "warning" << "[Tessaro.VatCodes]" << "no till VAT code maps to: 3";
    QTest::newRow("currency list names an unknown currency") << false << set(QStringLiteral("Tessaro.ForbiddenMixedValuts/9"), QStringLiteral("1"))
                                                             << 1 << "warning" << "[Tessaro.ForbiddenMixedValuts]" << "does not know: 9";
}

void TestTillCheck::brokenTillIsNamed()
{
    QFETCH(bool, gateway);
    QFETCH(QVariantMap, settings);
    QFETCH(int, exitCode);
    QFETCH(QString, level);
    QFETCH(QString, name);
    QFETCH(QString, says);
    startEmulator(gateway ? EmulatorSettings::AuthMode::Gateway : EmulatorSettings::AuthMode::Token);
    QMap<QString, QString> changes;
    for (auto it = settings.cbegin(); it != settings.cend(); ++it)
        changes.insert(it.key(), it.value()
                                     .toString()
                                     .replace(QLatin1String("TOKEN"), m_service->emulator().tokenUrl().toString())
                                     .replace(QLatin1String("ROOT"), m_service->emulator().baseUrl().adjusted(QUrl::RemovePath).toString()));
    makeTill(changes, gateway);
    const Result result = checkTill();
    QVERIFY2(result.exitCode == exitCode, findings(result.out + result.err).constData());
    const QString found = line(result.out, level, name);
    QVERIFY2(found.contains(says), findings(result.out).left(4000).constData());
    verifyNoSecret(result);
}

void TestTillCheck::gatewayOffBeforeAGatewayNamesTheSwitch()
{
    startEmulator(EmulatorSettings::AuthMode::Gateway);
    makeTill();
    const QJsonObject json = QJsonDocument::fromJson(checkTill({QStringLiteral("--json")}).out.toUtf8()).object();
    const QJsonArray checks = json.value(QStringLiteral("checks")).toArray();
    QString hint;
    for (const QJsonValue &check : checks) {
        if (check.toObject().value(QStringLiteral("name")).toString() == QLatin1String("service request"))
            hint = check.toObject().value(QStringLiteral("hint")).toString();
    }
    QVERIFY2(hint.contains(QStringLiteral("switch on OrvelGate:tessaro")), qPrintable(hint));
    QVERIFY2(!hint.contains(QStringLiteral("Tessaro:tokenUrl")), qPrintable(hint));
}

void TestTillCheck::selfSignedCertificateIsNamed_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("match");
    QTest::newRow("the certificate's host") << QStringLiteral("127.0.0.1") << QStringLiteral("matches");
    QTest::newRow("another name") << QStringLiteral("localhost") << QStringLiteral("does not match");
}

void TestTillCheck::selfSignedCertificateIsNamed()
{
    QFETCH(QString, host);
    QFETCH(QString, match);
    QProcess openssl;
    openssl.setWorkingDirectory(m_dir->path());
    openssl.start(QStringLiteral("openssl"), {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"), QStringLiteral("ec"),
                                              QStringLiteral("-pkeyopt"), QStringLiteral("ec_paramgen_curve:prime256v1"), QStringLiteral("-nodes"),
                                              QStringLiteral("-keyout"), QStringLiteral("key.pem"), QStringLiteral("-out"), QStringLiteral("cert.pem"),
                                              QStringLiteral("-days"), QStringLiteral("365"), QStringLiteral("-subj"), QStringLiteral("/CN=127.0.0.1"),
                                              QStringLiteral("-addext"), QStringLiteral("subjectAltName=IP:127.0.0.1")});
    if (!openssl.waitForFinished(30000) || openssl.exitCode() != 0)
        QSKIP("no openssl command to make a certificate with");
    QFile certificateFile(m_dir->filePath(QStringLiteral("cert.pem")));
    QFile keyFile(m_dir->filePath(QStringLiteral("key.pem")));
    QVERIFY(certificateFile.open(QIODevice::ReadOnly) && keyFile.open(QIODevice::ReadOnly));

    // A TLS endpoint that shows the certificate and answers every request with 404.
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(QSslCertificate(certificateFile.readAll(), QSsl::Pem));
    tls.setPrivateKey(QSslKey(keyFile.readAll(), QSsl::Ec, QSsl::Pem));
    QSslServer server;
    server.setSslConfiguration(tls);
    connect(&server, &QSslServer::pendingConnectionAvailable, &server, [&server] {
        while (QTcpSocket *socket = server.nextPendingConnection()) {
            connect(socket, &QTcpSocket::readyRead, socket, [socket] {
                if (socket->readAll().contains("\r\n\r\n"))
                    socket->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
            });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    QVERIFY(server.listen(QHostAddress::LocalHost));
    startEmulator(EmulatorSettings::AuthMode::Token);
    const QString https = QStringLiteral("https://%1:%2").arg(host).arg(server.serverPort());
    makeTill({{QStringLiteral("Tessaro/url"), https + QStringLiteral("/api")}, {QStringLiteral("Tessaro/tokenUrl"), https + QStringLiteral("/token")}});

    const Result result = checkTill();
    QCOMPARE(result.exitCode, 2);
    QVERIFY2(!line(result.out, QStringLiteral("ok"), QStringLiteral("TLS handshake")).isEmpty(), findings(result.out).constData());
    const QString certificate = line(result.out, QStringLiteral("failure"), QStringLiteral("certificate"));
    QVERIFY2(certificate.contains(QStringLiteral("issued to \"127.0.0.1\" by \"127.0.0.1\"")), findings(result.out).constData());
    QVERIFY2(certificate.contains(QStringLiteral("self-signed")), qPrintable(certificate));
    QVERIFY2(certificate.contains(QStringLiteral("host name %1 %2").arg(host, match)), qPrintable(certificate));
    // The plug-in's own transport refuses the certificate as well.
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("token endpoint")).contains(QStringLiteral("no answer")), findings(result.out).constData());
}

void TestTillCheck::unreachablePortIsNamed()
{
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const quint16 port = closed.serverPort();
    closed.close();
    startEmulator(EmulatorSettings::AuthMode::Token);
    makeTill({{QStringLiteral("Tessaro/url"), QStringLiteral("http://127.0.0.1:%1/api").arg(port)},
              {QStringLiteral("Tessaro/tokenUrl"), QStringLiteral("http://127.0.0.1:%1/token").arg(port)}});
    const Result result = checkTill();
    QCOMPARE(result.exitCode, 2);
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("TCP connection")).contains(QStringLiteral("127.0.0.1:%1").arg(port)),
             findings(result.out).constData());
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("token endpoint")).contains(QStringLiteral("no answer")), findings(result.out).constData());
    QVERIFY(!line(result.out, QStringLiteral("warning"), QStringLiteral("clock offset")).isEmpty());
}

void TestTillCheck::clockShiftedBeyondTheGatewaysToleranceIsNamed()
{
    startEmulator(EmulatorSettings::AuthMode::Gateway);
    m_service->emulator().clock().advance(20 * 60);
    makeTill({}, true);
    const Result result = checkTill();
    QCOMPARE(result.exitCode, 2);
    const QString clock = line(result.out, QStringLiteral("failure"), QStringLiteral("clock offset"));
    QVERIFY2(clock.contains(QStringLiteral("behind the service's")), findings(result.out).constData());
    QVERIFY2(clock.contains(QStringLiteral("Ошибка при работе с Tessaro. Проверьте дату и время")), qPrintable(clock));
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("gateway signature")).contains(QStringLiteral("signature expired")),
             findings(result.out).constData());
}

void TestTillCheck::clockShiftedWithoutGatewayIsAWarning()
{
    startEmulator(EmulatorSettings::AuthMode::Token);
    m_service->emulator().clock().advance(-2 * 60);
    makeTill();
    const Result result = checkTill();
    QVERIFY2(result.exitCode == 1, findings(result.out).constData());
    QVERIFY2(line(result.out, QStringLiteral("warning"), QStringLiteral("clock offset")).contains(QStringLiteral("ahead of the service's")),
             findings(result.out).constData());
}

void TestTillCheck::jsonSaysTheSameForMonitoring()
{
    startEmulator(EmulatorSettings::AuthMode::Gateway);
    makeTill({{QStringLiteral("Tessaro/timeout"), QStringLiteral("0")}}, true);
    const Result result = checkTill({QStringLiteral("--json")});
    QCOMPARE(result.exitCode, 2);
    const QJsonObject json = QJsonDocument::fromJson(result.out.toUtf8()).object();
    QCOMPARE(json.value(QStringLiteral("exitCode")).toInt(), 2);
    QCOMPARE(json.value(QStringLiteral("summary")).toObject().value(QStringLiteral("failures")).toInt(), 1);
    bool named = false;
    const QJsonArray checks = json.value(QStringLiteral("checks")).toArray();
    for (const QJsonValue &check : checks) {
        const QJsonObject object = check.toObject();
        if (object.value(QStringLiteral("name")).toString() == QLatin1String("Tessaro:timeout")) {
            named = object.value(QStringLiteral("level")).toString() == QLatin1String("failure")
                && object.value(QStringLiteral("group")).toString() == QLatin1String("Configuration")
                && !object.value(QStringLiteral("hint")).toString().isEmpty();
        }
    }
    QVERIFY2(named, findings(result.out).constData());
    const QJsonArray settings = json.value(QStringLiteral("configuration")).toObject().value(QStringLiteral("settings")).toArray();
    QVERIFY(!settings.isEmpty());
    const QJsonObject versions = json.value(QStringLiteral("versions")).toObject();
    QCOMPARE(versions.value(QStringLiteral("tool")).toString(), QStringLiteral(TESSARO_VERSION));
    QCOMPARE(versions.value(QStringLiteral("plugin")).toString(), QStringLiteral(TESSARO_VERSION));
    QCOMPARE(json.value(QStringLiteral("plugin")).toString(), QStringLiteral(TILL_PLUGIN_DIR "/libtessaroback.so"));
    verifyNoSecret(result);
}

void TestTillCheck::configFileWithDictionariesIsChecked()
{
    startEmulator(EmulatorSettings::AuthMode::Token);
    makeTill({{QStringLiteral("Tessaro.PaymentCodes/2"), QString()}});
    const till::TillDataFolder folder(m_data);
    Result result = check({QStringLiteral("--config"), folder.configFile(), QStringLiteral("--plugins"), QStringLiteral(TILL_PLUGIN_DIR)});
    QVERIFY2(result.exitCode == 0, findings(result.out).constData());
    QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("currencies")).contains(QStringLiteral("unknown")));
    result = check({QStringLiteral("--config"), folder.configFile(), QStringLiteral("--dictionaries"), folder.dictionariesFile(),
                    QStringLiteral("--plugins"), QStringLiteral(TILL_PLUGIN_DIR)});
    QCOMPARE(result.exitCode, 2);
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("[Tessaro.PaymentCodes]")).contains(QStringLiteral("2 (Банковская карта)")),
             findings(result.out).constData());
}

void TestTillCheck::changesNothingAndAsksOnlyToRead()
{
    startEmulator(EmulatorSettings::AuthMode::Token);
    makeTill();
    const QStringList before = folderState(m_data);
    QCOMPARE(checkTill().exitCode, 0);
    QCOMPARE(folderState(m_data), before);
    QStringList requests;
    const auto entries = m_service->emulator().journal().entries();
    for (const JournalEntry &entry : entries)
        requests << QString::fromLatin1(entry.exchange.method) + QLatin1Char(' ') + entry.exchange.path.section(QLatin1Char('/'), 0, 2);
    QCOMPARE(requests, QStringList({QStringLiteral("GET /api"), QStringLiteral("POST /token"), QStringLiteral("GET /api/messages")}));
}

void TestTillCheck::wrongCommandLineIsRefused()
{
    const Result help = check({QStringLiteral("--help")});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.out.contains(QStringLiteral("--json")));
    QCOMPARE(check({QStringLiteral("--data"), m_data, QStringLiteral("--config"), QStringLiteral("till.ini")}).exitCode, 2);
    const Result missing = check({QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_PLUGIN_DIR)});
    QCOMPARE(missing.exitCode, 2);
    QVERIFY2(line(missing.out, QStringLiteral("failure"), QStringLiteral("configuration")).contains(QStringLiteral("holds no till")), findings(missing.out).constData());
}

void TestTillCheck::pluginWithoutItsCheckIsNamed()
{
    startEmulator(EmulatorSettings::AuthMode::Token);
    makeTill();
    Result result = check({QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), QStringLiteral(TILL_FAKE_PLUGIN_DIR)});
    QCOMPARE(result.exitCode, 2);
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("installation check")).contains(QStringLiteral("has no installation check")),
             findings(result.out).constData());
    result = check({QStringLiteral("--data"), m_data, QStringLiteral("--plugins"), m_dir->path()});
    QCOMPARE(result.exitCode, 2);
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("plug-in")).contains(QStringLiteral("no plug-in libtessaroback.so")),
             findings(result.out).constData());
}

void TestTillCheck::serviceErrorTextReachesTheTerminalEscaped()
{
    startEmulator(EmulatorSettings::AuthMode::Token);
    ScriptedHttpServer tokens;
    QVERIFY(tokens.start());
    // An error text that would clear the screen and forge a line of the verdict.
    tokens.setDefaultAnswer(ScriptedHttpServer::Answer::json(401, R"({"error":"\u001b[2J\u001b[1;32mall ok\r\nok  token endpoint"})"));
    makeTill({{QStringLiteral("Tessaro/tokenUrl"), tokens.url(QStringLiteral("/oauth/token")).toString()}});

    const Result result = checkTill();

    QCOMPARE(result.exitCode, 2);
    QVERIFY2(!result.out.contains(QChar(0x1b)) && !result.out.contains(QLatin1Char('\r')), qPrintable(result.out.toHtmlEscaped()));
    QVERIFY2(line(result.out, QStringLiteral("failure"), QStringLiteral("token endpoint"))
                 .contains(QStringLiteral(R"(HTTP 401 ("\x1b[2J\x1b[1;32mall ok\r\nok  token endpoint"))")),
             findings(result.out).constData());
    QVERIFY(line(result.out, QStringLiteral("ok"), QStringLiteral("token endpoint")).isEmpty());
}

void TestTillCheck::apiKeysInAddressesAreMasked_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("text") << QStringList();
    QTest::newRow("json") << QStringList{QStringLiteral("--json")};
}

void TestTillCheck::apiKeysInAddressesAreMasked()
{
    QFETCH(QStringList, arguments);
    startEmulator(EmulatorSettings::AuthMode::Token);
    makeTill({{QStringLiteral("Tessaro/url"), m_service->emulator().baseUrl().toString() + QStringLiteral("?apikey=ak-81&key=k-82")},
              {QStringLiteral("Tessaro/tokenUrl"), m_service->emulator().tokenUrl().toString() + QStringLiteral("?api_key=tk-83")}});

    const Result result = checkTill(arguments);

    QVERIFY2(result.out.contains(QStringLiteral("?apikey=***&key=***")), findings(result.out).constData());
    for (const QString &key : {QStringLiteral("ak-81"), QStringLiteral("k-82"), QStringLiteral("tk-83")}) {
        QVERIFY2(!result.out.contains(key), qPrintable(key));
        QVERIFY2(!result.err.contains(key), qPrintable(key));
    }
    verifyNoSecret(result);
}

QTEST_GUILESS_MAIN(TestTillCheck)
#include "tst_tillcheck.moc"
