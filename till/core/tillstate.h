#pragma once

#include <QString>

namespace till {

/// What the till remembers between runs besides its documents: the shift,
/// the document open on the screen and a counter for new runs. Kept in the
/// data folder's state.json, replaced whole at each save.
class TillState
{
public:
    explicit TillState(const QString &file);

    /// Reads the file; a missing file is a new till (shift 1, nothing open).
    bool load(QString *error);
    bool save(QString *error) const;

    int shift() const { return m_shift; }
    void setShift(int shift) { m_shift = shift; }
    /// The id of the document open on the screen; empty at the menu.
    QString currentDocument() const { return m_currentDocument; }
    void setCurrentDocument(const QString &id) { m_currentDocument = id; }
    /// A new number for a scenario run, counted up and saved.
    int takeRunNumber(QString *error);

private:
    QString m_file;
    int m_shift = 1;
    QString m_currentDocument;
    int m_nextRun = 1;
};

} // namespace till
