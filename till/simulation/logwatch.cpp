#include "logwatch.h"

#include <QLoggingCategory>

namespace till {

namespace {

LogWatch *current = nullptr;

} // namespace

LogWatch::LogWatch()
    : m_previous(qInstallMessageHandler(&LogWatch::handle))
{
    current = this;
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=true\n*.info=true\nqt.*.debug=false\nqt.*.info=false"));
}

LogWatch::~LogWatch()
{
    qInstallMessageHandler(m_previous);
    current = nullptr;
}

void LogWatch::handle(QtMsgType, const QMessageLogContext &context, const QString &message)
{
    if (!current)
        return;
    const QMutexLocker locker(&current->m_mutex);
    current->m_lines << QStringLiteral("%1: %2").arg(QLatin1String(context.category ? context.category : "default"), message);
}

QStringList LogWatch::take()
{
    const QMutexLocker locker(&m_mutex);
    QStringList lines;
    lines.swap(m_lines);
    return lines;
}

} // namespace till
