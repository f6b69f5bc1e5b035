#pragma once

#include "tr.h"

#include <exception>

/// The host's exception: a failure that carries a cashier message.
class BasicException : public std::exception
{
public:
    explicit BasicException(const tr::Tr &message);
    ~BasicException() override;

    /// The message for the cashier; empty when the failure needs no message.
    tr::Tr tr() const { return m_message; }

    const char *what() const noexcept override;

private:
    tr::Tr m_message;
    QByteArray m_what;
};
