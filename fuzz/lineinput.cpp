#include "lineinput.h"

LineInput::LineInput(const uint8_t *data, size_t size)
    : m_bytes(reinterpret_cast<const char *>(data), qsizetype(size))
{
}

QByteArray LineInput::takeLine()
{
    if (atEnd())
        return {};
    qsizetype end = m_bytes.indexOf('\n', m_position);
    if (end < 0)
        end = m_bytes.size();
    const QByteArray line = m_bytes.mid(m_position, end - m_position);
    m_position = qMin(end + 1, m_bytes.size());
    return line;
}

QByteArray LineInput::rest() const
{
    return m_bytes.mid(m_position);
}

bool LineInput::atEnd() const
{
    return m_position >= m_bytes.size();
}
