#include "runprogress.h"

#include "jsonfile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace till {

RunProgress::RunProgress(const QString &folder, const QByteArray &scenario)
    : m_file(QDir(folder).filePath(QString::fromLatin1(QCryptographicHash::hash(scenario, QCryptographicHash::Sha256).toHex().left(16))
                                   + QStringLiteral(".json")))
{
}

bool RunProgress::load(QString *error)
{
    QJsonObject json;
    if (!JsonFile::read(m_file, &json, error))
        return false;
    if (json.isEmpty() || json.value(QStringLiteral("finished")).toBool())
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
    QDir().mkpath(QFileInfo(m_file).path());
    return JsonFile::write(m_file, {{QStringLiteral("run"), m_run},
                                    {QStringLiteral("done"), m_done},
                                    {QStringLiteral("answers"), m_answers},
                                    {QStringLiteral("finished"), m_finished},
                                    {QStringLiteral("records"), records}},
                           error);
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
