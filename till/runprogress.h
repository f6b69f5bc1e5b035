#pragma once

#include "report.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace till {

/// How far a run of one scenario has come on one till, kept in the data
/// folder (progress/<hash of the scenario>.json) and rewritten after every
/// action, so that a till stopped at any moment continues from the first
/// action it had not finished.
class RunProgress
{
public:
    /// The progress of the scenario whose file content is \a scenario.
    RunProgress(const QString &folder, const QByteArray &scenario);

    /// Reads the saved progress; without one (or after a finished run) this is a fresh run.
    bool load(QString *error);
    bool save(QString *error) const;
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
    QString m_file;
    bool m_resumed = false;
    int m_run = 0;
    int m_done = 0;
    int m_answers = 0;
    bool m_finished = false;
    QList<ActionRecord> m_records;
};

} // namespace till
