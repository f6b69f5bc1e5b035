#include "runprogress.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace till {

RunProgress::RunProgress(const QString &folder, const QByteArray &scenario)
    : m_file(QDir(folder).filePath(QString::fromLatin1(QCryptographicHash::hash(scenario, QCryptographicHash::Sha256).toHex().left(16))
                                   + QStringLiteral(".json")))
{
}

bool RunProgress::load(QString *error)
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
    if (json.value(QStringLiteral("finished")).toBool())
        return true;
    m_resumed = true;
    m_run = json.value(QStringLiteral("run")).toInt();
    m_done = json.value(QStringLiteral("done")).toInt();
    m_answers = json.value(QStringLiteral("answers")).toInt();
    for (const QJsonValue &record : json.value(QStringLiteral("records")).toArray())
        m_records << ActionRecord::fromJson(record.toObject());
    return true;
}

bool RunProgress::save(QString *error) const
{
    QJsonArray records;
    for (const ActionRecord &record : m_records)
        records << record.toJson();
    const QJsonObject json{{QStringLiteral("run"), m_run},
                           {QStringLiteral("done"), m_done},
                           {QStringLiteral("answers"), m_answers},
                           {QStringLiteral("finished"), m_finished},
                           {QStringLiteral("records"), records}};
    QDir().mkpath(QFileInfo(m_file).path());
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

void RunProgress::clear()
{
    QFile::remove(m_file);
    m_resumed = false;
    m_run = 0;
    m_done = 0;
    m_answers = 0;
    m_finished = false;
    m_records.clear();
}

void RunProgress::recordAction(const ActionRecord &record, int answers)
{
    m_records << record;
    m_done = record.index + 1;
    m_answers = answers;
}

void RunProgress::recordEvent(const ActionRecord &record)
{
    m_records << record;
}

} // namespace till
