#pragma once

#include "documentexception.h"

/// The host refuses to open a shift (for example the fiscal registrar is not ready).
class ShiftOpenException : public DocumentException
{
public:
    explicit ShiftOpenException(const tr::Tr &message);
};
