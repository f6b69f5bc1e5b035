#pragma once

#include <QLoggingCategory>
#include <QString>

namespace Log4Qt {

/// A named logger. Lines go to Qt's categorised logging under the logger's
/// name, so QT_LOGGING_RULES and message handlers apply to them.
class Logger
{
public:
    explicit Logger(const QString &name);
    Logger(const Logger &) = delete;
    Logger &operator=(const Logger &) = delete;

    QString name() const { return m_name; }

    /// Whether debug() writes anything: callers skip building costly debug
    /// lines (masked bodies, header lists) when it does not.
    bool isDebugEnabled() const { return m_category.isDebugEnabled(); }

    void debug(const QString &message) const;
    void info(const QString &message) const;
    void warn(const QString &message) const;
    void error(const QString &message) const;

private:
    QString m_name;
    QByteArray m_categoryName;
    QLoggingCategory m_category;
};

} // namespace Log4Qt
