#include "documentexception.h"

DocumentException::DocumentException(const tr::Tr &message, bool recoverable)
    : BasicException(message)
    , m_recoverable(recoverable)
{
}
