#include "logger.h"

#include <QDebug>

namespace Log4Qt {

Logger::Logger(const QString &name)
    : m_name(name)
    , m_categoryName(name.toUtf8())
    , m_category(m_categoryName.constData())
{
}

void Logger::debug(const QString &message) const
{
    if (m_category.isDebugEnabled())
        QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).debug().noquote() << message;
}

void Logger::info(const QString &message) const
{
    if (m_category.isInfoEnabled())
        QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).info().noquote() << message;
}

void Logger::warn(const QString &message) const
{
    if (m_category.isWarningEnabled())
        QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).warning().noquote() << message;
}

void Logger::error(const QString &message) const
{
    if (m_category.isCriticalEnabled())
        QMessageLogger(nullptr, 0, nullptr, m_category.categoryName()).critical().noquote() << message;
}

} // namespace Log4Qt
