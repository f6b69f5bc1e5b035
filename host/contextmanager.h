#pragma once

#include "econtext.h"

/// Which context of the host's screens is current.
class ContextManager
{
public:
    ContextManager();

    EContext::Code currentContext() const { return m_current; }
    bool isCurrentContext(int code) const { return m_current == code; }
    void setCurrentContext(EContext::Code code) { m_current = code; }

private:
    EContext::Code m_current = EContext::Menu;
};
