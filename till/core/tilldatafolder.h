#pragma once

#include "tillsettings.h"

#include <QString>

#include <optional>

namespace till {

/// A till on disk. The folder holds:
///
/// | file | holds |
/// |---|---|
/// | till.ini | the host configuration: [Host] (database, documentsDir), [Till] (store, till, cashier, fiscal data) and the plug-in's sections ([Tessaro], [Tessaro.*], [TessaroBack.*], [OrvelGate]) |
/// | dictionaries.json | return reasons and currencies |
/// | till.db | the host's documents store (SQLite): shift records and payment totals |
/// | documents/ | one JSON file per document |
/// | state.json | the till's state: shift, open document, run counter |
/// | progress/ | how far each scenario run has come |
/// | run/host.ini | the configuration the host runs with (till.ini with absolute paths and a scenario's settings); written at each start |
class TillDataFolder
{
public:
    explicit TillDataFolder(const QString &path);

    QString path() const { return m_path; }
    QString configFile() const;
    QString dictionariesFile() const;
    QString databaseFile() const;
    QString documentsDir() const;
    QString stateFile() const;
    QString progressDir() const;
    QString hostConfigFile() const;

    /// Whether a till lives here (its till.ini exists).
    bool exists() const;

    /// Creates a till with default settings that talks to \a serviceUrl and
    /// fetches its token from \a tokenUrl (empty: \a serviceUrl + "/token").
    /// Refuses a folder that already holds a till.
    bool create(const QString &serviceUrl, const QString &tokenUrl, QString *error) const;

    /// The till's own settings: [Till] of till.ini, and dictionaries.json.
    std::optional<TillSettings> readSettings(QString *error) const;

    /// Writes run/host.ini: till.ini, its [Host] paths made absolute, and
    /// \a config (keys "Section:name") on top. Returns its path, empty on failure.
    QString writeHostConfig(const QMap<QString, QString> &config, QString *error) const;

    /// The service address the configuration names ("Tessaro:url").
    QString serviceUrl() const;

private:
    QString filePath(const QString &name) const;

    QString m_path;
};

} // namespace till
