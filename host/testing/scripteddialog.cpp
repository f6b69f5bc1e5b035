#include "scripteddialog.h"

void ScriptedDialog::showMessage(const tr::Tr &message, int kind, int timeout)
{
    m_messages.append({message, kind, timeout});
}

int ScriptedDialog::showChoice(const tr::Tr &title, const QStringList &items)
{
    const int answer = m_choices.isEmpty() ? -1 : m_choices.dequeue();
    m_shownChoices.append({title, items, answer});
    return answer;
}

QSharedPointer<SimpleProgress> ScriptedDialog::showProgress(const tr::Tr &message)
{
    m_progress << message;
    return QSharedPointer<SimpleProgress>::create(message);
}

QStringList ScriptedDialog::messageIds() const
{
    QStringList ids;
    for (const Message &message : m_messages)
        ids << message.message.id();
    return ids;
}

void ScriptedDialog::clear()
{
    m_choices.clear();
    m_messages.clear();
    m_shownChoices.clear();
    m_progress.clear();
}
