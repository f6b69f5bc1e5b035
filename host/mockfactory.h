#pragma once

#include "hostobjects.h"

#include <QSharedPointer>

#include <functional>
#include <typeinfo>

/// Makes host objects that a test or the host application may substitute:
/// create() hands out what the registered creator makes, or a new default
/// object when none is registered.
template <typename T>
class MockFactory
{
public:
    using Creator = std::function<QSharedPointer<T>()>;

    static QSharedPointer<T> create()
    {
        if (const auto creator = std::static_pointer_cast<Creator>(slot()))
            return (*creator)();
        return QSharedPointer<T>::create();
    }

    static void setCreator(const Creator &make) { slot() = std::make_shared<Creator>(make); }

    /// Every create() returns this one object.
    static void setInstance(const QSharedPointer<T> &object)
    {
        setCreator([object] { return object; });
    }

    static void clearCreator() { slot().reset(); }

private:
    static std::shared_ptr<void> &slot() { return HostObjects::slot(HostObjects::FactoryCreator, typeid(T).name()); }
};
