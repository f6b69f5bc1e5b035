#include "servicetestbed.h"

#include <QJsonDocument>
#include <QUrl>

const QString ServiceTestBed::clientId = QStringLiteral("till-012");
const QString ServiceTestBed::realmId = QStringLiteral("store-7");
const QString ServiceTestBed::clientSecretHeader = QStringLiteral("Basic dGlsbC0wMTI6Y2xpZW50LXNlY3JldA==");

ServiceTestBed::ServiceTestBed(const QMap<QString, QString> &settings)
{
    m_server.start();
    const QString base = m_server.url(QString()).toString();

    QMap<QString, QString> all{
        {QStringLiteral("Tessaro:url"), QStringLiteral("{server}/api")},
        {QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("{server}/oauth/token")},
        {QStringLiteral("Tessaro:clientId"), clientId},
        {QStringLiteral("Tessaro:realmId"), realmId},
        {QStringLiteral("Tessaro:authorizationHeader"), clientSecretHeader},
    };
    all.insert(settings);

    // One INI section per prefix; QMap keeps the keys of a section together.
    QString currentSection;
    for (auto it = all.cbegin(); it != all.cend(); ++it) {
        const QString section = it.key().section(QLatin1Char(':'), 0, 0);
        if (section != currentSection) {
            m_configText += QStringLiteral("[%1]\n").arg(section);
            currentSection = section;
        }
        QString value = it.value();
        value.replace(QLatin1String("{server}"), base);
        m_configText += QStringLiteral("%1=\"%2\"\n").arg(it.key().section(QLatin1Char(':'), 1), value);
    }
    m_host = std::make_unique<TestHost>(m_configText);
}

ServiceTestBed::~ServiceTestBed() = default;

ScriptedHttpServer::Answer ServiceTestBed::tokenAnswer(const QByteArray &token)
{
    return ScriptedHttpServer::Answer::json(
        200, R"({"access_token":")" + token + R"(","token_type":"bearer","expires_in":300})");
}

QJsonObject ServiceTestBed::jsonBody(const ScriptedHttpServer::Request &request)
{
    return QJsonDocument::fromJson(request.body).object();
}

QList<QPair<QString, QString>> ServiceTestBed::formFields(const QByteArray &body)
{
    QList<QPair<QString, QString>> fields;
    const QList<QByteArray> pairs = body.split('&');
    for (QByteArray pair : pairs) {
        pair.replace('+', ' ');
        const qsizetype equals = pair.indexOf('=');
        fields.append({QString::fromUtf8(QByteArray::fromPercentEncoding(pair.left(equals))),
                       QString::fromUtf8(QByteArray::fromPercentEncoding(pair.mid(equals + 1)))});
    }
    return fields;
}
