#pragma once

#include <QMetaType>
#include <QString>

namespace tr {

/// A cashier message: a message id used to look up a translation, and the
/// default Russian text shown when none is found.
class Tr
{
public:
    Tr() = default;
    Tr(const QString &id, const QString &text);
    Tr(const Tr &other) = default;
    Tr &operator=(const Tr &other) = default;

    QString id() const { return m_id; }
    QString text() const { return m_text; }

    /// A message with neither id nor text: nothing to show.
    bool isEmpty() const { return m_id.isEmpty() && m_text.isEmpty(); }

    /// The text with %1, %2 … filled in, as QString::arg would.
    Tr arg(const QString &value) const;

    /// The text the cashier sees (the default text; the stand-in has no translations).
    QString ru() const { return m_text; }

    bool operator==(const Tr &other) const { return m_id == other.m_id && m_text == other.m_text; }
    bool operator!=(const Tr &other) const { return !(*this == other); }

private:
    QString m_id;
    QString m_text;
};

} // namespace tr

Q_DECLARE_METATYPE(tr::Tr)
