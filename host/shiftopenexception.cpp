#include "shiftopenexception.h"

ShiftOpenException::ShiftOpenException(const tr::Tr &message)
    : DocumentException(message, false)
{
}
