#include "documentfacade.h"

DocumentFacade::CheckResult DocumentFacade::checkShiftOpen(const QSharedPointer<AbstractDocument> &) const
{
    return {!m_refusal.isEmpty(), m_refusal};
}
