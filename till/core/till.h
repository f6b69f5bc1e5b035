#pragma once

#include "documentstore.h"
#include "pluginhost.h"
#include "tillsettings.h"
#include "tilldatafolder.h"
#include "tillstate.h"

#include <actionpipeline.h>
#include <control/action.h>
#include <econtext.h>

#include <QSharedPointer>

#include <functional>
#include <memory>
#include <optional>

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
    /// hooks queued meanwhile; unless the host is strict, the open document
    /// is saved afterwards.
    EContext::Result run(const control::Action &action, EContext::Code context);
    /// Saves the open document.
    void saveCurrent();
    /// Writes \a document out through the host's SaveToFileLogic, which the
    /// till installs so that a failing save, the plug-in's too, is shown to
    /// the cashier and reported (storeFailed()).
    bool save(const QSharedPointer<AbstractDocument> &document);
    /// The host changed \a document itself (a position, a payment, a card, a
    /// reason it asked for): a strict host saves it now; otherwise it is saved
    /// after the action with everything else.
    void hostChanged(const QSharedPointer<AbstractDocument> &document);
    /// The till could not write \a what: the cashier sees the host's store
    /// error at the action, and the action's record holds the failure.
    void storeFailed(const QString &what);

    /// A strict host saves a document only where a host must: when it opens,
    /// changes or closes the document itself. What a hook changes survives a
    /// restart only through the plug-in's own saves. Otherwise (the default)
    /// the till also saves the open document after every action.
    void setStrictHost(bool strict) { m_strictHost = strict; }
    bool strictHost() const { return m_strictHost; }
    /// Makes the till kill itself (SIGKILL) as soon as a plug-in's before-hook
    /// of \a type lets the action go on, before the host saves anything: a
    /// till dying at the worst moment, for the simulation's killed runs.
    void setKillAfterHook(control::EActionType type) { m_killAfterHook = type; }

private:
    bool installHost(QString *error);
    bool startPlugin(QString *error);
    static void resetHost();
    /// Writes state.json; a failing store is reported as for a document.
    void saveState();
    /// Whether the current action's record holds a store failure already.
    bool hasStoreFailure() const;

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
    bool m_strictHost = false;
    std::optional<control::EActionType> m_killAfterHook;
};

} // namespace till
