#include "fakebackplugin.h"

#include <abstractdocument.h>
#include <actionqueuecontroller.h>
#include <config.h>
#include <control/args/core.h>
#include <control/args/payment.h>
#include <core/basicdialog.h>
#include <dialog.h>
#include <dictionariesdao.h>
#include <inputmultitextparams.h>
#include <mockfactory.h>
#include <qml/basicview.h>
#include <qml/qmlbasedgui.h>
#include <quantity.h>
#include <restclient.h>
#include <savetofilelogic.h>
#include <session.h>
#include <singleton.h>

#include <QDir>
#include <QFile>
#include <QQmlContext>

#include <csignal>

namespace {

class FakeView : public qml::BasicView
{
public:
    FakeView()
        : qml::BasicView(EActivityListener::InputMultiText)
    {
    }

    qml::ViewDescriptor get(const Event &event) override
    {
        if (event.getCode() != getCode())
            return {};
        const QVariant params = event.value(QStringLiteral("params"));
        return {event, event.value(QStringLiteral("form")).toString(),
                [params](QQmlContext *context) { context->setContextProperty(QStringLiteral("params"), params); }};
    }
};

void showMessage(const QString &id, const QString &text)
{
    MockFactory<Dialog>::create()->showMessage(tr::Tr(id, text), Dialog::Error, 0);
}

} // namespace

FakeBackPlugin::FakeBackPlugin()
{
    m_systemType = 27;
    setFeature(QStringLiteral("tessaro"));
}

void FakeBackPlugin::init()
{
    ++m_initCount;
    using std::placeholders::_1;
    addTrigger(ActionTrigger(EContext::Document, control::AddPosition, ActionTrigger::Before,
                             std::bind(&FakeBackPlugin::beforePositionAdd, this, _1), ActionTrigger::Result(0), ActionTrigger::Priority(1)));
    addTrigger(ActionTrigger(EContext::Any, control::AttemptToDocumentClose, ActionTrigger::Before,
                             std::bind(&FakeBackPlugin::beforeClose, this, _1), ActionTrigger::Result(0), ActionTrigger::Priority(3)));
    addTrigger(ActionTrigger(EContext::Document, control::StornoAll, ActionTrigger::After,
                             std::bind(&FakeBackPlugin::afterStornoAll, this, _1), ActionTrigger::Result(0), ActionTrigger::Priority(2)));
    addTrigger(ActionTrigger(EContext::Payment, control::AddPayment, ActionTrigger::Before,
                             std::bind(&FakeBackPlugin::checkPayment, this, _1), ActionTrigger::Result(0), ActionTrigger::Priority(1)));
    addHandler(ActionHandler(EContext::Document, control::SelectBackReason, std::bind(&FakeBackPlugin::selectBackReason, this, _1), true));
    Singleton<qml::QmlBasedGui>::instance()->addView(QSharedPointer<FakeView>::create());
    BasicLoyaltySystem::init();
}

void FakeBackPlugin::setDocument(const QSharedPointer<AbstractDocument> &document)
{
    DocumentWatcher::setDocument(document);
    setPluginData(QStringLiteral("initCount"), m_initCount);
    if (!document || document->getType() != 2 || document->getDocumentProperty(QStringLiteral("invoiceInfo")).isValid())
        return;
    InputMultiTextParams params;
    params.setTitle(tr::Tr(QStringLiteral("fakeInvoice"), QStringLiteral("Ввод информации об оригинальном инвойсе")));
    params.addField({QStringLiteral("cashCode"), InputMultiTextParams::String, tr::Tr(QStringLiteral("fakeCash"), QStringLiteral("Номер кассы")),
                     QStringLiteral("0000"), QStringLiteral("[0-9]{1,4}"), QString()});
    params.addField({QStringLiteral("invoiceDate"), InputMultiTextParams::Date, tr::Tr(QStringLiteral("fakeDate"), QStringLiteral("Дата")),
                     QString(), QString(), QStringLiteral("dd.MM.yyyy")});
    Event event = params.getEvent(EActivityListener::InputMultiText);
    event.insert(QStringLiteral("form"), QStringLiteral("InputInvoiceInfo"));
    core::BasicDialog dialog;
    const QVariantMap answer = dialog.show(false, false, QFlags<EInput::Source>(1), event).value(QStringLiteral("data")).toMap();
    if (answer.isEmpty())
        return;
    document->setDocumentProperty(QStringLiteral("invoiceInfo"),
                                  QVariantMap{{QStringLiteral("cashCode"), answer.value(QStringLiteral("cashCode"))},
                                              {QStringLiteral("invoiceDate"), answer.value(QStringLiteral("invoiceDate")).toDate().toString(Qt::ISODate)}});
}

bool FakeBackPlugin::restoreLoyaltySystem()
{
    setPluginData(QStringLiteral("restoreCount"), ++m_restoreCount);
    return true;
}

EContext::Result FakeBackPlugin::beforePositionAdd(const control::Action &action)
{
    if (!hasCard()) {
        showMessage(QStringLiteral("fakeNoCard"), QStringLiteral("Запрещено добавлять товары, если в чеке нет карты"));
        return EContext::Stop;
    }
    ModifiersContainer &modifiers = Singleton<Session>::instance()->getModifiers();
    if (modifiers.isSet(modifiers::Quantity))
        return EContext::Continue;
    const control::Action quantity(control::InputQuantity, {});
    control::args::Core(quantity).setPosition(control::args::Core(action).getPosition());
    if (Singleton<ActionQueueController>::instance()->runAction(quantity) != EContext::Continue)
        return EContext::Stop;
    control::args::Core(action).getPosition()->setBquant(modifiers.getValue(modifiers::Quantity).value<Quantity>().value());
    return EContext::Continue;
}

EContext::Result FakeBackPlugin::selectBackReason(const control::Action &action)
{
    const auto document = getDocument();
    const auto position = document ? document->getGoodsItemByPosnum(control::args::Core(action).positionNumber()) : nullptr;
    if (!position) {
        showMessage(QStringLiteral("selectedPositionIsNotAProduct"), QStringLiteral("Выбранная позиция не является товаром"));
        return EContext::Stop;
    }
    const auto reasons = Singleton<DictionariesDao>::instance()->getBackReasons(document->getBackReasonDictionaryKind());
    QStringList names;
    for (const auto &reason : reasons)
        names << reason.name;
    const int chosen = MockFactory<Dialog>::create()->showChoice(
        tr::Tr(QStringLiteral("fakePositionBackReason"), QStringLiteral("Выберите причину возврата для товара")), names);
    if (chosen >= 0)
        position->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), reasons.at(chosen).code);
    return EContext::Continue;
}

EContext::Result FakeBackPlugin::beforeClose(const control::Action &)
{
    // A document the plug-in has answered for already is not sent again.
    if (getPluginData(QStringLiteral("answer")).isValid())
        return EContext::Continue;
    const QUrl url(Singleton<Config>::instance()->getString(QStringLiteral("Tessaro:url")) + QStringLiteral("/advicenote"));
    const auto client = MockFactory<RestClient>::create();
    client->setTimeout(5000);
    if (!client->post(url, QJsonDocument(QJsonObject{{QStringLiteral("document"), getDocument()->getId()}}), {})) {
        showMessage(QStringLiteral("fakeConnection"), QStringLiteral("Ошибка связи с сервером Tessaro"));
        return EContext::Stop;
    }
    setPluginData(QStringLiteral("answer"), client->lastResponse().responseObject().toVariantMap());
    MockFactory<SaveToFileLogic>::create()->save(getDocument(), {});
    const QString marker = qEnvironmentVariable("TESSARO_FAKE_KILL_MARKER");
    if (!marker.isEmpty() && !QFile::exists(marker)) {
        QFile file(marker);
        file.open(QIODevice::WriteOnly);
        file.close();
        std::raise(SIGKILL);
    }
    return EContext::Continue;
}

EContext::Result FakeBackPlugin::afterStornoAll(const control::Action &)
{
    Singleton<ActionQueueController>::instance()->addAction(
        control::Action(control::ExitToMenu, {{QStringLiteral("shutdown"), false}}), true);
    return EContext::Continue;
}

EContext::Result FakeBackPlugin::checkPayment(const control::Action &action)
{
    const int code = control::args::Payment(action).valutCode().toInt();
    for (const auto &payment : getDocument()->getMoneyItems()) {
        if ((code == 3 && payment->getValCode() == 2) || (code == 2 && payment->getValCode() == 3)) {
            showMessage(QStringLiteral("fakeConflictPayment"), QStringLiteral("В документе есть несовместимые оплаты"));
            return EContext::Stop;
        }
    }
    return EContext::Continue;
}
