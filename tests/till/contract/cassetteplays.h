#pragma once

#include "demorunner.h"
#include "report.h"

#include <contracts/cassette.h>
#include <emulator/journalentry.h>

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// Plays a bundled scenario on a new till with the real plug-in, recording
/// it against the emulator or replaying it from a cassette.
namespace cassetteplays {

struct Recording
{
    till::Report report;
    tessaro::contracts::Cassette cassette;
    /// What the emulator received, secrets and all.
    QList<tessaro::emulator::JournalEntry> journal;
};

/// Records \a play against a new emulator (its own settings, else \a
/// emulatorSettings), \a config on top of the till's configuration.
bool record(const till::DemoRunner::Play &play, const QString &folder, Recording *recording, QString *error,
            const QMap<QString, QString> &config = {}, const QByteArray &emulatorSettings = {});

/// Replays \a play from \a cassette offline, \a config on top of the till's
/// configuration; the replay's failures are in the report.
bool replay(const till::DemoRunner::Play &play, const tessaro::contracts::Cassette &cassette, const QString &folder,
            till::Report *report, QString *error, const QMap<QString, QString> &config = {});

/// Per action, its result and failures; then the run's own failures.
QStringList verdicts(const till::Report &report);

/// The bundled scenario of that name.
till::DemoRunner::Play bundled(const QString &name);

} // namespace cassetteplays
