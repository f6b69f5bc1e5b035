#pragma once

#include "report.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace till {

/// How far a run of one scenario has come on one till, kept in the data
/// folder (progress/<hash of the scenario>.jsonl), so that a till stopped at
/// any moment continues from the first action it had not finished. The file
/// is a journal, one JSON object a line: the run's number, then a line per
/// record as it is saved, and a last one when the run finished. Saving adds
/// only the new lines, so an action costs the same early and late in a day.
class RunProgress
{
public:
    /// The progress of the scenario whose file content is \a scenario.
    RunProgress(const QString &folder, const QByteArray &scenario);

    /// Reads the saved progress; without one (or after a finished run) this is
    /// a fresh run. A last line cut short is dropped. An unfinished run in the
    /// older whole-file form cannot be continued: the error says so.
    bool load(QString *error);
    /// Writes what was recorded since the last save.
    bool save(QString *error);
    /// Forgets the saved progress: the next run starts at the first action.
    void clear();

    QString fileName() const { return m_file; }

    /// Whether this run had begun before (so the till resumes it).
    bool isResumed() const { return m_resumed; }
    int run() const { return m_run; }
    void setRun(int run) { m_run = run; }
    /// The number of actions done.
    int done() const { return m_done; }
    /// The position of the next cashier answer.
    int answers() const { return m_answers; }
    bool isFinished() const { return m_finished; }
    QList<ActionRecord> records() const { return m_records; }

    /// Action \a record is done; the next cashier answer is \a answers.
    void recordAction(const ActionRecord &record, int answers);
    /// A record of something that is not an action of the scenario (the till's start).
    void recordEvent(const ActionRecord &record);
    void finish() { m_finished = true; }

private:
    /// Refuses an unfinished run kept by an older till; forgets a finished one.
    bool loadOlder(QString *error);

    QString m_file;
    QString m_olderFile;
    bool m_resumed = false;
    /// Whether the file holds this run's first line.
    bool m_started = false;
    bool m_finishSaved = false;
    int m_run = 0;
    int m_done = 0;
    int m_answers = 0;
    bool m_finished = false;
    QList<ActionRecord> m_records;
    /// Lines recorded and not yet saved.
    QByteArray m_pending;
};

} // namespace till
