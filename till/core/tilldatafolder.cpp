#include "tilldatafolder.h"

#include "secrets/privatefile.h"
#include "tillsettingsreader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

namespace till {

namespace {

/// The till a newcomer gets: store 7, till 12, one cashier, three currencies
/// and three return reasons, and a plug-in configuration for \a serviceUrl.
QByteArray defaultConfig(const QString &serviceUrl, const QString &tokenUrl)
{
    return QStringLiteral(R"(; Host configuration of a tessaro-till till (docs/scenarios.md, "The data folder").
; Plug-in keys are written Section:name elsewhere: Tessaro:url is url under [Tessaro].

[Host]
; Relative paths are taken from this folder.
database=till.db
documentsDir=documents

[Till]
store=7
till=12
cashierId=5
cashierCode=1005
cashierName=Иванова А. А.
fiscalRegistrationNumber=1234567890123456
fiscalDriveSerial=9999078900012345

[Tessaro]
url=%1
tokenUrl=%2
useTokenAuth=true
clientId=till
realmId=tessaro
authorizationHeader=Basic dGlsbDpzZWNyZXQ=
timeout=5

; Service payment code = till currency codes.
[Tessaro.PaymentCodes]
1=1
2=2
3=3

; Service VAT code = till VAT codes.
[Tessaro.VatCodes]
1=1
2=2

; Till currencies that must not be paid together in one document: key = value.
[Tessaro.ForbiddenMixedValuts]
3=2

; A return by sale paid in the key's currency may also be paid in the value's.
[TessaroBack.AdditionalBackBySaleValuts]
2=1

[OrvelGate]
tessaro=false
)")
        .arg(serviceUrl, tokenUrl)
        .toUtf8();
}

const char defaultDictionaries[] = R"({
    "backReasons": [
        {"kind": 2, "code": 1, "name": "Брак"},
        {"kind": 2, "code": 2, "name": "Не подошёл размер"},
        {"kind": 2, "code": 3, "name": "Покупатель передумал"}
    ],
    "currencies": [
        {"code": 1, "name": "Наличные", "type": 1},
        {"code": 2, "name": "Банковская карта", "type": 2},
        {"code": 3, "name": "Подарочный сертификат", "type": 3}
    ]
}
)";

} // namespace

TillDataFolder::TillDataFolder(const QString &path)
    : m_path(QDir(path).absolutePath())
{
}

QString TillDataFolder::filePath(const QString &name) const
{
    return QDir(m_path).filePath(name);
}

QString TillDataFolder::configFile() const
{
    return filePath(QStringLiteral("till.ini"));
}

QString TillDataFolder::dictionariesFile() const
{
    return filePath(QStringLiteral("dictionaries.json"));
}

QString TillDataFolder::databaseFile() const
{
    const QSettings settings(configFile(), QSettings::IniFormat);
    return filePath(settings.value(QStringLiteral("Host/database"), QStringLiteral("till.db")).toString());
}

QString TillDataFolder::documentsDir() const
{
    const QSettings settings(configFile(), QSettings::IniFormat);
    return filePath(settings.value(QStringLiteral("Host/documentsDir"), QStringLiteral("documents")).toString());
}

QString TillDataFolder::stateFile() const
{
    return filePath(QStringLiteral("state.json"));
}

QString TillDataFolder::progressDir() const
{
    return filePath(QStringLiteral("progress"));
}

QString TillDataFolder::hostConfigFile() const
{
    return filePath(QStringLiteral("run/host.ini"));
}

bool TillDataFolder::exists() const
{
    return QFileInfo::exists(configFile());
}

bool TillDataFolder::create(const QString &serviceUrl, const QString &tokenUrl, QString *error) const
{
    if (exists()) {
        if (error)
            *error = QStringLiteral("%1 already holds a till").arg(m_path);
        return false;
    }
    if (!QDir().mkpath(m_path) || !QDir().mkpath(filePath(QStringLiteral("documents")))) {
        if (error)
            *error = QStringLiteral("cannot create %1").arg(m_path);
        return false;
    }
    QString url = serviceUrl;
    while (url.endsWith(QLatin1Char('/')))
        url.chop(1);
    // till.ini last: a folder whose creation was interrupted is not taken for a till.
    return PrivateFile::write(dictionariesFile(), defaultDictionaries, error)
        && PrivateFile::write(configFile(), defaultConfig(url, tokenUrl.isEmpty() ? url + QStringLiteral("/token") : tokenUrl), error);
}

std::optional<TillSettings> TillDataFolder::readSettings(QString *error) const
{
    if (!exists()) {
        if (error)
            *error = QStringLiteral("%1 holds no till (no till.ini); create one with: tessaro-till init --data %1").arg(m_path);
        return std::nullopt;
    }
    TillSettings settings;
    if (QFileInfo::exists(dictionariesFile())) {
        const std::optional<TillSettings> read = TillSettingsReader::readFile(dictionariesFile(), error);
        if (!read)
            return std::nullopt;
        settings = *read;
    }
    const QSettings ini(configFile(), QSettings::IniFormat);
    settings.store = ini.value(QStringLiteral("Till/store"), settings.store).toString();
    settings.till = ini.value(QStringLiteral("Till/till"), settings.till).toString();
    if (ini.contains(QStringLiteral("Till/cashierId"))) {
        settings.cashierId = ini.value(QStringLiteral("Till/cashierId")).toInt();
        settings.cashierCode = ini.value(QStringLiteral("Till/cashierCode")).toString();
        settings.cashierName = ini.value(QStringLiteral("Till/cashierName")).toString();
    }
    if (ini.contains(QStringLiteral("Till/fiscalRegistrationNumber")))
        settings.fiscalRegistrationNumber = ini.value(QStringLiteral("Till/fiscalRegistrationNumber")).toLongLong();
    settings.fiscalDriveSerial = ini.value(QStringLiteral("Till/fiscalDriveSerial"), settings.fiscalDriveSerial).toString();
    return settings;
}

QString TillDataFolder::writeHostConfig(const QMap<QString, QString> &config, QString *error) const
{
    const QString target = hostConfigFile();
    QDir().mkpath(QFileInfo(target).path());
    QFile source(configFile());
    if (!source.open(QIODevice::ReadOnly) || !PrivateFile::write(target, source.readAll(), nullptr)) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(target);
        return QString();
    }
    // QSettings rewrites the file keeping its mode.
    QSettings settings(target, QSettings::IniFormat);
    settings.setValue(QStringLiteral("Host/database"), databaseFile());
    settings.setValue(QStringLiteral("Host/documentsDir"), documentsDir());
    for (auto it = config.cbegin(); it != config.cend(); ++it) {
        QString key = it.key();
        key[key.indexOf(QLatin1Char(':'))] = QLatin1Char('/');
        settings.setValue(key, it.value());
    }
    settings.sync();
    if (settings.status() != QSettings::NoError) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(target);
        return QString();
    }
    return target;
}

QString TillDataFolder::serviceUrl() const
{
    const QSettings settings(configFile(), QSettings::IniFormat);
    return settings.value(QStringLiteral("Tessaro/url")).toString();
}

} // namespace till
