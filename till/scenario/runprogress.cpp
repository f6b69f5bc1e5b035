#include "runprogress.h"

#include "jsonfile.h"
#include "secrets/privatefile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonParseError>

namespace till {

namespace {

const QString runKey = QStringLiteral("run");
const QString eventKey = QStringLiteral("event");
const QString actionKey = QStringLiteral("action");
const QString doneKey = QStringLiteral("done");
const QString answersKey = QStringLiteral("answers");
const QString finishedKey = QStringLiteral("finished");

QString baseName(const QString &folder, const QByteArray &scenario)
{
    return QDir(folder).filePath(QString::fromLatin1(QCryptographicHash::hash(scenario, QCryptographicHash::Sha256).toHex().left(16)));
}

QByteArray line(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

RunProgress::RunProgress(const QString &folder, const QByteArray &scenario)
    : m_file(baseName(folder, scenario) + QStringLiteral(".jsonl"))
    , m_olderFile(baseName(folder, scenario) + QStringLiteral(".json"))
{
}

bool RunProgress::load(QString *error)
{
    if (!loadOlder(error))
        return false;
    QFile file(m_file);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(m_file, file.errorString());
        return false;
    }
    const QByteArray content = file.readAll();
    file.close();

    // One JSON object a line: the run, then a line per record. Only the last
    // line can be cut short (the till stopped while writing it): it is dropped.
    int run = 0;
    int done = 0;
    int answers = 0;
    bool finished = false;
    QList<ActionRecord> records;
    qsizetype whole = 0;
    int number = 0;
    while (whole < content.size()) {
        const qsizetype end = content.indexOf('\n', whole);
        ++number;
        QJsonParseError parsed{};
        const QJsonDocument json = QJsonDocument::fromJson(content.mid(whole, end < 0 ? -1 : end - whole), &parsed);
        if (end < 0 || parsed.error != QJsonParseError::NoError || !json.isObject()) {
            if (end < 0 || end + 1 == content.size())
                break;
            if (error)
                *error = QStringLiteral("%1 is damaged at line %2").arg(m_file).arg(number);
            return false;
        }
        const QJsonObject object = json.object();
        if (object.contains(runKey)) {
            run = object.value(runKey).toInt();
        } else if (object.contains(actionKey)) {
            records << ActionRecord::fromJson(object.value(actionKey).toObject());
            done = object.value(doneKey).toInt();
            answers = object.value(answersKey).toInt();
        } else if (object.contains(eventKey)) {
            records << ActionRecord::fromJson(object.value(eventKey).toObject());
        } else if (object.value(finishedKey).toBool()) {
            finished = true;
        }
        whole = end + 1;
    }
    // Without its first line the run had not begun; after its last it is over.
    if (run == 0 || finished)
        return true;
    // What follows goes after the last whole line.
    if (whole < content.size() && !QFile::resize(m_file, whole)) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(m_file);
        return false;
    }
    m_resumed = true;
    m_started = true;
    m_run = run;
    m_done = done;
    m_answers = answers;
    m_records = records;
    return true;
}

bool RunProgress::loadOlder(QString *error)
{
    QJsonObject json;
    if (!JsonFile::read(m_olderFile, &json, error))
        return false;
    if (json.isEmpty())
        return true;
    if (!json.value(finishedKey).toBool()) {
        if (error)
            *error = QStringLiteral("%1 holds an unfinished run saved by an older till, which this one cannot continue; "
                                    "start the scenario over with --again")
                         .arg(m_olderFile);
        return false;
    }
    QFile::remove(m_olderFile);
    return true;
}

bool RunProgress::save(QString *error)
{
    if (m_finished && !m_finishSaved) {
        m_pending += line({{finishedKey, true}});
        m_finishSaved = true;
    }
    if (m_started && m_pending.isEmpty())
        return true;
    QDir().mkpath(QFileInfo(m_file).path());
    // A new run replaces whatever an earlier, finished one left.
    const bool saved = m_started ? PrivateFile::append(m_file, m_pending, error)
                                 : PrivateFile::write(m_file, line({{runKey, m_run}}) + m_pending, error);
    if (saved) {
        m_started = true;
        m_pending.clear();
    }
    return saved;
}

void RunProgress::clear()
{
    QFile::remove(m_file);
    QFile::remove(m_olderFile);
    m_resumed = false;
    m_started = false;
    m_run = 0;
    m_done = 0;
    m_answers = 0;
    m_finished = false;
    m_finishSaved = false;
    m_records.clear();
    m_pending.clear();
}

void RunProgress::recordAction(const ActionRecord &record, int answers)
{
    m_records << record;
    m_done = record.index + 1;
    m_answers = answers;
    m_pending += line({{actionKey, record.toJson()}, {doneKey, m_done}, {answersKey, m_answers}});
}

void RunProgress::recordEvent(const ActionRecord &record)
{
    m_records << record;
    m_pending += line({{eventKey, record.toJson()}});
}

} // namespace till
