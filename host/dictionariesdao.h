#pragma once

#include <QHash>
#include <QList>
#include <QString>

/// The host's dictionaries: return reasons by dictionary kind.
class DictionariesDao
{
public:
    struct BackReason
    {
        int code;
        QString name;
    };

    /// The reasons of \a kind in the dictionary's order; empty when the kind is missing.
    QList<BackReason> getBackReasons(int kind) const { return m_backReasons.value(kind); }
    void setBackReasons(int kind, const QList<BackReason> &reasons) { m_backReasons.insert(kind, reasons); }

private:
    QHash<int, QList<BackReason>> m_backReasons;
};
