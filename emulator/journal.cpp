#include "emulator/journal.h"

#include <QMutexLocker>

namespace tessaro::emulator {

qint64 Journal::record(const Exchange &exchange, const QString &fault)
{
    const QMutexLocker locker(&m_mutex);
    JournalEntry entry;
    entry.id = m_nextId++;
    entry.exchange = exchange;
    entry.fault = fault;
    m_entries.append(entry);
    return entry.id;
}

void Journal::complete(qint64 id, JournalEntry::Outcome outcome, int status, const QByteArray &answer)
{
    const QMutexLocker locker(&m_mutex);
    // Recent entries are completed far more often than old ones: search backwards.
    for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
        if (it->id == id) {
            it->outcome = outcome;
            it->status = status;
            it->answer = answer;
            return;
        }
    }
}

void Journal::note(qint64 id, const QString &text)
{
    const QMutexLocker locker(&m_mutex);
    for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
        if (it->id == id) {
            it->note = text;
            return;
        }
    }
}

QList<JournalEntry> Journal::entries() const
{
    const QMutexLocker locker(&m_mutex);
    return m_entries;
}

QList<JournalEntry> Journal::entriesFor(const QString &pathEnd) const
{
    const QMutexLocker locker(&m_mutex);
    QList<JournalEntry> found;
    for (const JournalEntry &entry : m_entries) {
        if (entry.exchange.path.endsWith(pathEnd))
            found.append(entry);
    }
    return found;
}

int Journal::size() const
{
    const QMutexLocker locker(&m_mutex);
    return int(m_entries.size());
}

void Journal::clear()
{
    const QMutexLocker locker(&m_mutex);
    m_entries.clear();
}

QJsonArray Journal::toJson(JournalEntry::Secrets secrets) const
{
    QJsonArray array;
    for (const JournalEntry &entry : entries())
        array.append(entry.toJson(secrets));
    return array;
}

} // namespace tessaro::emulator
