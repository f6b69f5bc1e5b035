#include "scenariorunner.h"

#include "actionlog.h"
#include "cashierscript.h"
#include "documentbuilder.h"
#include "documentsnapshot.h"
#include "expectationchecker.h"
#include "runprogress.h"
#include "till.h"
#include "tillactions.h"

#include "secrets/secretmask.h"

#include <config.h>
#include <currenttime.h>
#include <documentsdao.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>

#include <QJsonDocument>

namespace till {

namespace {

bool isEmpty(const ActionRecord &record)
{
    return record.steps.isEmpty() && record.dialogs.isEmpty() && record.requests.isEmpty() && record.failures.isEmpty();
}

QString number(double value)
{
    return QString::number(value, 'g', 12);
}

} // namespace

ScenarioRunner::ScenarioRunner(const TillDataFolder &folder, const Scenario &scenario, const QByteArray &source, const QString &file)
    : m_folder(folder)
    , m_scenario(scenario)
    , m_source(source)
    , m_file(file)
{
}

QString ScenarioRunner::documentId(int run, const QString &name)
{
    return QStringLiteral("run%1-%2").arg(run, 4, 10, QLatin1Char('0')).arg(name);
}

QString ScenarioRunner::title(const ScenarioAction &action)
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

QString ScenarioRunner::documentNameBefore(int index) const
{
    for (int i = index - 1; i >= 0; --i) {
        const ScenarioAction &action = m_scenario.actions.at(i);
        if (action.type == ScenarioAction::Bind || action.type == ScenarioAction::BackBySale)
            return action.document;
    }
    return QString();
}

QSharedPointer<AbstractDocument> ScenarioRunner::scenarioDocument(const QString &name, Till *till) const
{
    const QString id = documentId(m_run, name);
    if (const auto known = till->documents().find(id))
        return known;
    const DocumentBuilder builder(till->cardType(), till->settings().store);
    return builder.document(*m_scenario.document(name), id, MockFactory<CurrentTime>::create()->now());
}

QSharedPointer<AbstractDocument> ScenarioRunner::perform(const ScenarioAction &action, int index, bool resuming, Till *till,
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

Observation ScenarioRunner::observe(const Expectation &expectation, const QList<ActionRecord> &records,
                                    const QSharedPointer<AbstractDocument> &document, Till *till) const
{
    Observation observation;
    if (records.size() == 1)
        observation.result = records.first().result;
    for (const ActionRecord &record : records) {
        for (const DialogRecord &dialog : record.dialogs)
            observation.dialogIds << dialog.id;
        for (const RequestRecord &request : record.requests)
            observation.requestPaths << request.path;
    }
    const int system = till->cardType();
    if (document)
        observation.document = DocumentSnapshot::toJson(*document, system);
    for (auto it = expectation.documents.cbegin(); it != expectation.documents.cend(); ++it) {
        if (const auto named = till->documents().find(documentId(m_run, it.key())))
            observation.documents.insert(it.key(), DocumentSnapshot::toJson(*named, system));
    }
    const int shift = Singleton<Session>::instance()->getCurrentShift();
    const auto *store = Singleton<DocumentsDao>::instance();
    for (const StorageItem &item : store->getStorageItems(shift)) {
        const QJsonDocument json = QJsonDocument::fromJson(item.getValue().toUtf8());
        observation.storage.insert(item.getName(), json.isObject() ? QJsonValue(json.object()) : QJsonValue(item.getValue()));
    }
    for (auto it = expectation.paymentTotals.cbegin(); it != expectation.paymentTotals.cend(); ++it)
        observation.paymentTotals.insert(it.key(), store->getPaymentTotal(it.key(), shift).toDouble());
    return observation;
}

bool ScenarioRunner::run(const Options &options, Report *report, QString *error)
{
    // Nothing is written into a folder that holds no till.
    if (!m_folder.readSettings(error))
        return false;
    RunProgress progress(m_folder.progressDir(), m_source);
    if (options.again)
        progress.clear();
    else if (!progress.load(error))
        return false;
    if (!progress.isResumed()) {
        TillState state(m_folder.stateFile());
        if (!state.load(error))
            return false;
        const int run = state.takeRunNumber(error);
        if (run == 0)
            return false;
        progress.setRun(run);
    }
    m_run = progress.run();

    CashierScript script(m_scenario.answers);
    script.setPosition(progress.answers());
    ActionLog log;
    Till till(m_folder, &script, &log);
    till.setRecorder(options.recorder);
    till.setStrictHost(options.strictHost);
    if (options.killAfterHook)
        till.setKillAfterHook(*options.killAfterHook);
    TillActions actions(&till, &log);
    const int count = int(m_scenario.actions.size());
    const auto tell = [&options, count](const ActionRecord &record) {
        if (options.onRecord)
            options.onRecord(record, count);
    };

    log.begin(progress.done(), QStringLiteral("start"),
              progress.isResumed() ? QStringLiteral("the till starts again") : QStringLiteral("the till starts"));
    if (!till.start(options.pluginFolder, m_scenario.till, error))
        return false;
    ActionRecord started = log.finish();
    started.failures << script.takeProblems();
    if (!isEmpty(started)) {
        progress.recordEvent(started);
        tell(started);
    }
    if (!progress.save(error))
        return false;

    for (int i = progress.done(); i < count; ++i) {
        const ScenarioAction &action = m_scenario.actions.at(i);
        const bool resuming = progress.isResumed() && i == progress.done() && i > 0;
        log.begin(i, ScenarioAction::typeName(action.type), title(action));
        const QSharedPointer<AbstractDocument> document = perform(action, i, resuming, &till, &actions, &log);
        if (action.type == ScenarioAction::Restart) {
            if (options.restartProcess) {
                log.addNote(QStringLiteral("the till process is replaced"));
                ActionRecord record = log.current();
                progress.recordAction(record, script.position());
                if (!progress.save(error))
                    return false;
                tell(record);
                options.restartProcess();
                if (error)
                    *error = QStringLiteral("the till process could not be replaced");
                return false;
            }
            if (!till.restart(error))
                return false;
        }
        ActionRecord record = log.finish();
        record.failures << script.takeProblems();
        record.failures << ExpectationChecker::check(action.expect, observe(action.expect, {record}, document, &till));
        progress.recordAction(record, script.position());
        if (!progress.save(error))
            return false;
        tell(record);
    }

    report->scenario = m_scenario.name;
    report->file = m_file;
    report->dataFolder = m_folder.path();
    report->plugin = till.plugin().fileName();
    report->service = SecretMask().url(QUrl(Singleton<Config>::instance()->getString(QStringLiteral("Tessaro:url"))));
    report->actionCount = count;
    report->actions = progress.records();
    const int system = till.cardType();
    for (const DocumentSpec &described : m_scenario.documents) {
        if (const auto document = till.documents().find(documentId(m_run, described.name)))
            report->documents.insert(described.name, DocumentSnapshot::toJson(*document, system));
    }
    report->failures = ExpectationChecker::check(m_scenario.expect, observe(m_scenario.expect, report->actions, {}, &till));
    if (script.remaining() > 0)
        report->failures << QStringLiteral("%1 cashier answer(s) were not used, from answers[%2] on")
                                .arg(script.remaining())
                                .arg(script.position());
    progress.finish();
    return progress.save(error);
}

} // namespace till
