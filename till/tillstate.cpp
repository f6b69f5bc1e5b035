#include "tillstate.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace till {

TillState::TillState(const QString &file)
    : m_file(file)
{
}

bool TillState::load(QString *error)
{
    QFile file(m_file);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(m_file, file.errorString());
        return false;
    }
    QJsonParseError parseError;
    const QJsonObject json = QJsonDocument::fromJson(file.readAll(), &parseError).object();
    if (parseError.error != QJsonParseError::NoError) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(m_file, parseError.errorString());
        return false;
    }
    m_shift = json.value(QStringLiteral("shift")).toInt(1);
    m_currentDocument = json.value(QStringLiteral("currentDocument")).toString();
    m_nextRun = json.value(QStringLiteral("nextRun")).toInt(1);
    return true;
}

bool TillState::save(QString *error) const
{
    const QJsonObject json{{QStringLiteral("shift"), m_shift},
                           {QStringLiteral("currentDocument"), m_currentDocument},
                           {QStringLiteral("nextRun"), m_nextRun}};
    QSaveFile file(m_file);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(json).toJson(QJsonDocument::Indented));
        if (file.commit())
            return true;
    }
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(m_file, file.errorString());
    return false;
}

int TillState::takeRunNumber(QString *error)
{
    const int run = m_nextRun++;
    return save(error) ? run : 0;
}

} // namespace till
