#pragma once

#include <memory>

/// The one place where the host keeps its process-wide objects (singletons
/// and factory substitutes).
///
/// Kept inside the host library, so the host application and every plug-in
/// see the same objects whatever symbol visibility they are built with.
class HostObjects
{
public:
    enum Kind {
        SingletonObject,
        FactoryCreator,
    };

    /// The slot of \a kind for the type named \a typeName (its typeid name).
    /// References stay valid for the life of the process.
    static std::shared_ptr<void> &slot(Kind kind, const char *typeName);

    /// Destroys every singleton and drops every factory substitute, of the
    /// host's types and the plug-ins' alike: the process starts over as a
    /// fresh host (a restart of the till, the next test).
    static void resetAll();
};
