#include "emulatedtill.h"

#include "emulatedtillconstants.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSettings>
#include <QTemporaryDir>

namespace till {

EmulatedTill::EmulatedTill(const tessaro::emulator::EmulatorSettings &settings, const QString &temporaryTemplate)
    : m_emulator(settings)
    , m_dir(temporaryTemplate.isEmpty() ? std::make_unique<QTemporaryDir>() : std::make_unique<QTemporaryDir>(temporaryTemplate))
    , m_folder(m_dir->filePath(QStringLiteral("till")))
{
}

EmulatedTill::~EmulatedTill() = default;

bool EmulatedTill::start(QString *error, CurrencyTables tables)
{
    if (!m_dir->isValid()) {
        *error = QStringLiteral("cannot create a temporary folder: %1").arg(m_dir->errorString());
        return false;
    }
    return start(m_folder.path(), error, tables);
}

bool EmulatedTill::start(const QString &folder, QString *error, CurrencyTables tables)
{
    m_folder = TillDataFolder(folder);
    if (m_emulator.startInThread(0) == 0) {
        *error = QStringLiteral("the emulator cannot listen on the loopback interface");
        return false;
    }
    return createTill(m_folder, error, tables);
}

bool EmulatedTill::createTill(const TillDataFolder &folder, QString *error, CurrencyTables tables) const
{
    if (!folder.create(m_emulator.baseUrl().toString(), m_emulator.tokenUrl().toString(), error))
        return false;
    if (tables == CurrencyTables::Kept)
        return true;
    QSettings ini(folder.configFile(), QSettings::IniFormat);
    ini.remove(QStringLiteral("Tessaro.ForbiddenMixedValuts"));
    ini.remove(QStringLiteral("TessaroBack.AdditionalBackBySaleValuts"));
    ini.sync();
    return ini.status() == QSettings::NoError;
}

QString EmulatedTill::filePath(const QString &name) const
{
    return m_dir->filePath(name);
}

std::optional<tessaro::emulator::EmulatorSettings> EmulatedTill::settings(const QByteArray &json, QString *error)
{
    if (json.isEmpty())
        return tessaro::emulator::EmulatorSettings();
    return tessaro::emulator::EmulatorSettings::fromJson(QJsonDocument::fromJson(json).object(), error);
}

tessaro::emulator::EmulatorSettings::Till EmulatedTill::serviceTill(bool shiftOpen)
{
    tessaro::emulator::EmulatorSettings::Till till;
    till.storeNo = emulated::storeNo;
    till.tillNo = emulated::tillNo;
    till.shiftOpen = shiftOpen;
    return till;
}

QStringList EmulatedTill::secrets()
{
    return {emulated::clientCredentials, emulated::appSecret};
}

QString EmulatedTill::workFolder()
{
    const QFileInfo memory(QStringLiteral("/dev/shm"));
    return memory.isDir() && memory.isWritable() ? memory.filePath() : QDir::tempPath();
}

} // namespace till
