#pragma once

#include <basicexception.h>

namespace tessaro {

/// No answer came from the service (refused, reset, closed, timed out).
class ConnectionErrorException : public BasicException
{
public:
    ConnectionErrorException();
};

} // namespace tessaro
