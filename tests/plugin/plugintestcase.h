#pragma once

#include "plugintesthost.h"
#include "testableplugin.h"

#include <QObject>

#include <memory>

/// The base of the test cases that drive an initialised plug-in: before each
/// test a fresh host (configured with configuration()) with the document
/// context current, and a plug-in on which init() has run.
class PluginTestCase : public QObject
{
    Q_OBJECT

protected:
    /// The host configuration, as INI text.
    virtual QString configuration() const { return QString(); }

    std::unique_ptr<PluginTestHost> m_host;
    std::unique_ptr<TestablePlugin> m_plugin;

protected slots:
    void init();
    void cleanup();
};
