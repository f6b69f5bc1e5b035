#include "hostactions.h"

#include "actionlog.h"
#include "cashier.h"
#include "documentbuilder.h"
#include "till.h"

#include <backbysaledocument.h>
#include <control/args/backbysale.h>
#include <control/args/core.h>
#include <control/args/payment.h>
#include <dialog.h>
#include <documentlogic.h>
#include <documentsdao.h>
#include <mockfactory.h>
#include <quantity.h>
#include <session.h>
#include <singleton.h>

namespace till {

namespace {

ModifiersContainer &modifiers()
{
    return Singleton<Session>::instance()->getModifiers();
}

} // namespace

HostActions::HostActions(Till *till, Cashier *cashier, ActionLog *log)
    : m_till(till)
    , m_cashier(cashier)
    , m_log(log)
{
}

void HostActions::install(ActionPipeline *pipeline)
{
    const auto bind = [this](EContext::Result (HostActions::*member)(const control::Action &)) {
        return [this, member](const control::Action &action) { return (this->*member)(action); };
    };
    pipeline->setHostAction(control::AddPosition, bind(&HostActions::addPosition));
    pipeline->setHostAction(control::InputQuantity, bind(&HostActions::inputQuantity));
    pipeline->setHostAction(control::InputPrice, bind(&HostActions::inputPrice));
    pipeline->setHostAction(control::AddPayment, bind(&HostActions::addPayment));
    pipeline->setHostAction(control::StornoAll, bind(&HostActions::stornoAll));
    pipeline->setHostAction(control::BackBySale, bind(&HostActions::backBySale));
    pipeline->setHostAction(control::SelectBackReason, bind(&HostActions::selectBackReason));
    pipeline->setHostAction(control::ExitToMenu, bind(&HostActions::exitToMenu));
    pipeline->setHostAction(control::AttemptToDocumentClose, bind(&HostActions::closeDocument));
}

EContext::Result HostActions::addPosition(const control::Action &action)
{
    const auto document = m_till->currentDocument();
    const auto position = control::args::Core(action).getPosition();
    if (!document || !position)
        return EContext::Stop;
    // Values typed before the position was entered belong to it.
    if (modifiers().isSet(modifiers::Quantity))
        position->setBquant(modifiers().getValue(modifiers::Quantity).value<Quantity>().value());
    if (modifiers().isSet(modifiers::Price))
        position->setPrice(modifiers().getValue(modifiers::Price).toDouble());
    modifiers().clear();
    position->setSumb(position->getQuantity() * position->getPrice());
    if (position->getPosnum() == 0) {
        int last = 0;
        for (const auto &item : document->getGoodsItems())
            last = qMax(last, item->getPosnum());
        position->setPosnum(last + 1);
    }
    document->addGoodsItem(position);
    m_till->hostChanged(document);
    return EContext::Continue;
}

EContext::Result HostActions::inputQuantity(const control::Action &)
{
    const std::optional<double> quantity = m_cashier->enter(Cashier::Quantity);
    m_log->addDialog({QStringLiteral("quantity"), QStringLiteral("inputQuantity"), QStringLiteral("Введите количество"),
                      {}, quantity ? QJsonValue(*quantity) : QJsonValue(QJsonValue::Null)});
    if (!quantity)
        return EContext::Stop;
    modifiers().setValue(modifiers::Quantity, QVariant::fromValue(Quantity(*quantity)));
    return EContext::Continue;
}

EContext::Result HostActions::inputPrice(const control::Action &)
{
    const std::optional<double> price = m_cashier->enter(Cashier::Price);
    m_log->addDialog({QStringLiteral("price"), QStringLiteral("inputPrice"), QStringLiteral("Введите цену"), {},
                      price ? QJsonValue(*price) : QJsonValue(QJsonValue::Null)});
    if (!price)
        return EContext::Stop;
    modifiers().setValue(modifiers::Price, *price);
    return EContext::Continue;
}

EContext::Result HostActions::addPayment(const control::Action &action)
{
    const auto document = m_till->currentDocument();
    if (!document)
        return EContext::Stop;
    const control::args::Payment payment(action);
    PaymentSpec described;
    described.code = payment.valutCode().toInt();
    described.amount = payment.amount();
    described.change = action.value(QStringLiteral("change")).toBool();
    described.details = action.value(QStringLiteral("details")).toMap();
    document->addMoneyItem(DocumentBuilder::payment(described));
    m_till->hostChanged(document);
    return EContext::Continue;
}

EContext::Result HostActions::stornoAll(const control::Action &)
{
    const auto document = m_till->currentDocument();
    if (!document)
        return EContext::Stop;
    document->removeGoodsItems();
    m_till->hostChanged(document);
    return EContext::Continue;
}

EContext::Result HostActions::backBySale(const control::Action &action)
{
    const auto document = action.value(QStringLiteral("document")).value<QSharedPointer<AbstractDocument>>();
    if (!document)
        return EContext::Stop;
    const QString identifier = control::args::BackBySale(action).identifier();
    if (auto *backBySale = qobject_cast<BackBySaleDocument *>(document.data()); backBySale && !identifier.isEmpty())
        backBySale->setSaleIdentifier(identifier);
    m_till->open(document);
    return EContext::Continue;
}

EContext::Result HostActions::selectBackReason(const control::Action &action)
{
    const auto document = m_till->currentDocument();
    if (!document)
        return EContext::Stop;
    if (action.value(QStringLiteral("target")).toString() == QLatin1String("document")
        && MockFactory<DocumentLogic>::create()->chooseCommonBackReason(document, {}))
        m_till->hostChanged(document);
    return EContext::Continue;
}

EContext::Result HostActions::exitToMenu(const control::Action &)
{
    m_till->showMenu();
    return EContext::Continue;
}

EContext::Result HostActions::closeDocument(const control::Action &action)
{
    const auto document = m_till->currentDocument();
    if (!document)
        return EContext::Stop;
    if (action.value(QStringLiteral("hostRefuses")).toBool()) {
        MockFactory<Dialog>::create()->showMessage(
            tr::Tr(QStringLiteral("tillPrinterError"), QStringLiteral("Ошибка принтера: документ не закрыт")), Dialog::Error, 0);
        return EContext::Stop;
    }
    document->setClosed(true);
    const QString failure = storeClosed(document);
    if (!failure.isEmpty()) {
        document->setClosed(false);
        m_till->storeFailed(failure);
        return EContext::Stop;
    }
    m_till->closeCurrent();
    return EContext::Continue;
}

QString HostActions::storeClosed(const QSharedPointer<AbstractDocument> &document)
{
    // The payments count in the shift's totals exactly when the closed
    // document is on disk: both are stored, or neither.
    auto *store = Singleton<DocumentsDao>::instance();
    const auto recordFailed = [store] {
        return QStringLiteral("the payments could not be recorded in %1: %2").arg(store->databaseFile(), store->lastError());
    };
    if (!store->transaction())
        return recordFailed();
    const int shift = Singleton<Session>::instance()->getCurrentShift();
    for (const auto &payment : document->getMoneyItems()) {
        if (!store->addPayment(shift, payment->getValCode(), payment->isChange() ? -payment->getAmount() : payment->getAmount())) {
            const QString failure = recordFailed();
            store->rollback();
            return failure;
        }
    }
    if (!m_till->documents().save(document)) {
        store->rollback();
        return QStringLiteral("the closed document %1 could not be written").arg(document->getId());
    }
    if (!store->commit()) {
        const QString failure = recordFailed();
        store->rollback();
        // The file says closed already: it is written again as it stays, open.
        document->setClosed(false);
        m_till->documents().save(document);
        return failure;
    }
    return QString();
}

} // namespace till
