#include "scenariorunner.h"

#include "actionlog.h"
#include "actionplayer.h"
#include "cashierscript.h"
#include "documentsnapshot.h"
#include "expectationchecker.h"
#include "runprogress.h"
#include "till.h"
#include "tillactions.h"

#include "secrets/secretmask.h"

#include <config.h>
#include <documentsdao.h>
#include <session.h>
#include <singleton.h>

#include <QJsonDocument>

namespace till {

namespace {

bool isEmpty(const ActionRecord &record)
{
    return record.steps.isEmpty() && record.dialogs.isEmpty() && record.requests.isEmpty() && record.failures.isEmpty();
}

} // namespace

ScenarioRunner::ScenarioRunner(const TillDataFolder &folder, const Scenario &scenario, const QByteArray &source, const QString &file)
    : m_folder(folder)
    , m_scenario(scenario)
    , m_source(source)
    , m_file(file)
{
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
        if (const auto named = till->documents().find(ActionPlayer::documentId(m_run, it.key())))
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

    ActionPlayer player(m_scenario, m_run, &till, &actions, &log);
    if (options.restartProcess) {
        // The progress is saved first: the new process goes on after the restart.
        player.setRestart([&](QString *why) {
            log.addNote(QStringLiteral("the till process is replaced"));
            const ActionRecord record = log.current();
            progress.recordAction(record, script.position());
            if (!progress.save(why))
                return false;
            tell(record);
            options.restartProcess();
            *why = QStringLiteral("the till process could not be replaced");
            return false;
        });
    }
    for (int i = progress.done(); i < count; ++i) {
        const ScenarioAction &action = m_scenario.actions.at(i);
        const bool resuming = progress.isResumed() && i == progress.done() && i > 0;
        ActionPlayer::Played played = player.play(action, i, resuming);
        if (!played.restarted) {
            if (error)
                *error = played.restartError;
            return false;
        }
        ActionRecord &record = played.record;
        record.failures << script.takeProblems();
        record.failures << ExpectationChecker::check(action.expect, observe(action.expect, {record}, played.document, &till));
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
        if (const auto document = till.documents().find(ActionPlayer::documentId(m_run, described.name)))
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
