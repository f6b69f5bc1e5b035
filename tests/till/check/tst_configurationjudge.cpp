#include "checklines.h"
#include "configurationjudge.h"

#include "secrets/secretmask.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>
#include <QUrl>

#include <optional>

using till::CheckReport;
using till::ConfigurationJudge;

using Currencies = std::optional<QHash<int, QString>>;
Q_DECLARE_METATYPE(Currencies)

/// The configuration judge, fed the plug-in's own report of its settings as
/// JSON: each setting, section and currency gets its level, its words and a
/// hint of what to change.
class TestConfigurationJudge : public QObject
{
    Q_OBJECT

private slots:
    void settingIsJudged_data();
    void settingIsJudged();
    void receiptNumberMaskIsJudged_data();
    void receiptNumberMaskIsJudged();
    void addressIsJudged_data();
    void addressIsJudged();
    void timeoutIsJudged_data();
    void timeoutIsJudged();
    void addressIsUsable_data();
    void addressIsUsable();
    void authorisationIsJudged_data();
    void authorisationIsJudged();
    void sectionIsJudged_data();
    void sectionIsJudged();
    void currencyShowsItsSettings();
    void cutValueIsNamed_data();
    void cutValueIsNamed();

private:
    /// A table of the settings changed and the line that one of them gets.
    static void addLineColumns();
    static void verifyLine();
};

namespace {

QJsonObject address(const QString &key, const QString &text, const QJsonObject &facts = {})
{
    const QUrl url(text);
    QJsonObject setting{{QStringLiteral("key"), key}, {QStringLiteral("set"), true},
                        {QStringLiteral("text"), text}, {QStringLiteral("value"), text},
                        {QStringLiteral("scheme"), url.scheme()}, {QStringLiteral("host"), url.host()},
                        {QStringLiteral("valid"), url.isValid() && !url.host().isEmpty()}, {QStringLiteral("length"), text.size()}};
    for (auto it = facts.constBegin(); it != facts.constEnd(); ++it)
        setting.insert(it.key(), it.value());
    return setting;
}

QJsonObject plain(const QString &key, const QJsonValue &value, const QString &text = QString())
{
    return {{QStringLiteral("key"), key}, {QStringLiteral("set"), !text.isEmpty()}, {QStringLiteral("text"), text}, {QStringLiteral("value"), value}};
}

QJsonObject secret(const QString &key, int length, const QJsonObject &facts = {})
{
    QJsonObject setting{{QStringLiteral("key"), key}, {QStringLiteral("length"), length}};
    for (auto it = facts.constBegin(); it != facts.constEnd(); ++it)
        setting.insert(it.key(), it.value());
    return setting;
}

// The settings of a plug-in that reads nothing but defaults, with \a changed
// replacing or adding the settings of the same keys.
QJsonObject pluginReport(const QJsonArray &changed, const QJsonArray &sections = {}, const QJsonArray &currencies = {})
{
    QJsonArray settings{address(QStringLiteral("Tessaro:url"), QStringLiteral("https://tessaro.test/api")),
                        QJsonObject{{QStringLiteral("key"), QStringLiteral("Tessaro:timeout")}, {QStringLiteral("set"), false},
                                    {QStringLiteral("text"), QString()}, {QStringLiteral("value"), 5},
                                    {QStringLiteral("transportMs"), 5000}, {QStringLiteral("longestMs"), 120000}}};
    for (const QJsonValue &setting : changed) {
        for (qsizetype i = 0; i < settings.size(); ++i) {
            if (settings.at(i).toObject().value(QStringLiteral("key")) == setting.toObject().value(QStringLiteral("key"))) {
                settings.removeAt(i);
                break;
            }
        }
        settings.append(setting);
    }
    return {{QStringLiteral("settings"), settings}, {QStringLiteral("sections"), sections}, {QStringLiteral("currencies"), currencies}};
}

const QJsonObject tokenAuthOn = plain(QStringLiteral("Tessaro:useTokenAuth"), true, QStringLiteral("true"));
const QJsonObject gatewayOn = plain(QStringLiteral("OrvelGate:tessaro"), true, QStringLiteral("true"));

} // namespace

void TestConfigurationJudge::addLineColumns()
{
    QTest::addColumn<QJsonArray>("settings");
    QTest::addColumn<QString>("key");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<QString>("hint");
}

void TestConfigurationJudge::verifyLine()
{
    QFETCH(QJsonArray, settings);
    QFETCH(QString, key);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, detail);
    QFETCH(QString, hint);
    CheckReport report;
    ConfigurationJudge(pluginReport(settings), std::nullopt).judge(&report);
    const CheckReport::Item line = checkLine(report, key);
    QCOMPARE(line.name, key);
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QCOMPARE(line.detail, detail);
    QCOMPARE(line.hint, hint);
}

void TestConfigurationJudge::settingIsJudged_data()
{
    QTest::addColumn<QJsonObject>("setting");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("says");
    QTest::addColumn<QString>("doesNotSay");

    using Level = CheckReport::Level;
    const auto url = [](const QString &text, const QJsonObject &facts) {
        QJsonObject setting{{QStringLiteral("key"), QStringLiteral("Tessaro:url")}, {QStringLiteral("set"), true},
                            {QStringLiteral("text"), text}, {QStringLiteral("value"), text},
                            {QStringLiteral("scheme"), QStringLiteral("https")}, {QStringLiteral("host"), QStringLiteral("tessaro.test")},
                            {QStringLiteral("valid"), true}, {QStringLiteral("length"), text.size()}};
        for (auto it = facts.constBegin(); it != facts.constEnd(); ++it)
            setting.insert(it.key(), it.value());
        return setting;
    };
    QTest::newRow("url fine") << url(QStringLiteral("https://tessaro.test/api"), {}) << Level::Ok << "https://tessaro.test/api" << "";
    QTest::newRow("url with %00") << url(QStringLiteral("https://tessaro.test/a%00pi"), {{QStringLiteral("controlCharacters"), true}})
                                  << Level::Failure << "control character" << "";
    QTest::newRow("url with a blank") << url(QStringLiteral("https://tessaro.test/a%20pi"), {{QStringLiteral("blanks"), true}})
                                      << Level::Failure << "blank" << "";
    const QString longPath = QStringLiteral("https://tessaro.test/") + QString(100 * 1024, QLatin1Char('a'));
    QTest::newRow("url of 100 KB") << url(longPath, {}) << Level::Failure << "102421 characters" << QString(200, QLatin1Char('a'));
    QTest::newRow("url with a trailing slash") << url(QStringLiteral("https://tessaro.test/api/"), {{QStringLiteral("pathEndsWithSlash"), true}})
                                               << Level::Warning << "//messages/" << "";

    const auto timeout = [](const QString &text, qint64 seconds, int transportMs) {
        return QJsonObject{{QStringLiteral("key"), QStringLiteral("Tessaro:timeout")}, {QStringLiteral("set"), true},
                           {QStringLiteral("text"), text}, {QStringLiteral("value"), seconds},
                           {QStringLiteral("transportMs"), transportMs}, {QStringLiteral("longestMs"), 120000}};
    };
    QTest::newRow("time-out 5") << timeout(QStringLiteral("5"), 5, 5000) << Level::Ok << "5 s" << "";
    QTest::newRow("time-out 0") << timeout(QStringLiteral("0"), 0, 120000) << Level::Failure << "2 min 0 s" << "without limit";
    QTest::newRow("time-out -3") << timeout(QStringLiteral("-3"), -3, 120000) << Level::Failure << "2 min 0 s" << "without limit";
    QTest::newRow("time-out 90") << timeout(QStringLiteral("90"), 90, 90000) << Level::Warning << "90 s" << "";
    QTest::newRow("time-out 2147484") << timeout(QStringLiteral("2147484"), 2147484, 120000) << Level::Warning << "2 min 0 s"
                                      << "2147484 s: a cashier waits that long";

    const auto plain = [](const QString &key, const QString &text, const QJsonValue &value) {
        return QJsonObject{{QStringLiteral("key"), key}, {QStringLiteral("set"), !text.isEmpty()},
                           {QStringLiteral("text"), text}, {QStringLiteral("value"), value}};
    };
    QTest::newRow("typeTill") << plain(QStringLiteral("Tessaro:typeTill"), QStringLiteral("3"), 3) << Level::Ok << "3" << "";
    QTest::newRow("typeTill no number") << plain(QStringLiteral("Tessaro:typeTill"), QStringLiteral("kiosk"), 0) << Level::Warning
                                        << "the plug-in uses 0" << "";
    QTest::newRow("nameTypeTill") << plain(QStringLiteral("Tessaro:nameTypeTill"), QString(), QStringLiteral("RegularSales"))
                                  << Level::Ok << "RegularSales" << "";
    QTest::newRow("hostName unset") << plain(QStringLiteral("Tessaro:hostName"), QString(), QStringLiteral("till-07")) << Level::Ok
                                    << "till-07" << "";
    QTest::newRow("validationCoupon") << plain(QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("yes"), true) << Level::Ok
                                      << "on" << "";
    QTest::newRow("validationCoupon no yes/no word") << plain(QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("ja"), false)
                                                     << Level::Warning << "off" << "";
    QTest::newRow("onlineCheckEanReasonCode unset") << plain(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), QString(), -1)
                                                    << Level::Ok << "-1" << "";
    QTest::newRow("onlineCheckEanReasonCode no number") << plain(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), QStringLiteral("x"), -1)
                                                        << Level::Warning << "the plug-in uses -1" << "";
    QTest::newRow("coupon mask broken") << plain(QStringLiteral("Tessaro:validationCouponMask"), QStringLiteral("^(255"), QStringLiteral("^(255"))
                                        << Level::Warning << "no regular expression" << "";
}

void TestConfigurationJudge::settingIsJudged()
{
    QFETCH(QJsonObject, setting);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, says);
    QFETCH(QString, doesNotSay);
    CheckReport report;
    ConfigurationJudge(pluginReport({setting}), std::nullopt).judge(&report);
    const CheckReport::Item line = checkLine(report, setting.value(QStringLiteral("key")).toString());
    QCOMPARE(line.name, setting.value(QStringLiteral("key")).toString());
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QVERIFY2(line.detail.contains(says), qPrintable(line.detail.left(300)));
    if (!doesNotSay.isEmpty())
        QVERIFY2(!line.detail.contains(doesNotSay), qPrintable(line.detail.left(300)));
    if (level != CheckReport::Level::Ok)
        QVERIFY2(line.hint.contains(line.name), qPrintable(line.hint));
}

void TestConfigurationJudge::receiptNumberMaskIsJudged_data()
{
    QTest::addColumn<QJsonObject>("receiptNumber");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("says");

    using Level = CheckReport::Level;
    QTest::newRow("broken") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("0*(?<result\\d{1,12}")},
                                           {QStringLiteral("valid"), false}, {QStringLiteral("resultGroup"), false},
                                           {QStringLiteral("error"), QStringLiteral("syntax error in subpattern name (missing terminator?) at offset 11")}}
                            << Level::Failure << "no regular expression";
    QTest::newRow("without result") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("0*(\\d{1,12})")},
                                                   {QStringLiteral("valid"), true}, {QStringLiteral("resultGroup"), false}}
                                    << Level::Failure << "no group named result";
    QTest::newRow("fine") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("0*(?<result>\\d{1,12})")},
                                         {QStringLiteral("valid"), true}, {QStringLiteral("resultGroup"), true}}
                          << Level::Ok << "0*(?<result>\\d{1,12})";
    QTest::newRow("broken, with a per cent sign") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("(?<result>%1")},
                                                                 {QStringLiteral("valid"), false}, {QStringLiteral("resultGroup"), false},
                                                                 {QStringLiteral("error"), QStringLiteral("missing closing parenthesis")}}
                                                  << Level::Failure
                                                  << "\"(?<result>%1\" is no regular expression (missing closing parenthesis): operation ids "
                                                     "of currency 2 go to the service uncut";
    QTest::newRow("without result, with a per cent sign") << QJsonObject{{QStringLiteral("maskSet"), true}, {QStringLiteral("mask"), QStringLiteral("%1(\\d+)")},
                                                                         {QStringLiteral("valid"), true}, {QStringLiteral("resultGroup"), false}}
                                                          << Level::Failure
                                                          << "\"%1(\\d+)\" has no group named result: every operation id of currency 2 that it "
                                                             "matches goes to the service empty";
}

void TestConfigurationJudge::receiptNumberMaskIsJudged()
{
    QFETCH(QJsonObject, receiptNumber);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, says);
    const QJsonArray currencies{QJsonObject{{QStringLiteral("code"), 2}, {QStringLiteral("receiptNumber"), receiptNumber}}};
    CheckReport report;
    ConfigurationJudge(pluginReport({}, {}, currencies), std::nullopt).judge(&report);
    const CheckReport::Item line = checkLine(report, QStringLiteral("Tessaro.ReceiptNumber.2:mask"));
    QCOMPARE(line.name, QStringLiteral("Tessaro.ReceiptNumber.2:mask"));
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QVERIFY2(line.detail.contains(says), qPrintable(line.detail));
}

void TestConfigurationJudge::addressIsJudged_data()
{
    addLineColumns();

    using Level = CheckReport::Level;
    const QString url = QStringLiteral("Tessaro:url");
    const QString tokenUrl = QStringLiteral("Tessaro:tokenUrl");
    const QString writeUrl = QStringLiteral("write Tessaro:url as https://host:port/path");
    QTest::newRow("https") << QJsonArray{} << url << Level::Ok << "https://tessaro.test/api" << "";
    QTest::newRow("not set") << QJsonArray{address(url, QStringLiteral("http://localhost:8080/api"), {{QStringLiteral("set"), false}})} << url
                             << Level::Warning << "not set: the plug-in uses http://localhost:8080/api" << "set Tessaro:url to the service's address";
    QTest::newRow("no scheme") << QJsonArray{address(url, QStringLiteral("tessaro.test/api"))} << url << Level::Failure
                               << "\"tessaro.test/api\" has no scheme (http:// or https://)" << writeUrl;
    QTest::newRow("ftp") << QJsonArray{address(url, QStringLiteral("ftp://tessaro.test/api"))} << url << Level::Failure
                         << "\"ftp://tessaro.test/api\" does not start with http:// or https:// (the plug-in reads the scheme \"ftp\")" << writeUrl;
    QTest::newRow("no host") << QJsonArray{address(url, QStringLiteral("https://"))} << url << Level::Failure
                             << "\"https://\" does not parse as an address with a host" << writeUrl;
    QTest::newRow("plain http far away") << QJsonArray{address(url, QStringLiteral("http://tessaro.test/api"))} << url << Level::Warning
                                         << "http://tessaro.test/api: plain http to tessaro.test, which is not this machine: credentials and "
                                            "receipts travel unencrypted"
                                         << "use an https:// address in Tessaro:url";
    QTest::newRow("plain http to localhost") << QJsonArray{address(url, QStringLiteral("http://LocalHost:8080/api"))} << url << Level::Ok
                                             << "http://LocalHost:8080/api" << "";
    QTest::newRow("plain http to 127.0.0.2") << QJsonArray{address(url, QStringLiteral("http://127.0.0.2/api"))} << url << Level::Ok
                                             << "http://127.0.0.2/api" << "";
    QTest::newRow("plain http to ::1") << QJsonArray{address(url, QStringLiteral("http://[::1]:8080/api"))} << url << Level::Ok
                                       << "http://[::1]:8080/api" << "";
    QTest::newRow("trailing slash") << QJsonArray{address(url, QStringLiteral("https://tessaro.test/api/"), {{QStringLiteral("pathEndsWithSlash"), true}})}
                                    << url << Level::Warning
                                    << "https://tessaro.test/api/ ends with \"/\": requests go to …/api//messages/… and the like, which only "
                                       "a service that merges slashes answers"
                                    << "remove the trailing slash from Tessaro:url";
    const QString longest = QStringLiteral("https://tessaro.test/") + QString(2048 - 21, QLatin1Char('a'));
    QTest::newRow("2048 characters") << QJsonArray{address(url, longest)} << url << Level::Ok << longest << "";
    QTest::newRow("2049 characters") << QJsonArray{address(url, longest + QLatin1Char('a'))} << url << Level::Failure
                                     << "2049 characters long: no service takes an address that long (at most 2048)" << writeUrl;
    QTest::newRow("control character and blank") << QJsonArray{address(url, QStringLiteral("https://tessaro.test/a%00 pi"),
                                                                       {{QStringLiteral("controlCharacters"), true}, {QStringLiteral("blanks"), true}})}
                                                  << url << Level::Failure
                                                  << "\"https://tessaro.test/a%00 pi\" holds a control character (such as %00): no request can carry it"
                                                  << writeUrl;
    QTest::newRow("blank") << QJsonArray{address(url, QStringLiteral("https://tessaro.test/a pi"), {{QStringLiteral("blanks"), true}})} << url
                           << Level::Failure << "\"https://tessaro.test/a pi\" holds a blank, which the plug-in sends as part of the address"
                           << "remove the blanks from Tessaro:url";
    QTest::newRow("token address unused") << QJsonArray{address(tokenUrl, QStringLiteral("ftp://tokens.test"))} << tokenUrl << Level::Ok
                                          << "not used: no token authorisation" << "";
    QTest::newRow("token address") << QJsonArray{tokenAuthOn, address(tokenUrl, QStringLiteral("https://tokens.test/token/"),
                                                                      {{QStringLiteral("pathEndsWithSlash"), true}})}
                                   << tokenUrl << Level::Ok << "https://tokens.test/token/" << "";
    QTest::newRow("token address without scheme") << QJsonArray{tokenAuthOn, address(tokenUrl, QStringLiteral("tokens.test"))} << tokenUrl
                                                  << Level::Failure << "\"tokens.test\" has no scheme (http:// or https://)"
                                                  << "write Tessaro:tokenUrl as https://host:port/path";
}

void TestConfigurationJudge::addressIsJudged()
{
    verifyLine();
}

void TestConfigurationJudge::timeoutIsJudged_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("seconds");
    // What the transport makes of it: the time-out, or its cap of two minutes.
    QTest::addColumn<int>("transportMs");
    QTest::addColumn<CheckReport::Level>("level");
    QTest::addColumn<QString>("detail");

    using Level = CheckReport::Level;
    const QString noTimeout = QStringLiteral("%1 is no time-out: the transport waits up to its cap of 2 min 0 s for each request instead, "
                                             "and a cashier waits that long whenever the service does not answer");
    QTest::newRow("default") << QString() << qint64(5) << 5000 << Level::Ok << "5 s";
    QTest::newRow("5") << "5" << qint64(5) << 5000 << Level::Ok << "5 s";
    QTest::newRow("blanks around 7") << " 7 " << qint64(7) << 7000 << Level::Ok << "7 s";
    QTest::newRow("60") << "60" << qint64(60) << 60000 << Level::Ok << "60 s";
    QTest::newRow("61") << "61" << qint64(61) << 61000 << Level::Warning << "61 s: a cashier waits that long for every request that gets no answer";
    QTest::newRow("0") << "0" << qint64(0) << 120000 << Level::Failure << noTimeout.arg(0);
    QTest::newRow("-1") << "-1" << qint64(-1) << 120000 << Level::Failure << noTimeout.arg(-1);
    QTest::newRow("above the cap") << "150" << qint64(150) << 120000 << Level::Warning
                                   << "150 s is above the transport's cap: each request waits at most 2 min 0 s, and a cashier waits that "
                                      "long whenever the service does not answer";
    QTest::newRow("5.5") << "5.5" << qint64(5) << 5000 << Level::Warning << "\"5.5\" is not a whole number: the plug-in uses 5 s";
    QTest::newRow("with a per cent sign") << "5%1" << qint64(5) << 5000 << Level::Warning << "\"5%1\" is not a whole number: the plug-in uses 5 s";
}

void TestConfigurationJudge::timeoutIsJudged()
{
    QFETCH(QString, text);
    QFETCH(qint64, seconds);
    QFETCH(int, transportMs);
    QFETCH(CheckReport::Level, level);
    QFETCH(QString, detail);
    const QString key = QStringLiteral("Tessaro:timeout");
    const QJsonObject timeout{{QStringLiteral("key"), key}, {QStringLiteral("set"), !text.isEmpty()},
                              {QStringLiteral("text"), text}, {QStringLiteral("value"), seconds},
                              {QStringLiteral("transportMs"), transportMs}, {QStringLiteral("longestMs"), 120000}};
    CheckReport report;
    ConfigurationJudge(pluginReport({timeout}), std::nullopt).judge(&report);
    const CheckReport::Item line = checkLine(report, key);
    QCOMPARE(CheckReport::levelName(line.level), CheckReport::levelName(level));
    QCOMPARE(line.detail, detail);
    QCOMPARE(line.hint, level == CheckReport::Level::Ok ? QString()
                                           : QStringLiteral("set Tessaro:timeout to the seconds a request may take, between 1 and 60 (5 by default)"));
}

void TestConfigurationJudge::addressIsUsable_data()
{
    QTest::addColumn<QJsonObject>("setting");
    QTest::addColumn<bool>("usable");

    const QString url = QStringLiteral("Tessaro:url");
    QTest::newRow("https") << address(url, QStringLiteral("https://tessaro.test/api")) << true;
    QTest::newRow("http") << address(url, QStringLiteral("http://127.0.0.1:8080")) << true;
    QTest::newRow("ftp") << address(url, QStringLiteral("ftp://tessaro.test/api")) << false;
    QTest::newRow("no host") << address(url, QStringLiteral("https://")) << false;
    QTest::newRow("control character") << address(url, QStringLiteral("https://tessaro.test/%00"), {{QStringLiteral("controlCharacters"), true}})
                                       << false;
    QTest::newRow("blank") << address(url, QStringLiteral("https://tessaro.test/a b"), {{QStringLiteral("blanks"), true}}) << false;
    QTest::newRow("2049 characters") << address(url, QStringLiteral("https://tessaro.test/") + QString(2028, QLatin1Char('a'))) << false;
}

void TestConfigurationJudge::addressIsUsable()
{
    QFETCH(QJsonObject, setting);
    QFETCH(bool, usable);
    QCOMPARE(ConfigurationJudge(pluginReport({setting}), std::nullopt).addressUsable(QStringLiteral("Tessaro:url")), usable);
}

void TestConfigurationJudge::authorisationIsJudged_data()
{
    addLineColumns();

    using Level = CheckReport::Level;
    const QString useTokenAuth = QStringLiteral("Tessaro:useTokenAuth");
    const QString clientId = QStringLiteral("Tessaro:clientId");
    const QString realmId = QStringLiteral("Tessaro:realmId");
    const QString header = QStringLiteral("Tessaro:authorizationHeader");
    const QString hidden = SecretMask::hidden();
    QTest::newRow("token on by default") << QJsonArray{plain(useTokenAuth, true)} << useTokenAuth << Level::Ok << "on (default)" << "";
    QTest::newRow("token on") << QJsonArray{tokenAuthOn} << useTokenAuth << Level::Ok << "on" << "";
    QTest::newRow("token off") << QJsonArray{plain(useTokenAuth, false, QStringLiteral("false"))} << useTokenAuth << Level::Ok
                               << "off: requests go without a token or a signature" << "";
    QTest::newRow("token off, gateway on") << QJsonArray{plain(useTokenAuth, false, QStringLiteral("false")), gatewayOn} << useTokenAuth
                                           << Level::Ok << "off: the gateway signs the requests instead (OrvelGate:tessaro)" << "";
    QTest::newRow("client id") << QJsonArray{tokenAuthOn, plain(clientId, QStringLiteral("till-012"))} << clientId << Level::Ok << "till-012" << "";
    QTest::newRow("client id empty") << QJsonArray{tokenAuthOn, plain(clientId, QString())} << clientId << Level::Failure
                                     << "empty, but token authorisation is on"
                                     << "set Tessaro:clientId to the till's client id at the token endpoint";
    QTest::newRow("client id unused") << QJsonArray{plain(clientId, QString())} << clientId << Level::Ok << "not used" << "";
    QTest::newRow("realm") << QJsonArray{tokenAuthOn, plain(realmId, QStringLiteral("stores"))} << realmId << Level::Ok << "stores" << "";
    QTest::newRow("realm empty") << QJsonArray{tokenAuthOn} << realmId << Level::Ok << "(empty)" << "";
    QTest::newRow("realm unused") << QJsonArray{plain(realmId, QStringLiteral("stores"))} << realmId << Level::Ok << "not used" << "";
    QTest::newRow("header") << QJsonArray{tokenAuthOn, secret(header, 30, {{QStringLiteral("scheme"), QStringLiteral("Basic")}})} << header
                            << Level::Ok << QStringLiteral("Basic %1 (30 characters)").arg(hidden) << "";
    QTest::newRow("header without scheme") << QJsonArray{tokenAuthOn, secret(header, 8)} << header << Level::Ok
                                           << QStringLiteral("%1 (8 characters)").arg(hidden) << "";
    QTest::newRow("header with a per cent sign") << QJsonArray{tokenAuthOn, secret(header, 30, {{QStringLiteral("scheme"), QStringLiteral("%1x")}})}
                                                 << header << Level::Ok << QStringLiteral("%1x %2 (30 characters)").arg(QStringLiteral("%1"), hidden) << "";
    QTest::newRow("header empty") << QJsonArray{tokenAuthOn, secret(header, 0)} << header << Level::Failure << "empty"
                                  << "set Tessaro:authorizationHeader to the value the token endpoint expects, e.g. Basic <base64 of id:secret>";
    QTest::newRow("header with blanks") << QJsonArray{tokenAuthOn, secret(header, 31, {{QStringLiteral("blanksAround"), true}})} << header
                                        << Level::Failure
                                        << QStringLiteral("%1 (31 characters): blanks stand around it, and are sent as part of it").arg(hidden)
                                        << "remove the blanks around the value of Tessaro:authorizationHeader";
    QTest::newRow("header unused") << QJsonArray{secret(header, 12)} << header << Level::Ok << "not used (set, 12 characters)" << "";
    QTest::newRow("header unused, empty") << QJsonArray{secret(header, 0)} << header << Level::Ok << "not used" << "";

    const QString gateway = QStringLiteral("OrvelGate:tessaro");
    const QString appKey = QStringLiteral("OrvelGate:appKey");
    const QString appSecret = QStringLiteral("OrvelGate:appSecret");
    const QString stage = QStringLiteral("OrvelGate:xStage");
    QTest::newRow("gateway off") << QJsonArray{} << gateway << Level::Ok << "off" << "";
    QTest::newRow("gateway on") << QJsonArray{gatewayOn} << gateway << Level::Ok << "on: every request is signed for the gateway" << "";
    QTest::newRow("key") << QJsonArray{gatewayOn, secret(appKey, 32)} << appKey << Level::Ok << QStringLiteral("%1 (32 characters)").arg(hidden) << "";
    QTest::newRow("key empty") << QJsonArray{gatewayOn, secret(appKey, 0)} << appKey << Level::Failure << "empty"
                               << "set OrvelGate:appKey to the application key the gateway issued; while it is empty, requests go unsigned";
    QTest::newRow("key unused") << QJsonArray{secret(appKey, 32)} << appKey << Level::Ok << "not used (set, 32 characters)" << "";
    QTest::newRow("secret empty") << QJsonArray{gatewayOn, secret(appSecret, 0)} << appSecret << Level::Failure << "empty"
                                  << "set OrvelGate:appSecret to the application secret the gateway issued; while it is empty, requests go unsigned";
    QTest::newRow("secret with blanks") << QJsonArray{gatewayOn, secret(appSecret, 40, {{QStringLiteral("blanksAround"), true}})} << appSecret
                                        << Level::Failure
                                        << QStringLiteral("%1 (40 characters): blanks stand around it, and are sent as part of it").arg(hidden)
                                        << "remove the blanks around the value of OrvelGate:appSecret";
    QTest::newRow("stage") << QJsonArray{gatewayOn, plain(stage, QStringLiteral("PreProd"))} << stage << Level::Ok << "PreProd" << "";
    QTest::newRow("stage empty") << QJsonArray{gatewayOn, plain(stage, QString())} << stage << Level::Failure << "empty: requests go unsigned"
                                 << "set OrvelGate:xStage to the gateway's stage (PreProd by default)";
    QTest::newRow("stage with blanks") << QJsonArray{gatewayOn, plain(stage, QStringLiteral(" PreProd"))} << stage << Level::Failure
                                       << "\" PreProd\": blanks stand around it, and are signed as part of it"
                                       << "remove the blanks around the value of OrvelGate:xStage";
    QTest::newRow("stage unused") << QJsonArray{plain(stage, QString())} << stage << Level::Ok << "not used" << "";
}

void TestConfigurationJudge::authorisationIsJudged()
{
    verifyLine();
}

void TestConfigurationJudge::sectionIsJudged_data()
{
    QTest::addColumn<QJsonObject>("section");
    QTest::addColumn<Currencies>("currencies");
    // Each line the section gets: its level, its words and its hint.
    QTest::addColumn<QStringList>("lines");

    const QHash<int, QString> till{{1, QStringLiteral("Cash")}, {2, QStringLiteral("Card")}, {3, QStringLiteral("Voucher")}};
    const auto section = [](const QString &name, const QJsonObject &map, const QJsonObject &keys = {}, const QJsonArray &ignored = {}) {
        return QJsonObject{{QStringLiteral("section"), name}, {QStringLiteral("map"), map}, {QStringLiteral("keys"), keys},
                           {QStringLiteral("ignored"), ignored}};
    };
    const QString paymentCodes = QStringLiteral("Tessaro.PaymentCodes");
    const QString paymentHint = QStringLiteral("map each till currency in [Tessaro.PaymentCodes] as serviceCode=tillCode,tillCode");
    const QJsonObject allPaid{{QStringLiteral("1"), 10}, {QStringLiteral("2"), 20}, {QStringLiteral("3"), 20}};
    QTest::newRow("payment codes empty") << section(paymentCodes, {}) << Currencies(till)
                                         << QStringList{"warning|empty: every till currency goes to the service under the till's own code|" + paymentHint};
    QTest::newRow("payment codes, currencies unknown") << section(paymentCodes, allPaid) << Currencies()
                                                       << QStringList{"ok|1 → 10; 2 → 20; 3 → 20 (the till's currencies are unknown: not compared)|"};
    QTest::newRow("payment codes for every currency") << section(paymentCodes, allPaid) << Currencies(till)
                                                      << QStringList{"ok|1 → 10; 2 → 20; 3 → 20|"};
    QTest::newRow("payment codes missing currencies") << section(paymentCodes, {{QStringLiteral("2"), 20}}) << Currencies(till)
                                                      << QStringList{"failure|till currencies without a service code, sent under the till's own "
                                                                     "code: 1 (Cash), 3 (Voucher)|" + paymentHint};
    QTest::newRow("payment codes with ignored keys") << section(paymentCodes, allPaid, {}, {QStringLiteral("x1")}) << Currencies(till)
                                                     << QStringList{"warning|the plug-in ignores the keys that are not whole numbers: \"x1\"|"
                                                                    "write each key of [Tessaro.PaymentCodes] as a whole number (a list of them in a "
                                                                    "currency list)",
                                                                    "ok|1 → 10; 2 → 20; 3 → 20|"};

    const QString vatCodes = QStringLiteral("Tessaro.VatCodes");
    const QString vatHint = QStringLiteral("map the till's VAT codes in [Tessaro.VatCodes] as serviceCode=tillCode,tillCode");
    QTest::newRow("VAT codes empty") << section(vatCodes, {}) << Currencies(till)
                                     << QStringList{"warning|empty: every VAT code goes to the service as the till has it|" + vatHint};
    QTest::newRow("VAT codes") << section(vatCodes, {{QStringLiteral("1"), 4}, {QStringLiteral("2"), 4}, {QStringLiteral("3"), 7}},
                                          {{QStringLiteral("4"), QStringLiteral("1,2")}, {QStringLiteral("7"), QStringLiteral("3")}})
                               << Currencies() << QStringList{"ok|1 → 4; 2 → 4; 3 → 7|"};
    QTest::newRow("VAT code that nothing maps to") << section(vatCodes, {{QStringLiteral("1"), 4}},
                                                              {{QStringLiteral("4"), QStringLiteral("1")}, {QStringLiteral("7"), QString()}})
                                                   << Currencies() << QStringList{"warning|service VAT codes that no till VAT code maps to: 7|" + vatHint};

    const QString forbidden = QStringLiteral("Tessaro.ForbiddenMixedValuts");
    const QJsonObject mixed{{QStringLiteral("1"), QJsonArray{2, 3}}};
    QTest::newRow("currency list") << section(forbidden, mixed) << Currencies(till) << QStringList{"ok|1: 2,3|"};
    QTest::newRow("currency list, currencies unknown") << section(forbidden, {{QStringLiteral("9"), QJsonArray{8}}}) << Currencies()
                                                       << QStringList{"ok|9: 8|"};
    QTest::newRow("currency list with unknown currencies") << section(forbidden, {{QStringLiteral("9"), QJsonArray{2, 8}}, {QStringLiteral("1"), QJsonArray{9}}})
                                                           << Currencies(till)
                                                           << QStringList{"warning|1: 9; 9: 2,8; names currencies the till does not know: 8, 9|"
                                                                          "remove the unknown codes from [Tessaro.ForbiddenMixedValuts] or add the "
                                                                          "currencies to the till"};
    QTest::newRow("other section") << section(QStringLiteral("Tessaro.Other"), {{QStringLiteral("5"), 1}}) << Currencies(till)
                                   << QStringList{"ok|5 → 1|"};
    QTest::newRow("other section empty") << section(QStringLiteral("Tessaro.Other"), {}) << Currencies(till) << QStringList{"ok|empty|"};
}

void TestConfigurationJudge::sectionIsJudged()
{
    QFETCH(QJsonObject, section);
    QFETCH(Currencies, currencies);
    QFETCH(QStringList, lines);
    CheckReport report;
    ConfigurationJudge(pluginReport({}, {section}), currencies).judge(&report);
    QStringList judgedLines;
    const QList<CheckReport::Item> items = checkLines(report, QLatin1Char('[') + section.value(QStringLiteral("section")).toString() + QLatin1Char(']'));
    for (const CheckReport::Item &item : items)
        judgedLines << QStringList{CheckReport::levelName(item.level), item.detail, item.hint}.join(QLatin1Char('|'));
    QCOMPARE(judgedLines, lines);
}

void TestConfigurationJudge::currencyShowsItsSettings()
{
    const QJsonObject currency{
        {QStringLiteral("code"), 4},
        {QStringLiteral("receiptNumber"), QJsonObject{{QStringLiteral("maskSet"), false}, {QStringLiteral("valid"), true},
                                                      {QStringLiteral("resultGroup"), true}, {QStringLiteral("symbolsToRemove"), QStringLiteral("-/")}}},
        {QStringLiteral("customFields"),
         QJsonObject{{QStringLiteral("bank"), QJsonObject{{QStringLiteral("template"), QStringLiteral("%card%")}}},
                     {QStringLiteral("rrn"), QJsonObject{{QStringLiteral("template"), QStringLiteral("%rrn%")}, {QStringLiteral("symbolsToRemove"), QStringLiteral("0")}}}}}};
    CheckReport report;
    ConfigurationJudge(pluginReport({}, {}, {currency}), std::nullopt).judge(&report);
    // A mask left at its default gets no line of its own.
    QVERIFY(checkLines(report, QStringLiteral("Tessaro.ReceiptNumber.4:mask")).isEmpty());
    const CheckReport::Item removed = checkLine(report, QStringLiteral("Tessaro.ReceiptNumber.4:symbolsToRemove"));
    QCOMPARE(removed.level, CheckReport::Level::Ok);
    QCOMPARE(removed.detail, QStringLiteral("\"-/\""));
    const CheckReport::Item fields = checkLine(report, QStringLiteral("[Tessaro.CustomFields.4]"));
    QCOMPARE(fields.level, CheckReport::Level::Ok);
    QCOMPARE(fields.detail, QStringLiteral("bank = \"%card%\"; rrn = \"%rrn%\" without \"0\""));
}

void TestConfigurationJudge::cutValueIsNamed_data()
{
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("name");

    QTest::newRow("the plug-in's section") << "Tessaro.PaymentCodes" << "10" << "[Tessaro.PaymentCodes] 10";
    QTest::newRow("a setting") << "Tessaro" << "operationIdAsCardNumber" << "Tessaro:operationIdAsCardNumber";
}

void TestConfigurationJudge::cutValueIsNamed()
{
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, name);
    CheckReport report;
    ConfigurationJudge(pluginReport({}), std::nullopt).judgeCuts({{section, key, QStringLiteral("1;2"), QStringLiteral("1")}}, &report);
    const CheckReport::Item line = checkLine(report, name);
    QCOMPARE(line.level, CheckReport::Level::Failure);
    QCOMPARE(line.detail, QStringLiteral("\"1;2\" is cut at \";\", which starts a comment in the configuration file: the plug-in reads \"1\""));
    QCOMPARE(line.hint, QStringLiteral("separate list items with commas, and put a value that must hold \";\" in double quotes"));
}

QTEST_GUILESS_MAIN(TestConfigurationJudge)
#include "tst_configurationjudge.moc"
