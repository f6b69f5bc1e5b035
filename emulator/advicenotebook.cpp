#include "emulator/advicenotebook.h"

#include <QMutexLocker>
#include <QUuid>

namespace tessaro::emulator {

AdviceNoteBook::Note AdviceNoteBook::add(const QString &key4, const QJsonObject &body,
                                         const QDateTime &receivedAt)
{
    const QMutexLocker locker(&m_mutex);
    const Note note{QUuid::createUuid().toString(QUuid::WithoutBraces), key4, body, receivedAt};
    m_notes.append(note);
    return note;
}

QList<AdviceNoteBook::Note> AdviceNoteBook::notes() const
{
    const QMutexLocker locker(&m_mutex);
    return m_notes;
}

QJsonArray AdviceNoteBook::toJson() const
{
    QJsonArray array;
    for (const Note &note : notes()) {
        array.append(QJsonObject{
            {QStringLiteral("uuid"), note.uuid},
            {QStringLiteral("Key4"), note.key4},
            {QStringLiteral("receivedAt"), note.receivedAt.toString(Qt::ISODateWithMs)},
            {QStringLiteral("body"), note.body},
        });
    }
    return array;
}

} // namespace tessaro::emulator
