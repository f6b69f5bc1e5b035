#pragma once

#include "../dialog.h"

#include <QList>
#include <QQueue>

/// A Dialog for tests and scripted tills: records everything it is shown and
/// answers choices from a queue, as a cashier would.
class ScriptedDialog : public Dialog
{
public:
    struct Message
    {
        tr::Tr message;
        int kind;
        int timeout;
    };
    struct Choice
    {
        tr::Tr title;
        QStringList items;
        int answer;
    };

    void showMessage(const tr::Tr &message, int kind, int timeout) override;
    int showChoice(const tr::Tr &title, const QStringList &items) override;
    QSharedPointer<SimpleProgress> showProgress(const tr::Tr &message) override;

    /// The answer of the next choice; with none queued a choice is cancelled (-1).
    void enqueueChoice(int index) { m_choices.enqueue(index); }

    QList<Message> messages() const { return m_messages; }
    QList<Choice> choices() const { return m_shownChoices; }
    QList<tr::Tr> progress() const { return m_progress; }
    /// The ids of the messages shown, in order.
    QStringList messageIds() const;
    void clear();

private:
    QQueue<int> m_choices;
    QList<Message> m_messages;
    QList<Choice> m_shownChoices;
    QList<tr::Tr> m_progress;
};
