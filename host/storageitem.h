#pragma once

#include <QString>

/// A named text the host keeps for a shift (or for the till when unbound).
class StorageItem
{
public:
    StorageItem() = default;

    /// Binds the item to the session's current shift.
    void bindToCurrentShift();
    int getShift() const { return m_shift; }
    void setShift(int shift) { m_shift = shift; }

    QString getName() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    QString getValue() const { return m_value; }
    void setValue(const QString &value) { m_value = value; }

private:
    int m_shift = 0;
    QString m_name;
    QString m_value;
};
