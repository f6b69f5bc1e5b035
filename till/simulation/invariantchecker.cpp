#include "invariantchecker.h"

#include "jsonfile.h"
#include "till.h"

#include "secrets/secretmask.h"

#include <basicloyaltysystem.h>
#include <control/eactiontype.h>
#include <documentsdao.h>
#include <documentserializer.h>
#include <emulator/emulator.h>
#include <emulator/journal.h>
#include <emulator/journalentry.h>
#include <session.h>
#include <singleton.h>

#include <QDir>
#include <QJsonDocument>

#include <algorithm>

namespace till {

namespace {

/// Room for the till's own work around the requests (sanitizer builds are slow).
constexpr qint64 marginMs = 3000;

QJsonObject pluginDataOf(const QSharedPointer<AbstractDocument> &document, int system)
{
    return document ? QJsonObject::fromVariantMap(document->pluginData().value(system)) : QJsonObject();
}

bool endsWith(const RequestRecord &request, const char *path)
{
    return request.path.endsWith(QLatin1String(path));
}

/// Whether the till got an answer it can use from \a request.
bool usableAnswer(const RequestRecord &request)
{
    return !request.networkError && request.httpCode == 200 && request.responseBody.isObject()
        && !request.responseBody.toObject().isEmpty();
}

/// Whether the plug-in takes \a answer to a till opening as the till open at
/// the service: a success, or the shift already open. The status text
/// decides the latter whatever the HTTP status, as it does in the plug-in.
bool opensTill(int httpStatus, const QJsonObject &answer)
{
    const QString status = answer.value(QStringLiteral("status")).toString();
    return (httpStatus == 200 && !answer.isEmpty()) || status == QLatin1String("The shift is already opened")
        || status == QLatin1String("The shift is already open");
}

/// Whether \a data holds one of the invoice numbers in \a given as "invoiceIDRaw", and it without '/' as "invoiceID".
bool holdsGivenInvoice(const QJsonObject &data, const QSet<QString> &given)
{
    const QString raw = data.value(QStringLiteral("invoiceIDRaw")).toString();
    return !raw.isEmpty() && given.contains(raw) && data.value(QStringLiteral("invoiceID")).toString() == QString(raw).remove(QLatin1Char('/'));
}

QString compact(const QJsonObject &json)
{
    return QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

bool hasTillOpenRecord(const QList<StorageItem> &items)
{
    return std::any_of(items.cbegin(), items.cend(), [](const StorageItem &item) { return item.getName() == QLatin1String("tillOpen"); });
}

} // namespace

bool InvariantChecker::answerReceived(const tessaro::emulator::JournalEntry &entry)
{
    const bool broken = entry.fault == QLatin1String("truncated-json") || entry.fault == QLatin1String("malformed-json")
        || entry.fault == QLatin1String("empty-body");
    return entry.outcome == tessaro::emulator::JournalEntry::Outcome::Answered && !broken;
}

InvariantChecker::InvariantChecker(tessaro::emulator::Emulator *emulator, int timeoutMs, const QStringList &secrets)
    : m_emulator(emulator)
    , m_timeoutMs(timeoutMs)
    , m_secrets(secrets)
{
}

qint64 InvariantChecker::bound(int requests, int timeoutMs)
{
    return qint64(requests) * timeoutMs + marginMs;
}

int InvariantChecker::maxRequests(ScenarioAction::Type type)
{
    // Closing: the advice note, the till opening and the advice note again,
    // each with a token request and one repeat after a token error.
    return type == ScenarioAction::Close ? 9 : 0;
}

void InvariantChecker::check(bool holds, const QString &invariant, const QString &detail)
{
    ++m_checked;
    if (!holds)
        addViolation(invariant, detail);
}

void InvariantChecker::addViolation(const QString &invariant, const QString &detail)
{
    m_violations << Violation{invariant, detail};
}

void InvariantChecker::beforeStep(Till *till)
{
    const auto document = till->currentDocument();
    m_documentId = document ? document->getId() : QString();
    m_pluginDataBefore = pluginDataOf(document, till->cardType());
}

void InvariantChecker::afterStep(const ScenarioAction &action, const ActionRecord &record, Till *till, qint64 elapsedMs,
                                 const QStringList &logLines)
{
    const qint64 limit = bound(maxRequests(action.type), m_timeoutMs);
    check(elapsedMs <= limit, QStringLiteral("hook-time-bound"),
          QStringLiteral("%1 took %2 ms, more than its bound of %3 ms").arg(record.title).arg(elapsedMs).arg(limit));
    checkAdviceNotes(record);
    if (action.type == ScenarioAction::Close)
        checkClose(record, till);
    checkShiftRecord(record);
    checkMessages(record);
    checkLog(record, logLines);
}

InvariantChecker::NoteHistory &InvariantChecker::history(const QJsonObject &body)
{
    QList<NoteHistory> &notes = m_notes[m_documentId];
    for (NoteHistory &note : notes) {
        if (note.body == body)
            return note;
    }
    notes << NoteHistory{body, 0, false};
    return notes.last();
}

void InvariantChecker::checkAdviceNotes(const ActionRecord &record)
{
    const QList<tessaro::emulator::AdviceNoteBook::Note> all = m_emulator->state().adviceNotes.notes();
    QList<tessaro::emulator::AdviceNoteBook::Note> fresh = all.mid(m_notesSeen);
    m_notesSeen = int(all.size());
    for (const RequestRecord &request : record.requests) {
        if (!endsWith(request, "/advicenote"))
            continue;
        const QJsonObject body = request.requestBody.toObject();
        const bool resent = m_stored.contains(m_documentId) && m_stored.value(m_documentId) == body;
        check(!resent, QStringLiteral("advice-note-not-resent"),
              QStringLiteral("%1: the advice note of %2 was sent again unchanged although its answer was stored")
                  .arg(record.title, m_documentId));
        NoteHistory &note = history(body);
        bool applied = false;
        for (auto it = fresh.begin(); it != fresh.end(); ++it) {
            if (it->body == body) {
                fresh.erase(it);
                applied = true;
                break;
            }
        }
        if (applied) {
            // A second application is the protocol's blind spot only when no earlier answer arrived.
            // The document keeps one answer: once another contents' answer replaced this one's,
            // the close sends these contents again by rule, and that is no second application.
            if (note.applications > 0 && !note.received)
                ++m_lostAnswers;
            else if (note.applications > 0 && resent)
                check(false, QStringLiteral("advice-note-applied-once"),
                      QStringLiteral("%1: the advice note of %2 was applied again although the till had its answer")
                          .arg(record.title, m_documentId));
            ++note.applications;
        }
        if (usableAnswer(request) && request.responseBody.toObject().contains(QStringLiteral("Key4"))) {
            note.received = true;
            m_stored.insert(m_documentId, body);
        }
    }
    check(fresh.isEmpty(), QStringLiteral("advice-note-applied-once"),
          QStringLiteral("%1: the service applied %2 advice note(s) the till did not send").arg(record.title).arg(fresh.size()));
}

void InvariantChecker::checkClose(const ActionRecord &record, Till *till)
{
    std::optional<int> hook;
    for (const HookStep &step : record.steps) {
        if (step.kind == QLatin1String("before") && step.actionType == int(control::AttemptToDocumentClose) && step.triggerId != 0)
            hook = step.result;
    }
    const auto document = till->documents().find(m_documentId);
    if (!hook || !document)
        return;
    const QJsonObject data = pluginDataOf(document, till->cardType());
    if (*hook == 0) {
        check(data == m_pluginDataBefore, QStringLiteral("refused-close-keeps-data"),
              QStringLiteral("%1: the refused close changed the plug-in data of %2 from %3 to %4")
                  .arg(record.title, m_documentId, compact(m_pluginDataBefore), compact(data)));
        return;
    }
    if (*hook != 2 || (document->getType() != 2 && document->getType() != 25))
        return;
    const bool stored = data.value(QStringLiteral("adviceNoteResponse")).isObject()
        && !data.value(QStringLiteral("adviceNoteResponse")).toObject().isEmpty();
    check(holdsGivenInvoice(data, serviceInvoices()) && stored, QStringLiteral("close-stores-invoice"),
          QStringLiteral("%1: the close of %2 went on, but its plug-in data %3 does not hold a Key4 the service gave")
              .arg(record.title, m_documentId, compact(data)));
}

void InvariantChecker::checkShiftRecord(const ActionRecord &record)
{
    for (const RequestRecord &request : record.requests) {
        if (endsWith(request, "/till/open") && !request.networkError && request.responseBody.isObject()
            && opensTill(request.httpCode, request.responseBody.toObject()))
            m_tillOpened = true;
    }
    const int shift = Singleton<Session>::instance()->getCurrentShift();
    checkTillOpenRecord(hasTillOpenRecord(Singleton<DocumentsDao>::instance()->getStorageItems(shift)), record.title + QStringLiteral(": "));
}

void InvariantChecker::checkTillOpenRecord(bool present, const QString &where)
{
    check(present == m_tillOpened, QStringLiteral("till-open-record"),
          QStringLiteral("%1the shift record \"tillOpen\" is %2 although the till was %3 at the service")
              .arg(where, present ? QStringLiteral("there") : QStringLiteral("missing"),
                   m_tillOpened ? QStringLiteral("opened") : QStringLiteral("never opened")));
}

QSet<QString> InvariantChecker::serviceInvoices() const
{
    QSet<QString> keys;
    for (const auto &note : m_emulator->state().adviceNotes.notes())
        keys.insert(note.key4);
    return keys;
}

void InvariantChecker::checkMessages(const ActionRecord &record)
{
    for (const DialogRecord &dialog : record.dialogs) {
        const QString problem = m_messages.check(dialog.id, dialog.text);
        check(problem.isEmpty(), QStringLiteral("known-messages"), QStringLiteral("%1: %2").arg(record.title, problem));
    }
}

void InvariantChecker::checkLog(const ActionRecord &record, const QStringList &lines)
{
    for (const RequestRecord &request : record.requests) {
        const QString token = request.responseBody.toObject().value(QStringLiteral("access_token")).toString();
        if (!token.isEmpty() && !m_secrets.contains(token))
            m_secrets << token;
    }
    for (const QString &line : lines) {
        for (const QString &secret : std::as_const(m_secrets)) {
            // The one line that reports a fresh token may name it.
            const bool tokenLine = line.endsWith(QStringLiteral("Получен токен: ") + secret);
            // The violation itself goes to the terminal and into files: it hides the secret it found.
            check(!line.contains(secret) || tokenLine, QStringLiteral("no-secrets-in-log"),
                  QStringLiteral("%1: a log line shows a secret: %2")
                      .arg(record.title, QString(line).replace(secret, SecretMask::hidden()).left(300)));
        }
    }
}

void InvariantChecker::afterRestart(bool started, const QString &error, const QString &documentsDir)
{
    check(started, QStringLiteral("documents-load-after-kill"), QStringLiteral("the till did not start again: %1").arg(error));
    checkDocumentsLoad(documentsDir);
}

void InvariantChecker::afterKill(const QString &documentsDir)
{
    checkDocumentsLoad(documentsDir);
}

void InvariantChecker::checkDocumentsLoad(const QString &documentsDir)
{
    const QDir dir(documentsDir);
    for (const QString &name : dir.entryList({QStringLiteral("*.json")}, QDir::Files)) {
        QJsonObject json;
        QString error;
        check(JsonFile::read(dir.filePath(name), &json, &error) && DocumentSerializer::fromJson(json),
              QStringLiteral("documents-load-after-kill"), QStringLiteral("the document file %1 does not load").arg(name));
    }
}

void InvariantChecker::afterKilledRun(const QJsonObject &documents, const QString &databaseFile)
{
    QSet<QString> held;
    for (const QJsonValue &document : documents)
        held.insert(document.toObject().value(QStringLiteral("pluginData")).toObject().value(QStringLiteral("invoiceIDRaw")).toString());
    checkKilledRunsNotes(held);

    const QSet<QString> given = serviceInvoices();
    for (auto it = documents.constBegin(); it != documents.constEnd(); ++it) {
        const QJsonObject data = it.value().toObject().value(QStringLiteral("pluginData")).toObject();
        const QString raw = data.value(QStringLiteral("invoiceIDRaw")).toString();
        if (raw.isEmpty())
            continue;
        check(holdsGivenInvoice(data, given), QStringLiteral("close-stores-invoice"),
              QStringLiteral("%1 holds the invoice %2, which the service never gave").arg(it.key(), raw));
    }

    for (const tessaro::emulator::JournalEntry &entry : m_emulator->journal().entriesFor(QStringLiteral("/till/open"))) {
        if (answerReceived(entry) && opensTill(entry.status, QJsonDocument::fromJson(entry.answer).object()))
            m_tillOpened = true;
    }
    checkTillOpenRecord(hasTillOpenRecord(DocumentsDao(databaseFile).getStorageItems(1)), QString());
}

void InvariantChecker::checkKilledRunsNotes(const QSet<QString> &heldInvoices)
{
    QHash<QString, int> lost;
    for (const tessaro::emulator::JournalEntry &entry : m_emulator->journal().entriesFor(QStringLiteral("/advicenote"))) {
        if (!answerReceived(entry))
            ++lost[compact(entry.exchange.jsonObject())];
    }
    // Returns with the same contents send the same body, each once: every
    // document that holds the answer to one of a body's applications had that
    // application of its own. Beyond them a body is applied once, plus once
    // for each answer the till never got.
    QHash<QString, int> applications;
    QHash<QString, int> holders;
    for (const auto &note : m_emulator->state().adviceNotes.notes()) {
        const QString body = compact(note.body);
        ++applications[body];
        if (heldInvoices.contains(note.key4))
            ++holders[body];
    }
    for (auto it = applications.cbegin(); it != applications.cend(); ++it) {
        // The request the kill cut off was held, not applied, and is not in the finished run's records.
        const int owned = qMax(1, holders.value(it.key()));
        check(it.value() <= owned + lost.value(it.key()), QStringLiteral("advice-note-applied-once"),
              QStringLiteral("an advice note was applied %1 times for %2 return(s) with %3 lost answer(s)")
                  .arg(it.value())
                  .arg(owned)
                  .arg(lost.value(it.key())));
        m_lostAnswers += qMax(0, it.value() - owned);
    }
}

void InvariantChecker::atEnd()
{
    const int notes = int(m_emulator->state().adviceNotes.notes().size());
    check(notes == m_notesSeen, QStringLiteral("advice-note-applied-once"),
          QStringLiteral("the service applied %1 advice note(s) after the session's last step").arg(notes - m_notesSeen));
}

} // namespace till
