#include "tillactions.h"

#include "actionlog.h"
#include "documentbuilder.h"
#include "till.h"

#include <basicloyaltysystem.h>
#include <control/args/backbysale.h>
#include <control/args/core.h>
#include <backbysaledocument.h>
#include <quantity.h>
#include <session.h>
#include <singleton.h>

namespace till {

TillActions::TillActions(Till *till, ActionLog *log)
    : m_till(till)
    , m_log(log)
{
}

QSharedPointer<AbstractDocument> TillActions::openDocument(const QString &what) const
{
    const auto document = m_till->currentDocument();
    if (!document)
        m_log->addFailure(QStringLiteral("%1: no document is open").arg(what));
    return document;
}

void TillActions::open(const QSharedPointer<AbstractDocument> &document)
{
    m_till->open(document);
}

std::optional<int> TillActions::backBySale(const QSharedPointer<AbstractDocument> &document, bool orvel)
{
    const control::Action attempt(control::AttemptToBackBySale,
                                  {{QStringLiteral("document"), QVariant::fromValue(document)}});
    const EContext::Result allowed = m_till->run(attempt, EContext::Document);
    if (allowed == EContext::Stop)
        return allowed;
    const control::Action action(control::BackBySale, {{QStringLiteral("document"), QVariant::fromValue(document)},
                                                       {QStringLiteral("orvel"), orvel}});
    if (const auto *backBySale = qobject_cast<const BackBySaleDocument *>(document.data()); backBySale && !orvel)
        control::args::BackBySale(action).setIdentifier(backBySale->getSaleIdentifier());
    return m_till->run(action, EContext::Document);
}

std::optional<int> TillActions::input()
{
    if (!openDocument(QStringLiteral("input")))
        return std::nullopt;
    return m_till->run(control::Action(control::Input, {}), EContext::Document);
}

bool TillActions::card(const QString &number)
{
    const auto document = openDocument(QStringLiteral("card"));
    if (!document)
        return false;
    auto card = QSharedPointer<DocumentCardRecord>::create(m_till->cardType(), number);
    if (m_till->loyaltySystem())
        m_till->loyaltySystem()->identifyByCard(card, ECardNumberType::Typed);
    document->addCardRecord(card);
    m_till->save(document);
    return true;
}

std::optional<int> TillActions::coupon(const QString &number)
{
    if (!openDocument(QStringLiteral("coupon")))
        return std::nullopt;
    return m_till->run(control::Action(control::AddCoupon, {{QStringLiteral("coupon"), number}}), EContext::Document);
}

std::optional<int> TillActions::add(const PositionSpec &position, std::optional<double> quantity, std::optional<double> price)
{
    if (!openDocument(QStringLiteral("add")))
        return std::nullopt;
    ModifiersContainer &modifiers = Singleton<Session>::instance()->getModifiers();
    modifiers.clear();
    if (quantity)
        modifiers.setValue(modifiers::Quantity, QVariant::fromValue(Quantity(*quantity)));
    if (price)
        modifiers.setValue(modifiers::Price, *price);
    const control::Action action(control::AddPosition, {});
    control::args::Core(action).setPosition(DocumentBuilder::position(position, 0));
    const EContext::Result result = m_till->run(action, EContext::Document);
    // A refused position leaves nothing typed for the next one.
    modifiers.clear();
    return result;
}

std::optional<int> TillActions::reason(bool forDocument, int positionNumber)
{
    if (!openDocument(QStringLiteral("reason")))
        return std::nullopt;
    control::Action::Arguments arguments;
    if (forDocument) {
        arguments.insert(QStringLiteral("target"), QStringLiteral("document"));
    } else {
        // As when the cashier picks the position in the document's list.
        arguments.insert(QStringLiteral("target"), QStringLiteral("position"));
        arguments.insert(QStringLiteral("positionNumber"), positionNumber);
        arguments.insert(QStringLiteral("kind"), 1);
    }
    return m_till->run(control::Action(control::SelectBackReason, arguments), EContext::Document);
}

std::optional<int> TillActions::pay(const PaymentSpec &payment)
{
    if (!openDocument(QStringLiteral("pay")))
        return std::nullopt;
    const control::Action action(control::AddPayment, {{QStringLiteral("valutCode"), QString::number(payment.code)},
                                                       {QStringLiteral("amount"), payment.amount},
                                                       {QStringLiteral("change"), payment.change},
                                                       {QStringLiteral("details"), payment.details}});
    return m_till->run(action, EContext::Payment);
}

std::optional<int> TillActions::stornoAll()
{
    if (!openDocument(QStringLiteral("stornoAll")))
        return std::nullopt;
    return m_till->run(control::Action(control::StornoAll, {}), EContext::Document);
}

std::optional<int> TillActions::close(bool hostRefuses)
{
    if (!openDocument(QStringLiteral("close")))
        return std::nullopt;
    return m_till->run(control::Action(control::AttemptToDocumentClose, {{QStringLiteral("hostRefuses"), hostRefuses}}),
                       EContext::Payment);
}

} // namespace till
