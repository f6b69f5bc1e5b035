#include "emulatedtill.h"

#include "emulatedtillconstants.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

namespace till {

EmulatedTill::EmulatedTill(const tessaro::emulator::EmulatorSettings &settings, const QString &temporaryTemplate)
    : m_emulator(settings)
    , m_temporaryTemplate(temporaryTemplate)
    , m_folder(QString())
{
}

EmulatedTill::~EmulatedTill() = default;

bool EmulatedTill::start(QString *error, CurrencyTables tables)
{
    m_dir = m_temporaryTemplate.isEmpty() ? std::make_unique<QTemporaryDir>() : std::make_unique<QTemporaryDir>(m_temporaryTemplate);
    if (!m_dir->isValid()) {
        *error = QStringLiteral("cannot create a temporary folder: %1").arg(m_dir->errorString());
        return false;
    }
    return start(m_dir->filePath(QStringLiteral("till")), error, tables);
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
    return m_dir ? m_dir->filePath(name) : QString();
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
