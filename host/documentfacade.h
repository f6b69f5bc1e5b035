#pragma once

#include "tr.h"

#include <QSharedPointer>

class AbstractDocument;

/// Checks of the host's document flow.
class DocumentFacade
{
public:
    /// The answer of a check: whether it failed, and why.
    struct CheckResult
    {
        bool failed = false;
        tr::Tr message;
    };

    /// Whether a shift may be opened now; \a document is the document that
    /// asks, or null.
    CheckResult checkShiftOpen(const QSharedPointer<AbstractDocument> &document) const;

    /// Makes every later checkShiftOpen() fail with \a message (an empty one allows).
    void setShiftOpenRefusal(const tr::Tr &message) { m_refusal = message; }

private:
    tr::Tr m_refusal;
};
