#pragma once

#include "scripteddialog.h"
#include "settableclock.h"

#include <QSharedPointer>
#include <QString>
#include <QTemporaryDir>

/// A fresh host for one test: every host singleton and factory reset, the
/// configuration written from INI text, a signed-in cashier, store 7 and
/// till 12, a scripted dialog and a settable clock installed.
///
/// Destroying it resets the host again, so tests do not leak into each other.
class TestHost
{
public:
    explicit TestHost(const QString &iniText = QString());
    ~TestHost();
    TestHost(const TestHost &) = delete;
    TestHost &operator=(const TestHost &) = delete;

    /// Replaces the configuration with \a iniText.
    void setConfig(const QString &iniText);
    /// The file of the current configuration.
    QString configFile() const;
    /// A folder that lives as long as the host.
    QString folder() const { return m_dir.path(); }

    QSharedPointer<ScriptedDialog> dialog() const { return m_dialog; }
    QSharedPointer<SettableClock> clock() const { return m_clock; }

    /// Resets every host singleton and factory.
    static void reset();

private:
    QTemporaryDir m_dir;
    QSharedPointer<ScriptedDialog> m_dialog;
    QSharedPointer<SettableClock> m_clock;
    int m_configGeneration = 0;
};
