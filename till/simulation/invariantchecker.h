#pragma once

#include "messagetable.h"
#include "report.h"
#include "scenario.h"

#include <abstractdocument.h>

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QSet>
#include <QSharedPointer>
#include <QStringList>

namespace tessaro::emulator {
class Emulator;
class JournalEntry;
}

namespace till {

class Till;

/// Holds, after every step of a session, what must hold whatever the cashier
/// did and whatever the service did wrong, against the emulator's journal and
/// state and the till's documents and shift records:
///
/// - each action returns within its bound: the time-out times the requests
///   its hooks may make, plus a margin;
/// - a return whose close went on holds its advice note's Key4 as
///   "invoiceIDRaw" and, without '/', as "invoiceID", beside the stored
///   "adviceNoteResponse", and the service has that note; after a killed
///   till's session, every return's "invoiceIDRaw" is a Key4 the service gave;
/// - a close the plug-in refused leaves the document's plug-in data as it was;
/// - a document's advice note whose answer is stored is never sent again
///   unchanged, and a note is applied a second time only after the till never
///   received the first answer (a lost answer, counted);
/// - after a till process was killed and a new one finished its session, each
///   advice note body was applied once per return that holds one of its
///   answers, plus once per answer the till never got (counted);
/// - the shift record "tillOpen" is there exactly when a till opening succeeded:
///   the till got an answer the plug-in accepts as the till open at the
///   service (a success, or the shift already open);
/// - every document file loads after every restart and after every kill;
/// - the cashier sees only messages of the system's message table;
/// - no secret (authorization header, app secret, token) is in a log line,
///   except the one line that reports a new token.
class InvariantChecker
{
public:
    /// \a timeoutMs and \a secrets serve the checks after each step; a killed
    /// till's run is judged without them.
    explicit InvariantChecker(tessaro::emulator::Emulator *emulator, int timeoutMs = 0, const QStringList &secrets = {});

    /// Before each action: notes the open document and its plug-in data.
    void beforeStep(Till *till);
    /// After each action: \a record is what happened, \a elapsedMs how long
    /// it took, \a logLines what was logged meanwhile.
    void afterStep(const ScenarioAction &action, const ActionRecord &record, Till *till, qint64 elapsedMs,
                   const QStringList &logLines);
    /// After a restart of the till from its data folder.
    void afterRestart(bool started, const QString &error, const QString &documentsDir);
    /// After a till process was killed, before the next one starts on its documents.
    void afterKill(const QString &documentsDir);
    /// After a new till process finished the session of a killed one: \a
    /// documents are its report's documents (id to snapshot), \a databaseFile
    /// is the till's store. The killed process's records did not survive it,
    /// so the journal and state of the emulator tell what the till sent and
    /// got.
    void afterKilledRun(const QJsonObject &documents, const QString &databaseFile);
    /// After the last step.
    void atEnd();
    /// A failure found outside the checks (an exception that reached the host).
    void addViolation(const QString &invariant, const QString &detail);

    struct Violation
    {
        QString invariant;
        QString detail;
    };
    QList<Violation> violations() const { return m_violations; }
    int checked() const { return m_checked; }
    int lostAnswers() const { return m_lostAnswers; }

    /// The bound in milliseconds of an action that may send \a requests requests.
    static qint64 bound(int requests, int timeoutMs);
    /// How many requests the hooks of \a type may make at most.
    static int maxRequests(ScenarioAction::Type type);
    /// Whether the till got the whole answer to the request of \a entry; if
    /// not, the service may have applied it without the till knowing.
    static bool answerReceived(const tessaro::emulator::JournalEntry &entry);

private:
    struct NoteHistory
    {
        QJsonObject body;
        int applications = 0;
        bool received = false;
    };

    void check(bool holds, const QString &invariant, const QString &detail);
    void checkAdviceNotes(const ActionRecord &record);
    void checkClose(const ActionRecord &record, Till *till);
    void checkShiftRecord(const ActionRecord &record);
    void checkTillOpenRecord(bool present, const QString &where);
    void checkDocumentsLoad(const QString &documentsDir);
    void checkKilledRunsNotes(const QSet<QString> &heldInvoices);
    /// Every Key4 the service gave.
    QSet<QString> serviceInvoices() const;
    void checkMessages(const ActionRecord &record);
    void checkLog(const ActionRecord &record, const QStringList &lines);
    NoteHistory &history(const QJsonObject &body);

    tessaro::emulator::Emulator *m_emulator;
    int m_timeoutMs;
    QStringList m_secrets;
    MessageTable m_messages;
    QString m_documentId;
    QJsonObject m_pluginDataBefore;
    int m_notesSeen = 0;
    /// Per document id: every advice note body sent for it.
    QHash<QString, QList<NoteHistory>> m_notes;
    /// Per document id: the body whose answer the document stores.
    QHash<QString, QJsonObject> m_stored;
    bool m_tillOpened = false;
    QList<Violation> m_violations;
    int m_checked = 0;
    int m_lostAnswers = 0;
};

} // namespace till
