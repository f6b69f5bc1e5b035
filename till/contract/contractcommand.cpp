#include "contractcommand.h"

#include <contracts/cassettefile.h>
#include <contracts/contractcomparer.h>
#include <contracts/placeholdermap.h>
#include <emulator/emulator.h>

#include <restclient.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <QTextStream>
#include <QUrl>

#include <memory>

namespace till {

using tessaro::contracts::CassetteExchange;

namespace {

constexpr int exchangeTimeoutMs = 30000;

/// Learns the live value of each placeholder that stands alone as a value
/// of the recorded answer, at the same place in the live answer.
void bindPlaceholders(const QJsonValue &recorded, const QJsonValue &live, QHash<QString, QString> *secrets)
{
    if (recorded.isObject() && live.isObject()) {
        const QJsonObject before = recorded.toObject();
        const QJsonObject after = live.toObject();
        for (auto it = before.begin(); it != before.end(); ++it)
            bindPlaceholders(it.value(), after.value(it.key()), secrets);
    } else if (recorded.isString() && live.isString()) {
        const QRegularExpressionMatch match = tessaro::contracts::PlaceholderMap::pattern().match(recorded.toString());
        if (match.hasMatch() && match.captured() == recorded.toString())
            secrets->insert(recorded.toString(), live.toString());
    }
}

QJsonValue jsonOf(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    return document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array());
}

bool isSentAsRecorded(const QString &name)
{
    // The transport's own, and those of the gateway whose values are made at sending.
    static const QStringList others{QStringLiteral("host"), QStringLiteral("content-length"), QStringLiteral("x-sdk-date")};
    return !others.contains(name, Qt::CaseInsensitive);
}

} // namespace

ContractCommand::ContractCommand(const Options &options, QTextStream *out, QTextStream *err)
    : m_options(options)
    , m_out(out)
    , m_err(err)
{
}

ExitCode ContractCommand::run()
{
    QString error;
    const auto cassette = tessaro::contracts::CassetteFile::read(m_options.cassette, &error);
    if (cassette)
        m_cassette = *cassette;
    if (cassette && !m_options.rulesFile.isEmpty()) {
        const auto rules = tessaro::contracts::DriftRules::read(m_options.rulesFile, &error);
        m_rules = rules.value_or(m_rules);
    }
    std::optional<tessaro::emulator::EmulatorSettings> settings = tessaro::emulator::EmulatorSettings();
    if (error.isEmpty() && !m_options.emulatorSettings.isEmpty())
        settings = tessaro::emulator::EmulatorSettings::load(m_options.emulatorSettings, &error);
    if (!error.isEmpty()) {
        *m_err << QStringLiteral("tessaro-till: ") << error << Qt::endl;
        return ExitCode::BadInput;
    }

    std::unique_ptr<tessaro::emulator::Emulator> emulator;
    const bool live = !m_options.against.isEmpty();
    if (live) {
        m_base = m_options.against;
        m_token = m_options.tokenUrl.isEmpty() ? m_options.against + QStringLiteral("/token") : m_options.tokenUrl;
    } else {
        emulator = std::make_unique<tessaro::emulator::Emulator>(*settings);
        if (emulator->startInThread(0) == 0) {
            *m_err << QStringLiteral("tessaro-till: the emulator cannot listen on the loopback interface") << Qt::endl;
            return ExitCode::CannotRun;
        }
        m_base = emulator->baseUrl().toString();
        m_token = emulator->tokenUrl().toString();
        if (!settings->clients.isEmpty())
            m_authorization = settings->clients.first().authorization;
    }
    if (!m_options.dataFolder.isEmpty()) {
        const QSettings ini(m_options.dataFolder + QStringLiteral("/till.ini"), QSettings::IniFormat);
        m_authorization = ini.value(QStringLiteral("Tessaro/authorizationHeader"), m_authorization).toString();
    }

    *m_out << QStringLiteral("contract: %1 (%2 requests, plug-in %3) against %4")
                  .arg(m_options.cassette)
                  .arg(m_cassette.exchanges.size())
                  .arg(m_cassette.pluginVersion, live ? m_base : QStringLiteral("the emulator"))
           << Qt::endl;
    const bool writes = !live || m_options.allowWrites;
    if (!writes)
        *m_out << QStringLiteral("only the token request and GETs are sent: --allow-writes sends the rest "
                                 "(an advice note sent to a live service is a real return)")
               << Qt::endl;

    RestClient client;
    client.setTimeout(exchangeTimeoutMs);
    int same = 0;
    int drifted = 0;
    int skipped = 0;
    for (int i = 0; i < m_cassette.exchanges.size(); ++i) {
        const CassetteExchange &recorded = m_cassette.exchanges.at(i);
        const QString name = QStringLiteral("%1 %2 %3").arg(i + 1, 3).arg(recorded.method, recorded.path);
        const bool readOnly = isTokenRequest(recorded) || recorded.method == QLatin1String("GET");
        if (!writes && !readOnly) {
            *m_out << name << QStringLiteral("  skipped (a write)") << Qt::endl;
            ++skipped;
            continue;
        }
        const QString authorization = CassetteExchange::header(recorded.requestHeaders, QStringLiteral("Authorization")).value_or(QString());
        const QString unsendable = authorization.startsWith(QLatin1String("SDK-HMAC-SHA256")) ? QStringLiteral("signed for the gateway")
            : isTokenRequest(recorded) && m_authorization.isEmpty() && tessaro::contracts::PlaceholderMap::holdsPlaceholder(authorization)
            ? QStringLiteral("the till's credentials are needed: --data DIR")
            : QString();
        if (!unsendable.isEmpty()) {
            *m_out << name << QStringLiteral("  skipped (%1)").arg(unsendable) << Qt::endl;
            ++skipped;
            continue;
        }
        bool drift = false;
        *m_out << name << QStringLiteral("  ") << verify(recorded, &client, &drift) << Qt::endl;
        ++(drift ? drifted : same);
    }
    *m_out << QStringLiteral("contract: %1 same, %2 drifted, %3 skipped").arg(same).arg(drifted).arg(skipped) << Qt::endl;
    return drifted > 0 ? ExitCode::Failed : ExitCode::Passed;
}

bool ContractCommand::isTokenRequest(const CassetteExchange &recorded) const
{
    return recorded.method == QLatin1String("POST") && !m_cassette.tokenUrl.isEmpty() && recorded.path == QUrl(m_cassette.tokenUrl).path();
}

QString ContractCommand::targetUrl(const CassetteExchange &recorded, bool token) const
{
    QUrl url(token ? m_token : m_base);
    if (!token) {
        // The recorded path below the recorded base path, below the target's.
        const QString recordedBase = QUrl(m_cassette.serviceUrl).path();
        QString path = recorded.path;
        if (!recordedBase.isEmpty() && path.startsWith(recordedBase))
            path = path.mid(recordedBase.size());
        url.setPath(url.path() + path);
    }
    if (!recorded.query.isEmpty())
        url.setQuery(QString::fromUtf8(tessaro::contracts::PlaceholderMap::substitute(recorded.query.toUtf8(), m_secrets)), QUrl::StrictMode);
    return url.toString();
}

QString ContractCommand::verify(const CassetteExchange &recorded, RestClient *client, bool *drifted)
{
    const bool token = isTokenRequest(recorded);
    RestClient::Headers headers;
    for (const auto &[name, value] : recorded.requestHeaders) {
        if (isSentAsRecorded(name))
            headers.insert(name, QString::fromUtf8(tessaro::contracts::PlaceholderMap::substitute(value.toUtf8(), m_secrets)));
    }
    if (token && !m_authorization.isEmpty())
        headers.insert(QStringLiteral("Authorization"), m_authorization);
    const QUrl url(targetUrl(recorded, token));
    const QByteArray body = tessaro::contracts::PlaceholderMap::substitute(recorded.requestBody, m_secrets);
    if (recorded.method == QLatin1String("GET"))
        client->get(url, QJsonDocument(), headers);
    else
        client->postRaw(url, body, headers);
    const http::Response answer = client->lastResponse();
    if (answer.isNetworkError() && !recorded.networkError) {
        *drifted = true;
        return QStringLiteral("drifted: no answer (%1)").arg(answer.errorText().text());
    }
    bindPlaceholders(jsonOf(recorded.responseBody), jsonOf(answer.body()), &m_secrets);
    const tessaro::contracts::ContractComparer comparer(m_rules);
    auto differences = comparer.compare(recorded.status, recorded.responseBody, answer.httpCode(), answer.body());
    CassetteExchange::Headers answerHeaders;
    for (const auto &[name, value] : answer.headers())
        answerHeaders.append({QString::fromLatin1(name), QString::fromUtf8(value)});
    differences += comparer.compareHeaders(recorded.responseHeaders, answerHeaders);
    *drifted = !differences.isEmpty();
    if (!*drifted)
        return QStringLiteral("same");
    QStringList parts;
    for (const auto &difference : differences)
        parts << difference.path + QStringLiteral(": ") + difference.text;
    return QStringLiteral("drifted: ") + parts.join(QStringLiteral("; "));
}

} // namespace till
