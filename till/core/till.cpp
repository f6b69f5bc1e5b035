#include "till.h"

#include "actionlog.h"
#include "cassetterecorder.h"
#include "formpresenter.h"
#include "hostactions.h"
#include "recordingrestclient.h"
#include "tilldialog.h"
#include "tillsavetofilelogic.h"

#include <actionqueuecontroller.h>
#include <basicloyaltysystem.h>
#include <config.h>
#include <contextmanager.h>
#include <dialog.h>
#include <dictionariesdao.h>
#include <documentsdao.h>
#include <frcollection.h>
#include <hostobjects.h>
#include <mockfactory.h>
#include <qml/qmlbasedgui.h>
#include <session.h>
#include <singleton.h>
#include <valutcollection.h>

#include <algorithm>
#include <csignal>

namespace till {

Till::Till(const TillDataFolder &folder, Cashier *cashier, ActionLog *log)
    : m_folder(folder)
    , m_cashier(cashier)
    , m_log(log)
    , m_state(folder.stateFile())
    , m_documents(folder.documentsDir())
    , m_presenter(std::make_unique<FormPresenter>(cashier, log))
    , m_hostActions(std::make_unique<HostActions>(this, cashier, log))
{
    m_pipeline.setObserver([this](const ActionPipeline::Step &step) {
        m_log->addStep(step);
        if (m_killAfterHook && step.kind == ActionPipeline::Step::BeforeTrigger && step.actionType == *m_killAfterHook
            && step.result != EContext::Stop)
            ::raise(SIGKILL);
    });
    m_hostActions->install(&m_pipeline);
}

Till::~Till()
{
    if (m_plugin.plugin()) {
        m_pipeline.removePlugin(m_plugin.plugin());
        m_plugin.plugin()->deinit();
    }
    resetHost();
}

bool Till::start(const QString &pluginFolder, const TillSettings &overrides, QString *error)
{
    m_overrides = overrides;
    if (!installHost(error))
        return false;
    if (!m_plugin.load(pluginFolder, error))
        return false;
    if (m_recorder)
        m_recorder->setPluginVersion(PluginHost::versionOf(m_plugin.fileName()));
    m_pipeline.addPlugin(m_plugin.plugin());
    return startPlugin(error);
}

bool Till::restart(QString *error)
{
    if (m_plugin.plugin())
        m_plugin.plugin()->deinit();
    resetHost();
    return installHost(error) && startPlugin(error);
}

void Till::resetHost()
{
    HostObjects::resetAll();
}

bool Till::installHost(QString *error)
{
    const std::optional<TillSettings> own = m_folder.readSettings(error);
    if (!own || !m_state.load(error))
        return false;
    m_settings = own->overriddenBy(m_overrides);

    const QString configFile = m_folder.writeHostConfig(m_settings.config, error);
    if (configFile.isEmpty())
        return false;
    qputenv("NORVIK_CONFIG", configFile.toLocal8Bit());
    Singleton<Config>::setInstance(new Config(configFile));

    auto *session = new Session;
    session->getRegistry().setShopCode(m_settings.store);
    session->getRegistry().setCashCode(m_settings.till);
    session->setCurrentUser(QSharedPointer<User>::create(m_settings.cashierId.value_or(0), m_settings.cashierCode,
                                                         m_settings.cashierName));
    session->setCurrentShift(m_settings.shift.value_or(m_state.shift()));
    Singleton<Session>::setInstance(session);

    auto *dictionaries = new DictionariesDao;
    QHash<int, QList<DictionariesDao::BackReason>> reasons;
    for (const TillSettings::Reason &reason : m_settings.backReasons.value_or(QList<TillSettings::Reason>()))
        reasons[reason.kind] << DictionariesDao::BackReason{reason.code, reason.name};
    for (auto it = reasons.cbegin(); it != reasons.cend(); ++it)
        dictionaries->setBackReasons(it.key(), it.value());
    Singleton<DictionariesDao>::setInstance(dictionaries);

    auto *valuts = new ValutCollection;
    for (const TillSettings::Currency &currency : m_settings.currencies.value_or(QList<TillSettings::Currency>()))
        valuts->addValut({currency.code, currency.name, currency.type});
    Singleton<ValutCollection>::setInstance(valuts);

    auto *fiscal = new FrCollection;
    fiscal->setRegistrationNumber(m_settings.fiscalRegistrationNumber.value_or(0));
    fiscal->setFiscalDriveSerial(m_settings.fiscalDriveSerial);
    Singleton<FrCollection>::setInstance(fiscal);

    Singleton<DocumentsDao>::setInstance(new DocumentsDao(m_folder.databaseFile()));
    Singleton<ContextManager>::setInstance(new ContextManager);
    Singleton<ActionQueueController>::setInstance(new ActionQueueController);
    m_pipeline.installAsQueueRunner();

    auto *gui = new qml::QmlBasedGui;
    FormPresenter *presenter = m_presenter.get();
    gui->setPresenter([presenter](const qml::ViewDescriptor &view) { return presenter->present(view); });
    Singleton<qml::QmlBasedGui>::setInstance(gui);

    MockFactory<Dialog>::setInstance(QSharedPointer<TillDialog>::create(m_cashier, m_log));
    MockFactory<SaveToFileLogic>::setInstance(QSharedPointer<TillSaveToFileLogic>::create([this](const QString &what) { storeFailed(what); }));
    ActionLog *log = m_log;
    CassetteRecorder *recorder = m_recorder;
    if (recorder) {
        const Config *config = Singleton<Config>::instance();
        recorder->setAddresses(config->getString(QStringLiteral("Tessaro:url")), config->getString(QStringLiteral("Tessaro:tokenUrl")));
    }
    MockFactory<RestClient>::setCreator([log, recorder] { return QSharedPointer<RestClient>(new RecordingRestClient(log, recorder)); });
    if (m_hostInstaller)
        m_hostInstaller();
    return true;
}

bool Till::startPlugin(QString *error)
{
    m_plugin.plugin()->init();
    if (!m_documents.load(error))
        return false;
    const auto document = m_documents.find(m_state.currentDocument());
    if (document && !document->isClosed()) {
        open(document);
        if (loyaltySystem())
            loyaltySystem()->restoreLoyaltySystem();
    }
    return true;
}

int Till::cardType() const
{
    return loyaltySystem() ? loyaltySystem()->getSystemType() : 0;
}

QSharedPointer<AbstractDocument> Till::currentDocument() const
{
    return Singleton<Session>::instance()->getCurrentDocument();
}

void Till::open(const QSharedPointer<AbstractDocument> &document)
{
    if (!m_documents.find(document->getId()))
        m_documents.add(document);
    Singleton<Session>::instance()->setCurrentDocument(document);
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);
    m_state.setCurrentDocument(document->getId());
    saveState();
    if (loyaltySystem())
        loyaltySystem()->setDocument(document);
    Singleton<ActionQueueController>::instance()->processQueue();
    saveCurrent();
}

void Till::showMenu()
{
    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Menu);
}

void Till::closeCurrent()
{
    Singleton<Session>::instance()->setCurrentDocument({});
    m_state.setCurrentDocument(QString());
    saveState();
    showMenu();
}

EContext::Result Till::run(const control::Action &action, EContext::Code context)
{
    Singleton<ContextManager>::instance()->setCurrentContext(context);
    const QSharedPointer<AbstractDocument> document = currentDocument();
    const DocumentsDao *store = Singleton<DocumentsDao>::instance();
    const int storeFailures = store->failures();
    const EContext::Result result = m_pipeline.run(action);
    Singleton<ActionQueueController>::instance()->processQueue();
    // A record a hook could not write (the plug-in's shift record) fails the action too.
    if (store->failures() > storeFailures && !hasStoreFailure())
        storeFailed(QStringLiteral("%1: %2").arg(store->databaseFile(), store->lastError()));
    if (m_strictHost)
        return result;
    // The document the action worked on is saved even when the action closed it.
    if (document)
        save(document);
    if (currentDocument() != document)
        saveCurrent();
    return result;
}

void Till::saveCurrent()
{
    if (const auto document = currentDocument())
        save(document);
}

bool Till::save(const QSharedPointer<AbstractDocument> &document)
{
    return m_documents.save(document);
}

void Till::hostChanged(const QSharedPointer<AbstractDocument> &document)
{
    if (m_strictHost)
        save(document);
}

void Till::saveState()
{
    QString error;
    if (!m_state.save(&error))
        storeFailed(error);
}

namespace {

const QString storeFailurePrefix = QStringLiteral("the till's store failed: ");

} // namespace

bool Till::hasStoreFailure() const
{
    const QStringList &failures = m_log->current().failures;
    return std::any_of(failures.cbegin(), failures.cend(), [](const QString &failure) { return failure.startsWith(storeFailurePrefix); });
}

void Till::storeFailed(const QString &what)
{
    // Once an action is enough for the cashier; the record keeps every failure.
    const bool shown = hasStoreFailure();
    m_log->addFailure(storeFailurePrefix + what);
    if (!shown) {
        MockFactory<Dialog>::create()->showMessage(
            tr::Tr(QStringLiteral("tillStoreError"), QStringLiteral("Ошибка записи на диск кассы: данные не сохранены")), Dialog::Error, 0);
    }
}

} // namespace till
