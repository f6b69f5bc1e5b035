#pragma once

#include <QSharedPointer>

#include <functional>

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
        if (creator())
            return creator()();
        return QSharedPointer<T>::create();
    }

    static void setCreator(const Creator &make) { creator() = make; }

    /// Every create() returns this one object.
    static void setInstance(const QSharedPointer<T> &object)
    {
        creator() = [object] { return object; };
    }

    static void clearCreator() { creator() = nullptr; }

private:
    static Creator &creator()
    {
        static Creator make;
        return make;
    }
};
