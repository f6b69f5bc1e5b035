#pragma once

#include <QHash>
#include <QString>

namespace till {

/// The messages the cashier may see: every message id of the plug-in and of
/// the host with its text, and the service's own messages, whose id is
/// "tessaroError" followed by a key made from the text.
class MessageTable
{
public:
    MessageTable();

    /// Why a dialog with \a id and \a text is not in the table; empty when it is.
    QString check(const QString &id, const QString &text) const;

    /// The id the plug-in gives a service message \a text.
    static QString serviceMessageId(const QString &text);

private:
    /// Id to text; an empty text stands for a text that varies (a title, a host message).
    QHash<QString, QString> m_texts;
};

} // namespace till
