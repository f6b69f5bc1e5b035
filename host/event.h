#pragma once

#include <QMetaType>
#include <QVariantMap>

/// An event of the host's activity listener: a code and named values.
/// Dialogs send one to the interface and receive the cashier's answer as another.
class Event
{
public:
    Event() = default;
    explicit Event(int code, const QVariantMap &values = QVariantMap());

    int getCode() const { return m_code; }
    bool isEmpty() const { return m_code == 0 && m_values.isEmpty(); }

    QVariant value(const QString &name) const { return m_values.value(name); }
    void insert(const QString &name, const QVariant &value) { m_values.insert(name, value); }
    QVariantMap values() const { return m_values; }

private:
    int m_code = 0;
    QVariantMap m_values;
};

Q_DECLARE_METATYPE(Event)
