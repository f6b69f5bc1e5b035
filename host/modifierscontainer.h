#pragma once

#include <QHash>
#include <QVariant>

namespace modifiers {
/// Values the cashier enters before a position: its price or its quantity.
enum Type {
    Price = 0,
    Quantity = 3,
};
} // namespace modifiers

/// The modifiers entered for the next position.
class ModifiersContainer
{
public:
    bool isSet(modifiers::Type type) const { return m_values.contains(type); }
    /// The value of \a type: a Quantity for the quantity, a double for the price.
    QVariant getValue(modifiers::Type type) const { return m_values.value(type); }
    void setValue(modifiers::Type type, const QVariant &value) { m_values.insert(type, value); }
    void clear() { m_values.clear(); }

private:
    QHash<int, QVariant> m_values;
};
