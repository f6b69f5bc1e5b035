#pragma once

#include "basicexception.h"

/// A failure of a document operation. The flag tells whether the document
/// stays usable after it.
class DocumentException : public BasicException
{
public:
    DocumentException(const tr::Tr &message, bool recoverable);

    bool isRecoverable() const { return m_recoverable; }

private:
    bool m_recoverable;
};
