#pragma once

#include "hostobjects.h"

#include <typeinfo>

/// A process-wide host object, created with its default constructor on first
/// use. Tests and the host application may install their own instance.
template <typename T>
class Singleton
{
public:
    static T *instance()
    {
        std::shared_ptr<void> &object = slot();
        if (!object)
            object = std::make_shared<T>();
        return static_cast<T *>(object.get());
    }

    /// Takes ownership of \a object; the previous instance is destroyed.
    static void setInstance(T *object) { slot() = std::shared_ptr<T>(object); }

    /// Destroys the instance; the next instance() creates a fresh one.
    static void reset() { slot().reset(); }

    static bool exists() { return bool(slot()); }

private:
    static std::shared_ptr<void> &slot() { return HostObjects::slot(HostObjects::SingletonObject, typeid(T).name()); }
};
