#pragma once

#include "../event.h"

#include <QString>

#include <functional>

class QQmlContext;

namespace qml {

/// What a view answers for an event: the QML form to show and how to set up
/// its context. An empty descriptor means "not mine".
struct ViewDescriptor
{
    Event event;
    QString form;
    std::function<void(QQmlContext *)> setup;

    bool isEmpty() const { return form.isEmpty(); }
};

} // namespace qml
