#include "backplugin.h"

#include "backplugindetail.h"
#include "client/interface.h"
#include "responses/advicenoteresponse.h"
#include "responses/response.h"
#include "responses/shiftclosedexception.h"
#include "returns/backdialog.h"
#include "returns/backview.h"

#include <abstractdocument.h>
#include <actionhandler.h>
#include <actionqueuecontroller.h>
#include <backbysaledocument.h>
#include <basicexception.h>
#include <config.h>
#include <contextmanager.h>
#include <control/args/backbysale.h>
#include <control/args/core.h>
#include <control/args/payment.h>
#include <dialog.h>
#include <dictionariesdao.h>
#include <documentfacade.h>
#include <documentlogic.h>
#include <documentsdao.h>
#include <edocumenttype.h>
#include <inputmultitextparams.h>
#include <log4qt/logmanager.h>
#include <mockfactory.h>
#include <qml/qmlbasedgui.h>
#include <quantity.h>
#include <savetofilelogic.h>
#include <session.h>
#include <shiftopenexception.h>
#include <singleton.h>
#include <storageitem.h>

#include <QJsonDocument>

namespace tessaro {

using detail::actionQueue;
using detail::ReturnTypes;
using detail::showRefusal;

namespace {

// The host's loyalty-system type of this plug-in; its values on documents are kept under it.
constexpr int SystemType = 27;
// The host's dictionary of return reasons that a return must have entries in.
constexpr int BackReasonDictionary = 2;
// Quantities and prices below these are taken as not given.
constexpr double MinimalQuantity = 0.0005;
constexpr double MinimalPrice = 0.005;

const QString ForbiddenMixedValutsSection = QStringLiteral("Tessaro.ForbiddenMixedValuts");
const QString AdditionalBackBySaleValutsSection = QStringLiteral("TessaroBack.AdditionalBackBySaleValuts");
const QString ReasonNamespace = QStringLiteral("tessaro");
const QString ReasonKey = QStringLiteral("backReason");
const QString AdviceNoteResponseKey = QStringLiteral("adviceNoteResponse");

enum class Relation {
    OneWay,     ///< the codes of a key to those of its value
    Symmetric,  ///< and those of the value back to those of the key
};

// Each key of a section lists currency codes, and so does its value.
void readValutRelations(const QString &section, Relation relation, QMap<int, QSet<int>> &relations)
{
    const Config *config = Singleton<Config>::instance();
    const QStringList names = config->keys(section);
    for (const QString &name : names) {
        const QList<int> keyCodes = Config::Entry(name).toIntList();
        const QList<int> valueCodes = Config::Entry(config->getString(section + QLatin1Char(':') + name)).toIntList();
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

ModifiersContainer &sessionModifiers()
{
    return Singleton<Session>::instance()->getModifiers();
}

// A quantity of one piece is what the till assumes when none was typed.
bool quantityGiven(const GoodsItem &position)
{
    if (!sessionModifiers().isSet(modifiers::Quantity))
        return false;
    const double quantity = sessionModifiers().getValue(modifiers::Quantity).value<Quantity>().value();
    return quantity != 1.0 || position.getTmcUnit()->isFractional();
}

InputMultiTextParams::Field stringField(const QString &name, const tr::Tr &label, const QString &value,
                                        const QString &pattern)
{
    InputMultiTextParams::Field field;
    field.name = name;
    field.label = label;
    field.value = value;
    field.pattern = pattern;
    return field;
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
    return [this, hook](const control::Action &action) { return (this->*hook)(action); };
}

void BackPlugin::init()
{
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
    interface->setToken(getPluginData(QStringLiteral("token")).toString());
    return true;
}

void BackPlugin::setDocument(const QSharedPointer<AbstractDocument> &document)
{
    if (document == getDocument())
        return;
    DocumentWatcher::setDocument(document);
    if (!document || !document->hasType(ReturnTypes)) {
        disableTriggers(triggerIds);
        return;
    }

    logger->info(QStringLiteral("Переключение на режим возврата"));
    if (auto *backBySale = qobject_cast<BackBySaleDocument *>(document.data())) {
        if (!bindBackBySale(*backBySale))
            return;
        backBySale->setAdditionalBackBySaleValuts(additionalBackBySaleValuts);
    }

    deregisterLoyaltySystem();
    registerLoyaltySystem();
    enableTriggers();
    // A document reopened after a restart keeps the token it was processed with.
    interface->setToken(getPluginData(QStringLiteral("token")).toString());

    InvoiceInfo info = getInvoiceInfo();
    if (info.valid()) {
        logger->debug(QStringLiteral("Обработка возврата по инвойсу %1").arg(info.invoiceIdRaw()));
        return;
    }
    if (document->getType() == EDocumentType::Back) {
        info = inputInvoiceInfo();
        if (info.valid()) {
            checkBackReasons();
            storeInvoiceInfo(info);
        }
    }
}

bool BackPlugin::bindBackBySale(const BackBySaleDocument &document) const
{
    const QString identifier = document.getSaleIdentifier();
    logger->info(QStringLiteral("Идентификатор чека продажи: %1").arg(identifier));
    if (identifier.size() != 12 && identifier.size() != 24) {
        showRefusal(tr::Tr(QStringLiteral("tessaroBackBySaleIncorrectId"),
                           QStringLiteral("Некорректный идентификатор оригинального инвойса")));
        return false;
    }

    InvoiceInfo info(identifier);
    info.storeNumber = document.getShopCode();
    const auto source = document.getSourceDocument();
    info.invoiceDate = (source ? source->getDateTime() : document.getDateTime()).date();
    logger->info(QStringLiteral("Номер оригинального инвойса: %1").arg(info.invoiceIdRaw()));
    storeInvoiceInfo(info);
    return true;
}

EContext::Result BackPlugin::beforeInput(const control::Action &)
{
    const auto document = getDocument();
    if (!document || document->getType() != EDocumentType::Back || getInvoiceInfo().valid())
        return EContext::NotHandled;
    const InvoiceInfo info = inputInvoiceInfo();
    if (!info.valid())
        return EContext::Stop;
    storeInvoiceInfo(info);
    return EContext::Continue;
}

EContext::Result BackPlugin::addCoupon(const control::Action &)
{
    if (hasCard())
        return EContext::Continue;
    showRefusal(tr::Tr(QStringLiteral("tessaroNoCardCouponError"),
                       QStringLiteral("Запрещено добавлять купоны, если в чеке нет карты")));
    return EContext::Stop;
}

EContext::Result BackPlugin::beforePositionAdd(const control::Action &action)
{
    if (!hasCard()) {
        showRefusal(tr::Tr(QStringLiteral("tessaroNoCardError"),
                           QStringLiteral("Запрещено добавлять товары, если в чеке нет карты")));
        return EContext::Stop;
    }
    if (getDocument()->getType() != EDocumentType::Back) {
        logger->debug(QStringLiteral("Дополнительная обработка не требуется"));
        return EContext::Continue;
    }
    const EContext::Result reason = selectBackReason(action);
    if (reason != EContext::Continue)
        return reason;

    const auto position = control::args::Core(action).getPosition();
    if (!quantityGiven(*position)) {
        const control::Action input(control::InputQuantity, {});
        control::args::Core(input).setPosition(position);
        if (actionQueue()->runAction(input) != EContext::Continue)
            return EContext::Stop;
        const double quantity = sessionModifiers().getValue(modifiers::Quantity).value<Quantity>().value();
        if (qAbs(quantity) < MinimalQuantity)
            return EContext::Stop;
        position->setBquant(quantity);
    }

    if (sessionModifiers().isSet(modifiers::Price))
        return EContext::Continue;
    const QString skipChoiceReason = QStringLiteral("skipChoiceReason");
    action.insert(skipChoiceReason, true);
    const control::Action input(control::InputPrice, {});
    input.insert(skipChoiceReason, true);
    actionQueue()->runAction(input);
    const double price = sessionModifiers().getValue(modifiers::Price).toDouble();
    if (qAbs(price) < MinimalPrice)
        return EContext::Stop;
    position->setPrice(price);
    return EContext::Continue;
}

EContext::Result BackPlugin::selectBackReason(const control::Action &action)
{
    const auto document = getDocument();
    const auto reasons = document ? Singleton<DictionariesDao>::instance()->getBackReasons(document->getBackReasonDictionaryKind())
                                  : QList<DictionariesDao::BackReason>();
    if (reasons.isEmpty())
        return EContext::Continue;

    if (action.value(QStringLiteral("target")).toString() == QLatin1String("document")) {
        const QVariant previous = document->getCommonBackReason();
        document->setCommonBackReason(QVariant());
        if (!MockFactory<DocumentLogic>::create()->chooseCommonBackReason(document, {}))
            document->setCommonBackReason(previous);
        return EContext::Continue;
    }

    const control::args::Core core(action);
    auto position = core.getPosition();
    if (!position && core.kind() == 1)
        position = document->getGoodsItemByPosnum(core.positionNumber());
    if (!position) {
        showRefusal(tr::Tr(QStringLiteral("selectedPositionIsNotAProduct"),
                           QStringLiteral("Выбранная позиция не является товаром")));
        return EContext::Stop;
    }

    int chosen = 0;
    if (reasons.size() > 1) {
        QStringList names;
        for (const auto &reason : reasons)
            names << reason.name;
        chosen = MockFactory<Dialog>::create()->showChoice(
            tr::Tr(QStringLiteral("tessaroPositionBackReason"), QStringLiteral("Выберите причину возврата для товара")), names);
    }
    if (chosen >= 0 && chosen < reasons.size()) {
        position->setAdditionalData(ReasonNamespace, ReasonKey, reasons.at(chosen).code);
        logger->info(QStringLiteral("Для позиции %1 выбрана причина %2").arg(position->getPosnum()).arg(reasons.at(chosen).name));
    } else if (const QVariant kept = position->getAdditionalData(ReasonNamespace, ReasonKey); !kept.isNull()) {
        logger->info(QStringLiteral("Сохранена установленная ранее причина возврата %1").arg(kept.toInt()));
    } else if (const QVariant common = document->getCommonBackReason(); !common.isNull()) {
        position->setAdditionalData(ReasonNamespace, ReasonKey, common.toInt());
        logger->info(QStringLiteral("Для позиции %1 установлена общая причина %2").arg(position->getPosnum()).arg(common.toInt()));
    } else {
        logger->info(QStringLiteral("Общая причина возврата не установлена"));
    }
    return EContext::Continue;
}

EContext::Result BackPlugin::beforeAttemptToDocumentClose(const control::Action &)
{
    // A shift closed at the service is opened once, then the return is sent again.
    bool retried = false;
    for (;;) {
        try {
            if (retried)
                shiftOpen();
            settleReturn();
            return EContext::Continue;
        } catch (const ShiftClosedException &e) {
            if (retried) {
                showError(e);
                return EContext::Stop;
            }
            retried = true;
        } catch (const BasicException &e) {
            showError(e);
            return EContext::Stop;
        }
    }
}

void BackPlugin::settleReturn()
{
    // The answer to the last advice note of this document, if any: an unchanged
    // return is then not sent again.
    AdviceNoteResponse answer = AdviceNoteResponse::fromMap(getPluginData(AdviceNoteResponseKey).toMap());
    const QSharedPointer<AbstractDocument> document = getDocument();
    if (document && document->hasType({EDocumentType::Back}))
        answer = interface->adviceNote(qSharedPointerObjectCast<BackDocument>(document), getInvoiceInfo(), answer);
    else if (document && document->hasType({EDocumentType::BackBySale}))
        answer = interface->adviceNote(qSharedPointerObjectCast<BackBySaleDocument>(document), getInvoiceInfo(), answer);
    answer.checkStatus();

    const QString invoiceId = answer.key4();
    logger->info(QStringLiteral("Номер инвойса возврата: %1").arg(invoiceId));
    setPluginData(QStringLiteral("invoiceIDRaw"), invoiceId);
    setPluginData(QStringLiteral("invoiceID"), QString(invoiceId).remove(QLatin1Char('/')));
    setPluginData(AdviceNoteResponseKey, answer.toMap());
    // The number and the answer must survive a restart of the till before the close.
    MockFactory<SaveToFileLogic>::create()->save(document, {});
}

EContext::Result BackPlugin::beforeAttemptToBackBySale(const control::Action &action)
{
    const auto document = action.value(QStringLiteral("document")).value<QSharedPointer<AbstractDocument>>();
    if (!MockFactory<DocumentLogic>::create()->chooseCommonBackReason(document, {}))
        return EContext::Stop;
    logger->info(QStringLiteral("Выбрана общая причина возврата: %1").arg(document->getCommonBackReason().toInt()));
    return EContext::Continue;
}

EContext::Result BackPlugin::checkPaymentRestrictions(const control::Action &action)
{
    const int code = control::args::Payment(action).valutCode().toInt(nullptr, 10);
    if (forbiddenMixedValuts.isEmpty())
        return EContext::Continue;

    const auto document = getDocument();
    const QSet<int> forbidden = forbiddenMixedValuts.value(code);
    const auto payments = document ? document->getMoneyItems() : QList<QSharedPointer<MoneyItem>>();
    const bool conflict = std::any_of(payments.cbegin(), payments.cend(), [&forbidden](const QSharedPointer<MoneyItem> &payment) {
        return forbidden.contains(payment->getValCode());
    });
    if (!conflict)
        return EContext::Continue;
    showRefusal(tr::Tr(QStringLiteral("tessaroConflictPayment"), QStringLiteral("В документе есть несовместимые оплаты")));
    return EContext::Stop;
}

void BackPlugin::showError(const BasicException &e) const
{
    if (!e.tr().isEmpty())
        MockFactory<Dialog>::create()->showMessage(e.tr(), Dialog::Information, 0);
}

EContext::Result BackPlugin::beforeStornoAll(const control::Action &)
{
    const auto document = getDocument();
    exitAfterStornoAll = document && document->hasType(ReturnTypes);
    return EContext::Continue;
}

EContext::Result BackPlugin::afterStornoAll(const control::Action &)
{
    if (exitAfterStornoAll)
        exitToMenu();
    return EContext::Continue;
}

EContext::Result BackPlugin::beforeBackBySale(const control::Action &action)
{
    const QString processed = QStringLiteral("processed");
    if (!action.value(QStringLiteral("orvel"), false).toBool() || action.value(processed, false).toBool())
        return EContext::Continue;
    action.insert(processed, true);

    logger->info(QStringLiteral("Ввод идентификатора инвойса"));
    const InvoiceInfo info = inputInvoiceInfo();
    if (!info.valid())
        return EContext::Stop;
    control::args::BackBySale(action).setIdentifier(info.documentId());
    return EContext::Continue;
}

void BackPlugin::checkBackReasons() const
{
    if (Singleton<DictionariesDao>::instance()->getBackReasons(BackReasonDictionary).isEmpty())
        showRefusal(tr::Tr(QStringLiteral("tessaroBackReasonListIsEmpty"), QStringLiteral("В таблице причин возврата нет записей")));
}

bool BackPlugin::registerLoyaltySystem()
{
    return true;
}

void BackPlugin::shiftOpen()
{
    logger->info(QStringLiteral("Открытие смены"));
    const DocumentFacade::CheckResult check = Singleton<DocumentFacade>::instance()->checkShiftOpen({});
    if (check.failed)
        throw ShiftOpenException(check.message);

    const Response answer = interface->tillOpen(Singleton<Session>::instance()->getCurrentUser(), 0.0);
    answer.checkStatus();

    StorageItem item;
    item.bindToCurrentShift();
    item.setName(QStringLiteral("tillOpen"));
    item.setValue(QString::fromUtf8(QJsonDocument(answer.jsonObject()).toJson(QJsonDocument::Indented)));
    Singleton<DocumentsDao>::instance()->saveStorageItem(item);
}

InvoiceInfo BackPlugin::inputInvoiceInfo()
{
    logger->info(QStringLiteral("Ввод информации об оригинальном инвойсе"));

    InputMultiTextParams params;
    params.setTitle(tr::Tr(QStringLiteral("tessaroInvoiceInfo"), QStringLiteral("Ввод информации об оригинальном инвойсе")));
    params.setButton(tr::Tr(QStringLiteral("tessaroInvoiceInfoOk"), QStringLiteral("Ввод")));
    params.addField(stringField(QStringLiteral("cashCode"),
                                tr::Tr(QStringLiteral("tessaroInvoiceInfoCashNumber"), QStringLiteral("Номер кассы")),
                                QStringLiteral("0000"), QStringLiteral("[0-9]{1,4}")));
    params.addField(stringField(QStringLiteral("invoiceNumber"),
                                tr::Tr(QStringLiteral("tessaroInvoiceInfoInvoiceNumber"), QStringLiteral("Номер инвойса")),
                                QStringLiteral("000000"), QStringLiteral("[0-9]{1,6}")));
    params.addField(stringField(QStringLiteral("storeNumber"),
                                tr::Tr(QStringLiteral("tessaroInvoiceInfoStore"), QStringLiteral("Номер ТЦ")),
                                Singleton<Session>::instance()->getRegistry().getShopCode(), QString()));
    InputMultiTextParams::Field date = stringField(
        QStringLiteral("invoiceDate"), tr::Tr(QStringLiteral("tessaroInvoiceInfoDate"), QStringLiteral("Дата")), QString(), QString());
    date.type = InputMultiTextParams::Date;
    date.format = QStringLiteral("dd.MM.yyyy");
    params.addField(date);

    const QVariantMap answer = MockFactory<BackDialog>::create()->inputInvoiceInfo(params);
    if (answer.isEmpty()) {
        invoiceInfo = InvoiceInfo();
        exitToMenu();
        return invoiceInfo;
    }
    invoiceInfo = InvoiceInfo::fromMap(answer);
    logger->info(QStringLiteral("Введен номер инвойса: %1; номер ТЦ: %2").arg(invoiceInfo.invoiceIdRaw(), invoiceInfo.storeNumber));
    return invoiceInfo;
}

void BackPlugin::storeInvoiceInfo(const InvoiceInfo &info) const
{
    const auto document = getDocument();
    if (!document)
        return;
    document->setDocumentProperty(QStringLiteral("invoiceInfo"), info.toMap());
    document->setDocumentProperty(QStringLiteral("originalInvoiceIDRaw"), info.invoiceIdRaw());
    document->setDocumentProperty(QStringLiteral("originalInvoiceID"), info.invoiceId());
    document->markChanged();
}

InvoiceInfo BackPlugin::getInvoiceInfo() const
{
    const auto document = getDocument();
    return document ? InvoiceInfo::fromMap(document->getDocumentProperty(QStringLiteral("invoiceInfo")).toMap()) : InvoiceInfo();
}

void BackPlugin::exitToMenu() const
{
    if (Singleton<ContextManager>::instance()->isCurrentContext(EContext::Menu))
        return;
    logger->info(QStringLiteral("Выход в главное меню"));
    actionQueue()->addAction(control::Action(control::ExitToMenu, {{QStringLiteral("shutdown"), false}}), true);
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
