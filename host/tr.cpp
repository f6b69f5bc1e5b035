#include "tr.h"

namespace tr {

Tr::Tr(const QString &id, const QString &text)
    : m_id(id)
    , m_text(text)
{
}

Tr Tr::arg(const QString &value) const
{
    return Tr(m_id, m_text.arg(value));
}

} // namespace tr
