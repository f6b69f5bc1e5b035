// BackPlugin: entry into the host (construction, triggers and handlers,
// settings) and the plug-in's answers as a loyalty system.

#include "backplugin.h"

#include "backplugindetail.h"
#include "client/interface.h"
#include "hostsdk/hostadapter.h"
#include "pluginversion.h"
#include "returns/backview.h"
#include "secrets/linesanitizer.h"

#include <actionhandler.h>
#include <actionqueuecontroller.h>
#include <basicexception.h>
#include <config.h>
#include <contextmanager.h>
#include <control/eactiontype.h>
#include <log4qt/logmanager.h>
#include <qml/qmlbasedgui.h>
#include <singleton.h>

#include <exception>

namespace tessaro {

namespace {

// The host's loyalty-system type of this plug-in; its values on documents are kept under it.
constexpr int SystemType = 27;

const QString ForbiddenMixedValutsSection = QStringLiteral("Tessaro.ForbiddenMixedValuts");
const QString AdditionalBackBySaleValutsSection = QStringLiteral("TessaroBack.AdditionalBackBySaleValuts");

enum class Relation {
    OneWay,     ///< the codes of a key to those of its value
    Symmetric,  ///< and those of the value back to those of the key
};

// Each key of a section lists currency codes, and so does its value.
void readValutRelations(const QString &section, Relation relation, QMap<int, QSet<int>> &relations)
{
    const QStringList names = hostsdk::configKeys(section);
    for (const QString &name : names) {
        const QList<int> keyCodes = Config::Entry(name).toIntList();
        const QList<int> valueCodes = Config::Entry(hostsdk::configString(section + QLatin1Char(':') + name)).toIntList();
        const QSet<int> keys(keyCodes.cbegin(), keyCodes.cend());
        const QSet<int> values(valueCodes.cbegin(), valueCodes.cend());
        for (int code : keys)
            relations[code].unite(values);
        if (relation == Relation::Symmetric) {
            for (int code : values)
                relations[code].unite(keys);
        }
    }
}

} // namespace

BackPlugin::BackPlugin()
    : logger(Log4Qt::LogManager::logger(QStringLiteral("tessaroback")))
{
    m_systemType = SystemType;
    setFeature(QStringLiteral("tessaro"));
    setOption(LoyaltySystemOption::ProcessesReturns, true);
}

BackPlugin::~BackPlugin() = default;

ActionTrigger::Function BackPlugin::call(Hook hook)
{
    return [this, hook](const control::Action &action) { return guarded(hook, action); };
}

EContext::Result BackPlugin::guarded(Hook hook, const control::Action &action)
{
    try {
        return (this->*hook)(action);
    } catch (const BasicException &e) {
        showError(e);
        return EContext::Stop;
    } catch (const std::exception &e) {
        // Out of memory or a failed library call: the host's pipeline must not
        // see it either, and the cashier learns that the action did not happen.
        logger->error(QStringLiteral("Сбой при обработке действия кассы: %1").arg(LineSanitizer::escaped(QString::fromLocal8Bit(e.what()))));
        showError(BasicException(tr::Tr(QStringLiteral("tessaroUnexpectedError"),
                                        QStringLiteral("Внутренняя ошибка модуля Tessaro. Действие не выполнено, "
                                                       "повторите его; при повторе ошибки обратитесь в поддержку"))));
        return EContext::Stop;
    }
}

void BackPlugin::init()
{
    // Which plug-in a till runs, in the host's log.
    logger->info(pluginVersionLine());
    interface = QSharedPointer<Interface>::create();
    interface->setLogger(logger);

    struct Row
    {
        EContext::Code context;
        control::EActionType type;
        ActionTrigger::Order order;
        ActionTrigger::Priority priority;
        Hook hook;
        bool returnsOnly;
    };
    const Row rows[] = {
        {EContext::Document, control::Input, ActionTrigger::Before, ActionTrigger::Low, &BackPlugin::beforeInput, false},
        {EContext::Document, control::AddCoupon, ActionTrigger::Before, ActionTrigger::High, &BackPlugin::addCoupon, false},
        {EContext::Document, control::AddPosition, ActionTrigger::Before, ActionTrigger::Low, &BackPlugin::beforePositionAdd, false},
        {EContext::Any, control::AttemptToDocumentClose, ActionTrigger::Before, ActionTrigger::High, &BackPlugin::beforeAttemptToDocumentClose, false},
        {EContext::Document, control::AttemptToBackBySale, ActionTrigger::Before, ActionTrigger::High, &BackPlugin::beforeAttemptToBackBySale, false},
        {EContext::Payment, control::AddPayment, ActionTrigger::Before, ActionTrigger::Low, &BackPlugin::checkPaymentRestrictions, false},
        {EContext::Document, control::StornoAll, ActionTrigger::Before, ActionTrigger::High, &BackPlugin::beforeStornoAll, true},
        {EContext::Document, control::StornoAll, ActionTrigger::After, ActionTrigger::Normal, &BackPlugin::afterStornoAll, true},
        {EContext::Any, control::BackBySale, ActionTrigger::Before, ActionTrigger::High, &BackPlugin::beforeBackBySale, true},
    };
    for (const Row &row : rows) {
        const int id = addTrigger(ActionTrigger(row.context, row.type, row.order, call(row.hook), ActionTrigger::Default, row.priority));
        if (row.returnsOnly)
            triggerIds.insert(id);
    }
    addHandler(ActionHandler(EContext::Document, control::SelectBackReason, call(&BackPlugin::selectBackReason), true));

    Singleton<qml::QmlBasedGui>::instance()->addView(QSharedPointer<BackView>::create());

    readForbiddenMixedValuts();
    readAdditionalBackBySaleValuts();
    BasicLoyaltySystem::init();
}

bool BackPlugin::identifyByCard(QSharedPointer<DocumentCardRecord> &, ECardNumberType)
{
    return true;
}

bool BackPlugin::commit(const QSharedPointer<AbstractDocument> &)
{
    return true;
}

bool BackPlugin::cancel()
{
    exitToMenu();
    return true;
}

bool BackPlugin::rollback(const QSharedPointer<AbstractDocument> &)
{
    return true;
}

bool BackPlugin::restoreLoyaltySystem()
{
    restoreToken();
    return true;
}

void BackPlugin::restoreToken()
{
    // A host may bind a document before it initialises the plug-in.
    if (!interface) {
        logger->warn(QStringLiteral("Клиент Tessaro ещё не создан: токен документа не передан"));
        return;
    }
    interface->setToken(getPluginData(QStringLiteral("token")).toString());
}

bool BackPlugin::registerLoyaltySystem()
{
    return true;
}

void BackPlugin::exitToMenu() const
{
    if (hostsdk::isCurrentContext(EContext::Menu))
        return;
    logger->info(QStringLiteral("Выход в главное меню"));
    hostsdk::queueAction(control::Action(control::ExitToMenu, {{QStringLiteral("shutdown"), false}}), true);
}

void BackPlugin::readForbiddenMixedValuts()
{
    readValutRelations(ForbiddenMixedValutsSection, Relation::Symmetric, forbiddenMixedValuts);
}

void BackPlugin::readAdditionalBackBySaleValuts()
{
    readValutRelations(AdditionalBackBySaleValutsSection, Relation::OneWay, additionalBackBySaleValuts);
}

} // namespace tessaro
