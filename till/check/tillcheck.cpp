#include "tillcheck.h"

#include "configfiletext.h"
#include "configurationjudge.h"
#include "networkprobe.h"
#include "pluginhost.h"
#include "pluginselfcheck.h"
#include "servicejudge.h"
#include "tilldatafolder.h"
#include "tillsettingsreader.h"

#include <plugin/selfcheck/selfcheckprotocol.h>

#include <config.h>
#include <singleton.h>
#include <tessaroversion.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace till {

namespace selfcheck = tessaro::selfcheck;

namespace {

QHash<int, QString> currencyNames(const QList<TillSettings::Currency> &currencies)
{
    QHash<int, QString> names;
    for (const TillSettings::Currency &currency : currencies)
        names.insert(currency.code, currency.name);
    return names;
}

QString shownCurrencies(const QHash<int, QString> &currencies)
{
    QList<int> codes = currencies.keys();
    std::sort(codes.begin(), codes.end());
    QStringList shown;
    for (int code : std::as_const(codes))
        shown << QStringLiteral("%1 %2").arg(code).arg(currencies.value(code));
    return shown.isEmpty() ? QStringLiteral("none") : shown.join(QStringLiteral(", "));
}

// The address of a setting of the plug-in's report, for the probes.
QUrl addressOf(const QJsonObject &setting)
{
    return QUrl(setting.value(QStringLiteral("value")).toString());
}

// The currencies whose receipt numbers and custom fields the plug-in is to
// report: the till's own and those the configuration file has sections for.
QJsonArray checkedCurrencies(const std::optional<QHash<int, QString>> &currencies, const ConfigFileText &file)
{
    QList<int> codes = currencies ? currencies->keys() : QList<int>();
    for (const QString &prefix : {QStringLiteral("Tessaro.ReceiptNumber."), QStringLiteral("Tessaro.CustomFields.")}) {
        const QList<int> numbers = file.sectionNumbers(prefix);
        for (int number : numbers) {
            if (!codes.contains(number))
                codes << number;
        }
    }
    std::sort(codes.begin(), codes.end());
    QJsonArray array;
    for (int code : std::as_const(codes))
        array.append(code);
    return array;
}

bool sameEndpoint(const QUrl &a, const QUrl &b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && a.port() == b.port();
}

} // namespace

TillCheck::TillCheck(const Options &options)
    : m_options(options)
{
}

bool TillCheck::readTill(CheckReport *report, QString *configFile, std::optional<QHash<int, QString>> *currencies) const
{
    const QString name = QStringLiteral("configuration");
    QString error;
    std::optional<TillSettings> settings;
    if (!m_options.dataFolder.isEmpty()) {
        const TillDataFolder folder(m_options.dataFolder);
        *configFile = folder.configFile();
        settings = folder.readSettings(&error);
    } else {
        *configFile = QFileInfo(m_options.configFile).absoluteFilePath();
        if (!QFileInfo::exists(*configFile))
            error = QStringLiteral("%1 does not exist").arg(*configFile);
        else if (m_options.dictionariesFile.isEmpty())
            settings = TillSettings();
        else
            settings = TillSettingsReader::readFile(m_options.dictionariesFile, &error);
    }
    if (!settings) {
        report->failure(name, error, QStringLiteral("name a till's data folder with --data DIR or its configuration with --config FILE"));
        return false;
    }
    report->ok(name, *configFile);
    if (settings->currencies) {
        *currencies = currencyNames(*settings->currencies);
        report->ok(QStringLiteral("currencies"), shownCurrencies(**currencies));
    } else {
        report->ok(QStringLiteral("currencies"), QStringLiteral("unknown, so not compared with the payment codes (--dictionaries FILE names them)"));
    }
    return true;
}

CheckReport TillCheck::run() const
{
    CheckReport report;
    QJsonObject context;
    if (!m_options.dataFolder.isEmpty())
        context.insert(QStringLiteral("till"), TillDataFolder(m_options.dataFolder).path());
    report.startGroup(QStringLiteral("Till"));
    QString configFile;
    std::optional<QHash<int, QString>> currencies;
    const bool readable = readTill(&report, &configFile, &currencies);
    context.insert(QStringLiteral("config"), configFile);
    report.setContext(context);
    if (!readable)
        return report;
    Singleton<Config>::setInstance(new Config(configFile));

    report.startGroup(QStringLiteral("Plug-in"));
    PluginHost plugin;
    QString error;
    if (!plugin.load(m_options.pluginFolder, &error)) {
        report.failure(QStringLiteral("plug-in"), error, QStringLiteral("install the plug-in, or name its folder with --plugins DIR"));
        return report;
    }
    report.ok(QStringLiteral("plug-in"), QStringLiteral("%1 (%2)").arg(plugin.fileName(), plugin.metaData().value(QStringLiteral("IID")).toString()));
    context.insert(QStringLiteral("plugin"), plugin.fileName());
    report.setContext(context);
    const ConfigFileText file(configFile);
    const std::optional<QJsonObject> read = PluginSelfCheck::run(
        plugin.fileName(),
        {{selfcheck::option::Token, false}, {selfcheck::option::Request, false}, {selfcheck::option::Currencies, checkedCurrencies(currencies, file)}},
        &error);
    if (!read) {
        report.failure(QStringLiteral("installation check"), error, QStringLiteral("install a plug-in built with its installation check"));
        return report;
    }
    // The loaded plug-in's own word for its version.
    const QString pluginVersion = read->value(selfcheck::report::Version).toString();
    report.ok(QStringLiteral("versions"), QStringLiteral("tessaro-till %1, plug-in TessaroBack %2")
                                               .arg(QStringLiteral(TESSARO_VERSION), pluginVersion.isEmpty() ? QStringLiteral("unknown") : pluginVersion));
    context.insert(QStringLiteral("versions"), QJsonObject{{QStringLiteral("tool"), QStringLiteral(TESSARO_VERSION)},
                                                           {QStringLiteral("plugin"), pluginVersion}});
    context.insert(QStringLiteral("configuration"), QJsonObject{{QStringLiteral("settings"), read->value(selfcheck::report::Settings)},
                                                                {QStringLiteral("sections"), read->value(selfcheck::report::Sections)},
                                                                {QStringLiteral("currencies"), read->value(selfcheck::report::Currencies)}});
    report.setContext(context);

    report.startGroup(QStringLiteral("Configuration"));
    const ConfigurationJudge configuration(*read, currencies);
    configuration.judge(&report);
    configuration.judgeCuts(file.cutValues(), &report);

    // Each step waits as long as the plug-in would, within reason.
    const qint64 timeout = configuration.setting(QStringLiteral("Tessaro:timeout")).value(QStringLiteral("value")).toInteger();
    const int boundSeconds = timeout > 0 && timeout <= 60 ? int(timeout) : 10;
    const NetworkProbe probe(boundSeconds * 1000);
    const QJsonObject service = configuration.setting(QStringLiteral("Tessaro:url"));
    report.startGroup(QStringLiteral("Way to the service (Tessaro:url)"));
    NetworkProbe::Outcome reached;
    if (configuration.addressUsable(QStringLiteral("Tessaro:url")))
        reached = probe.probe(addressOf(service), QStringLiteral("Tessaro:url"), true, &report);
    else
        report.failure(QStringLiteral("connection"), QStringLiteral("not tried: Tessaro:url is no usable http or https address (above)"),
                       QStringLiteral("correct Tessaro:url"));
    const QJsonObject token = configuration.setting(QStringLiteral("Tessaro:tokenUrl"));
    if (configuration.tokenAuthUsed() && configuration.addressUsable(QStringLiteral("Tessaro:tokenUrl"))
        && !sameEndpoint(addressOf(token), addressOf(service))) {
        report.startGroup(QStringLiteral("Way to the token endpoint (Tessaro:tokenUrl)"));
        probe.probe(addressOf(token), QStringLiteral("Tessaro:tokenUrl"), false, &report);
    }

    report.startGroup(QStringLiteral("Through the plug-in"));
    const std::optional<QJsonObject> exchanged = PluginSelfCheck::run(plugin.fileName(), {{selfcheck::option::BoundSeconds, boundSeconds}}, &error);
    if (!exchanged) {
        report.failure(QStringLiteral("installation check"), error, QStringLiteral("install a plug-in built with its installation check"));
        return report;
    }
    const ServiceJudge judge(*exchanged, configuration.gatewayOn(), m_options.clockToleranceSeconds);
    judge.judgeToken(&report);
    judge.judgeRequest(&report);
    judge.judgeSignature(&report);

    report.startGroup(QStringLiteral("Clock"));
    judge.judgeClock(reached, &report);
    return report;
}

} // namespace till
