#pragma once

#include <QSharedPointer>
#include <QStringList>

class AbstractDocument;

/// Document operations of the host that involve the cashier. Made through
/// MockFactory<DocumentLogic>.
class DocumentLogic
{
public:
    virtual ~DocumentLogic();

    /// Makes sure \a document has a common return reason, letting the cashier
    /// choose one from the document's reason dictionary when it has none.
    /// Returns whether the document has one afterwards. \a reasonNames, when
    /// not empty, limits the choice to those names.
    virtual bool chooseCommonBackReason(const QSharedPointer<AbstractDocument> &document, const QStringList &reasonNames);
};
