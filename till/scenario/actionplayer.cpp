#include "actionplayer.h"

#include "actionlog.h"
#include "documentbuilder.h"
#include "till.h"
#include "tillactions.h"

#include <basicexception.h>
#include <currenttime.h>
#include <mockfactory.h>

#include <exception>

namespace till {

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 12);
}

QString reachedTheHost(const QString &what)
{
    return QStringLiteral("an exception reached the host: %1").arg(what);
}

} // namespace

ActionPlayer::ActionPlayer(const Scenario &scenario, int run, Till *till, TillActions *actions, ActionLog *log)
    : m_scenario(scenario)
    , m_run(run)
    , m_till(till)
    , m_actions(actions)
    , m_log(log)
{
}

ActionPlayer::Played ActionPlayer::play(const ScenarioAction &action, int index, bool resuming, const QString &titled)
{
    Played played;
    m_log->begin(index, ScenarioAction::typeName(action.type), titled.isEmpty() ? title(action) : titled);
    // The host catches what a plug-in lets through, so that the till goes on.
    try {
        perform(action, index, resuming, &played);
    } catch (const BasicException &exception) {
        played.exception = reachedTheHost(exception.tr().text());
    } catch (const std::exception &exception) {
        played.exception = reachedTheHost(QString::fromUtf8(exception.what()));
    }
    if (!played.exception.isEmpty())
        m_log->addFailure(played.exception);
    played.record = m_log->finish();
    return played;
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

QSharedPointer<AbstractDocument> ActionPlayer::scenarioDocument(const QString &name) const
{
    const QString id = documentId(m_run, name);
    if (const auto known = m_till->documents().find(id))
        return known;
    const DocumentBuilder builder(m_till->cardType(), m_till->settings().store);
    return builder.document(*m_scenario.document(name), id, MockFactory<CurrentTime>::create()->now());
}

void ActionPlayer::perform(const ScenarioAction &action, int index, bool resuming, Played *played)
{
    QSharedPointer<AbstractDocument> document = m_till->currentDocument();
    std::optional<int> result;
    switch (action.type) {
    case ScenarioAction::Bind:
        document = scenarioDocument(action.document);
        m_actions->open(document);
        break;
    case ScenarioAction::BackBySale:
        document = scenarioDocument(action.document);
        result = m_actions->backBySale(document, action.orvel);
        break;
    case ScenarioAction::Input:
        result = m_actions->input();
        break;
    case ScenarioAction::Card:
        m_actions->card(action.number);
        break;
    case ScenarioAction::Coupon:
        result = m_actions->coupon(action.number);
        break;
    case ScenarioAction::Add:
        result = m_actions->add(action.position, action.quantity, action.price);
        break;
    case ScenarioAction::Reason:
        result = m_actions->reason(action.reasonForDocument, action.positionNumber);
        break;
    case ScenarioAction::Pay:
        result = m_actions->pay(action.payment);
        break;
    case ScenarioAction::StornoAll:
        result = m_actions->stornoAll();
        break;
    case ScenarioAction::Close: {
        // A till stopped right after closing has nothing left to close.
        const auto previous = m_till->documents().find(documentId(m_run, documentNameBefore(index)));
        if (resuming && !document && previous && previous->isClosed()) {
            m_log->addNote(QStringLiteral("the document was closed before the till stopped"));
            document = previous;
            result = EContext::Continue;
        } else {
            result = m_actions->close(action.hostRefuses);
        }
        break;
    }
    case ScenarioAction::Restart:
        played->restarted = m_restart ? m_restart(&played->restartError) : m_till->restart(&played->restartError);
        if (!played->restarted)
            m_log->addFailure(played->restartError);
        break;
    }
    if (result)
        m_log->setResult(*result);
    played->document = document;
}

} // namespace till
