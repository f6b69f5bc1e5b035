#include "actionplayer.h"

#include "actionlog.h"
#include "documentbuilder.h"
#include "till.h"
#include "tillactions.h"

#include <currenttime.h>
#include <mockfactory.h>

namespace till {

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 12);
}

} // namespace

ActionPlayer::ActionPlayer(const Scenario &scenario, int run)
    : m_scenario(scenario)
    , m_run(run)
{
}

QString ActionPlayer::documentId(int run, const QString &name)
{
    return QStringLiteral("run%1-%2").arg(run, 4, 10, QLatin1Char('0')).arg(name);
}

QString ActionPlayer::title(const ScenarioAction &action)
{
    QString text;
    switch (action.type) {
    case ScenarioAction::Bind:
        text = QStringLiteral("open %1").arg(action.document);
        break;
    case ScenarioAction::BackBySale:
        text = QStringLiteral("return by sale %1%2").arg(action.document, action.orvel ? QStringLiteral(" (invoice asked)") : QString());
        break;
    case ScenarioAction::Input:
        text = QStringLiteral("input");
        break;
    case ScenarioAction::Card:
        text = QStringLiteral("card %1").arg(action.number);
        break;
    case ScenarioAction::Coupon:
        text = QStringLiteral("coupon %1").arg(action.number);
        break;
    case ScenarioAction::Add:
        text = QStringLiteral("add %1").arg(action.position.code);
        if (action.quantity)
            text += QStringLiteral(" ×%1").arg(number(*action.quantity));
        if (action.price)
            text += QStringLiteral(" at %1").arg(number(*action.price));
        break;
    case ScenarioAction::Reason:
        text = action.reasonForDocument ? QStringLiteral("reason for the document")
                                        : QStringLiteral("reason for position %1").arg(action.positionNumber);
        break;
    case ScenarioAction::Pay:
        text = QStringLiteral("pay %1 in currency %2").arg(number(action.payment.amount)).arg(action.payment.code);
        break;
    case ScenarioAction::StornoAll:
        text = QStringLiteral("cancel every position");
        break;
    case ScenarioAction::Close:
        text = action.hostRefuses ? QStringLiteral("close the document (the printer fails)") : QStringLiteral("close the document");
        break;
    case ScenarioAction::Restart:
        text = QStringLiteral("restart the till");
        break;
    }
    return action.note.isEmpty() ? text : QStringLiteral("%1 (%2)").arg(action.note, text);
}

QString ActionPlayer::documentNameBefore(int index) const
{
    for (int i = index - 1; i >= 0; --i) {
        const ScenarioAction &action = m_scenario.actions.at(i);
        if (action.type == ScenarioAction::Bind || action.type == ScenarioAction::BackBySale)
            return action.document;
    }
    return QString();
}

QSharedPointer<AbstractDocument> ActionPlayer::scenarioDocument(const QString &name, Till *till) const
{
    const QString id = documentId(m_run, name);
    if (const auto known = till->documents().find(id))
        return known;
    const DocumentBuilder builder(till->cardType(), till->settings().store);
    return builder.document(*m_scenario.document(name), id, MockFactory<CurrentTime>::create()->now());
}

QSharedPointer<AbstractDocument> ActionPlayer::perform(const ScenarioAction &action, int index, bool resuming, Till *till,
                                                         TillActions *actions, ActionLog *log)
{
    QSharedPointer<AbstractDocument> document = till->currentDocument();
    std::optional<int> result;
    switch (action.type) {
    case ScenarioAction::Bind:
        document = scenarioDocument(action.document, till);
        actions->open(document);
        break;
    case ScenarioAction::BackBySale:
        document = scenarioDocument(action.document, till);
        result = actions->backBySale(document, action.orvel);
        break;
    case ScenarioAction::Input:
        result = actions->input();
        break;
    case ScenarioAction::Card:
        actions->card(action.number);
        break;
    case ScenarioAction::Coupon:
        result = actions->coupon(action.number);
        break;
    case ScenarioAction::Add:
        result = actions->add(action.position, action.quantity, action.price);
        break;
    case ScenarioAction::Reason:
        result = actions->reason(action.reasonForDocument, action.positionNumber);
        break;
    case ScenarioAction::Pay:
        result = actions->pay(action.payment);
        break;
    case ScenarioAction::StornoAll:
        result = actions->stornoAll();
        break;
    case ScenarioAction::Close: {
        // A till stopped right after closing has nothing left to close.
        const auto previous = till->documents().find(documentId(m_run, documentNameBefore(index)));
        if (resuming && !document && previous && previous->isClosed()) {
            log->addNote(QStringLiteral("the document was closed before the till stopped"));
            document = previous;
            result = EContext::Continue;
        } else {
            result = actions->close(action.hostRefuses);
        }
        break;
    }
    case ScenarioAction::Restart:
        break;
    }
    if (result)
        log->setResult(*result);
    return document;
}

} // namespace till
