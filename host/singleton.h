#pragma once

#include <memory>

/// A process-wide host object, created with its default constructor on first
/// use. Tests and the host application may install their own instance.
template <typename T>
class Singleton
{
public:
    static T *instance()
    {
        if (!storage())
            storage().reset(new T());
        return storage().get();
    }

    /// Takes ownership of \a object; the previous instance is destroyed.
    static void setInstance(T *object) { storage().reset(object); }

    /// Destroys the instance; the next instance() creates a fresh one.
    static void reset() { storage().reset(); }

    static bool exists() { return bool(storage()); }

private:
    static std::unique_ptr<T> &storage()
    {
        static std::unique_ptr<T> object;
        return object;
    }
};
