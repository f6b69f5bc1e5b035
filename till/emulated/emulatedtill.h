#pragma once

#include "tilldatafolder.h"

#include <emulator/emulator.h>
#include <emulator/emulatorsettings.h>

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class QTemporaryDir;

namespace till {

/// A till against the Tessaro service emulator in this process: the emulator
/// serves on a free loopback port from its own thread, and a till data folder
/// is made for the emulator's service and token addresses. The till lives in
/// a temporary folder of its own, or in a folder the caller names.
class EmulatedTill
{
public:
    /// Whether the till keeps the currency tables of a new data folder. A
    /// simulated till starts without them: its session's settings bring its own.
    enum class CurrencyTables { Kept, Removed };

    /// \a settings configure the emulator; \a temporaryTemplate names the
    /// temporary folder the till lives in (as QTemporaryDir takes it; empty:
    /// one in the system's temporary folder).
    explicit EmulatedTill(const tessaro::emulator::EmulatorSettings &settings = {}, const QString &temporaryTemplate = QString());
    ~EmulatedTill();
    Q_DISABLE_COPY_MOVE(EmulatedTill)

    /// Starts the emulator and creates the till in folder().
    bool start(QString *error, CurrencyTables tables = CurrencyTables::Kept);
    /// Starts the emulator and creates the till in \a folder, which folder() then names.
    bool start(const QString &folder, QString *error, CurrencyTables tables = CurrencyTables::Kept);
    /// Creates one more till in \a folder for the running emulator.
    bool createTill(const TillDataFolder &folder, QString *error, CurrencyTables tables = CurrencyTables::Kept) const;

    tessaro::emulator::Emulator &emulator() { return m_emulator; }
    /// The till: "till" in the temporary folder until start() names another.
    const TillDataFolder &folder() const { return m_folder; }
    /// \a name in the temporary folder, beside the till.
    QString filePath(const QString &name) const;

    /// Emulator settings from their JSON text; an empty text gives the defaults.
    static std::optional<tessaro::emulator::EmulatorSettings> settings(const QByteArray &json, QString *error);
    /// The emulated service's till for the data folder's store and till numbers.
    static tessaro::emulator::EmulatorSettings::Till serviceTill(bool shiftOpen);
    /// The values no log line may show: the client's credentials and the gateway's secret.
    static QStringList secrets();
    /// Where many short-lived tills best live: in memory when the system
    /// offers it, since every document save and shift record is synced to disk.
    static QString workFolder();

private:
    tessaro::emulator::Emulator m_emulator;
    std::unique_ptr<QTemporaryDir> m_dir;
    TillDataFolder m_folder;
};

} // namespace till
