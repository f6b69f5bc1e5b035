#pragma once

#include "viewdescriptor.h"

#include "../eactivitylistener.h"

namespace qml {

/// A view of the host's QML interface that opens on one activity event.
class BasicView
{
public:
    explicit BasicView(EActivityListener::Event code);
    virtual ~BasicView();

    EActivityListener::Event getCode() const { return m_code; }

    /// The form for \a event, or an empty descriptor when the view does not show it.
    virtual ViewDescriptor get(const Event &event);

private:
    EActivityListener::Event m_code;
};

} // namespace qml
