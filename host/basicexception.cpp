#include "basicexception.h"

BasicException::BasicException(const tr::Tr &message)
    : m_message(message)
    , m_what(message.text().toUtf8())
{
}

BasicException::~BasicException() = default;

const char *BasicException::what() const noexcept
{
    return m_what.constData();
}
