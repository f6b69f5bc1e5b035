#pragma once

#include "documentstore.h"
#include "pluginhost.h"
#include "scenario.h"
#include "tilldatafolder.h"
#include "tillstate.h"

#include <actionpipeline.h>
#include <control/action.h>
#include <econtext.h>

#include <QSharedPointer>

#include <functional>
#include <memory>

class BasicLoyaltySystem;

namespace till {

class ActionLog;
class CassetteRecorder;
class Cashier;
class FormPresenter;
class HostActions;

/// The host application around the plug-in: one till on disk with its host
/// objects, the loaded plug-in and the action pipeline that runs the
/// cashier's actions through the hooks the plug-in registered.
///
/// Every host object the plug-in reaches (configuration, session, stores,
/// dialogs, QML interface, REST client) is installed from the data folder at
/// start; the documents are read back from disk, and the document that was
/// open is bound to the plug-in again.
class Till
{
public:
    Till(const TillDataFolder &folder, Cashier *cashier, ActionLog *log);
    ~Till();
    Till(const Till &) = delete;
    Till &operator=(const Till &) = delete;

    /// Installs the host, loads the plug-in from \a pluginFolder and starts it.
    /// \a overrides (a scenario's settings) go on top of the data folder's.
    bool start(const QString &pluginFolder, const TillSettings &overrides, QString *error);
    /// Starts the till again from disk within the process: every host object
    /// is made anew, the plug-in's registrations are dropped and init runs
    /// again (the plug-in object itself is the process's one).
    bool restart(QString *error);
    /// Runs \a install each time the host objects have been made (at start and
    /// at every restart), before the plug-in's init: a harness puts its own
    /// substitutes (clock, REST client) in place there.
    void setHostInstaller(const std::function<void()> &install) { m_hostInstaller = install; }
    /// Also keeps every exchange with the service in \a recorder (null: none),
    /// from the next start on.
    void setRecorder(CassetteRecorder *recorder) { m_recorder = recorder; }

    const TillDataFolder &folder() const { return m_folder; }
    const TillSettings &settings() const { return m_settings; }
    const PluginHost &plugin() const { return m_plugin; }
    DocumentStore &documents() { return m_documents; }
    TillState &state() { return m_state; }
    /// The type of customer card the plug-in looks for.
    int cardType() const;
    BasicLoyaltySystem *loyaltySystem() const { return m_plugin.loyaltySystem(); }

    QSharedPointer<AbstractDocument> currentDocument() const;
    /// Puts \a document on the screen and binds it to the plug-in.
    void open(const QSharedPointer<AbstractDocument> &document);
    /// Goes back to the main menu; the open document stays open.
    void showMenu();
    /// The current document is done: nothing is open any more.
    void closeCurrent();

    /// Runs \a action through the pipeline in \a context, then whatever the
    /// hooks queued meanwhile; the open document is saved afterwards.
    EContext::Result run(const control::Action &action, EContext::Code context);
    /// Saves the open document, as the host does after every change.
    void saveCurrent();

private:
    bool installHost(QString *error);
    bool startPlugin(QString *error);
    static void resetHost();

    TillDataFolder m_folder;
    Cashier *m_cashier;
    ActionLog *m_log;
    TillSettings m_overrides;
    TillSettings m_settings;
    TillState m_state;
    DocumentStore m_documents;
    PluginHost m_plugin;
    ActionPipeline m_pipeline;
    std::unique_ptr<FormPresenter> m_presenter;
    std::unique_ptr<HostActions> m_hostActions;
    std::function<void()> m_hostInstaller;
    CassetteRecorder *m_recorder = nullptr;
};

} // namespace till
