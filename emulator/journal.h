#pragma once

#include "emulator/journalentry.h"

#include <QJsonArray>
#include <QList>
#include <QMutex>

namespace tessaro::emulator {

/// Every request the service paths and the token path received, in arrival
/// order, with the status answered. Written by the server thread, read by tests
/// and the admin path; admin requests themselves are not kept.
class Journal
{
public:
    /// Keeps a request as pending and returns its id.
    qint64 record(const Exchange &exchange, const QString &fault = QString());
    /// Notes what became of the request with that id, and the body answered.
    void complete(qint64 id, JournalEntry::Outcome outcome, int status = 0, const QByteArray &answer = QByteArray());
    /// Adds a remark to the request with that id (a replay's verdict).
    void note(qint64 id, const QString &text);

    QList<JournalEntry> entries() const;
    /// The entries whose path ends with the given text, e.g. "/advicenote".
    QList<JournalEntry> entriesFor(const QString &pathEnd) const;
    int size() const;
    void clear();
    QJsonArray toJson(JournalEntry::Secrets secrets = JournalEntry::Secrets::Masked) const;

private:
    mutable QMutex m_mutex;
    QList<JournalEntry> m_entries;
    qint64 m_nextId = 1;
};

} // namespace tessaro::emulator
