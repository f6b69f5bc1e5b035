#pragma once

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMutex>

namespace tessaro::emulator {

/// Every advice note (return) the service accepted: its body as received and
/// the return invoice number it was given. A repeated note is a new return:
/// the emulator does not merge duplicates, so a client that sends one twice
/// shows up as two entries.
class AdviceNoteBook
{
public:
    struct Note {
        QString uuid;
        QString key4;          ///< return invoice number, 0/0/<till>/<number>
        QJsonObject body;
        QDateTime receivedAt;
    };

    /// Keeps a note and returns it with a fresh uuid.
    Note add(const QString &key4, const QJsonObject &body, const QDateTime &receivedAt);
    QList<Note> notes() const;
    QJsonArray toJson() const;

private:
    mutable QMutex m_mutex;
    QList<Note> m_notes;
};

} // namespace tessaro::emulator
