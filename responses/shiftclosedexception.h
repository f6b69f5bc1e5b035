#pragma once

#include <basicexception.h>

namespace tessaro {

/// The service says its shift (the till) is closed: the till must be opened
/// at the service before the request is repeated.
class ShiftClosedException : public BasicException
{
public:
    ShiftClosedException();
};

} // namespace tessaro
