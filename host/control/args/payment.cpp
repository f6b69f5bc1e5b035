#include "payment.h"

namespace control::args {

Payment::Payment(const Action &action)
    : m_action(action)
{
}

QString Payment::valutCode() const
{
    return m_action.value(QStringLiteral("valutCode")).toString();
}

double Payment::amount() const
{
    return m_action.value(QStringLiteral("amount"), 0.0).toDouble();
}

} // namespace control::args
