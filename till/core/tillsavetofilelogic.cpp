#include "tillsavetofilelogic.h"

#include <abstractdocument.h>

namespace till {

TillSaveToFileLogic::TillSaveToFileLogic(const std::function<void(const QString &what)> &failed)
    : m_failed(failed)
{
}

bool TillSaveToFileLogic::save(const QSharedPointer<AbstractDocument> &document, const QStringList &parts)
{
    if (SaveToFileLogic::save(document, parts))
        return true;
    m_failed(QStringLiteral("the document %1 could not be written").arg(document ? document->getId() : QStringLiteral("(none)")));
    return false;
}

} // namespace till
