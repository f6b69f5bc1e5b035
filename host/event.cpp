#include "event.h"

Event::Event(int code, const QVariantMap &values)
    : m_code(code)
    , m_values(values)
{
}
