#pragma once

#include "eactiontype.h"

#include <QMultiMap>
#include <QSharedPointer>
#include <QString>
#include <QVariant>

namespace control {

/// One cashier action travelling through the host's action pipeline: its type
/// and named arguments. Copies share their arguments, so a hook that inserts a
/// value is seen by every later hook and by the action itself.
class Action
{
public:
    using Arguments = QMultiMap<QString, QVariant>;

    Action();
    Action(EActionType type, const Arguments &arguments);

    EActionType getType() const { return m_type; }

    /// The latest value inserted under \a key, or \a defaultValue.
    QVariant value(const QString &key, const QVariant &defaultValue = QVariant()) const;
    bool contains(const QString &key) const;
    /// Sets \a key to \a value, replacing earlier values.
    void insert(const QString &key, const QVariant &value) const;
    Arguments arguments() const;

private:
    EActionType m_type;
    QSharedPointer<Arguments> m_arguments;
};

} // namespace control

Q_DECLARE_METATYPE(control::Action)
