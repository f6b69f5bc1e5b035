#include "tillstate.h"

#include "jsonfile.h"

namespace till {

TillState::TillState(const QString &file)
    : m_file(file)
{
}

bool TillState::load(QString *error)
{
    QJsonObject json;
    if (!JsonFile::read(m_file, &json, error))
        return false;
    m_shift = json.value(QStringLiteral("shift")).toInt(1);
    m_currentDocument = json.value(QStringLiteral("currentDocument")).toString();
    m_nextRun = json.value(QStringLiteral("nextRun")).toInt(1);
    return true;
}

bool TillState::save(QString *error) const
{
    return JsonFile::write(m_file, {{QStringLiteral("shift"), m_shift},
                                    {QStringLiteral("currentDocument"), m_currentDocument},
                                    {QStringLiteral("nextRun"), m_nextRun}},
                           error);
}

int TillState::takeRunNumber(QString *error)
{
    const int run = m_nextRun++;
    return save(error) ? run : 0;
}

} // namespace till
