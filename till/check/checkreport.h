#pragma once

#include "exitcode.h"

#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

namespace till {

/// The verdict of an installation check: one line per check, grouped
/// (plug-in, configuration, the way to the service, clock), each ok, a warning
/// or a failure, with a hint of what to change; a summary and the exit code.
///
/// Nothing secret is ever put into it: callers hand it texts that are safe to
/// show, and it masks what might still slip through (SecretMask). Its text
/// form escapes control characters, so that no quoted answer of the service
/// can move the terminal's cursor or add a line.
class CheckReport
{
public:
    enum class Level { Ok, Warning, Failure };

    struct Item
    {
        QString group;
        QString name;
        Level level = Level::Ok;
        QString detail;
        /// What to change; empty for a check that passed.
        QString hint;
        /// How long the step took, for the steps on the way to the service.
        std::optional<qint64> ms;
    };

    /// Lines added from now on belong to \a group.
    void startGroup(const QString &group);
    void add(Level level, const QString &name, const QString &detail, const QString &hint = QString(),
             std::optional<qint64> ms = std::nullopt);
    void ok(const QString &name, const QString &detail, std::optional<qint64> ms = std::nullopt);
    void warning(const QString &name, const QString &detail, const QString &hint, std::optional<qint64> ms = std::nullopt);
    void failure(const QString &name, const QString &detail, const QString &hint, std::optional<qint64> ms = std::nullopt);

    /// Facts about the check shown in its head and given in its JSON form
    /// (the till's folder, the configuration file, the plug-in's settings).
    void setContext(const QJsonObject &context) { m_context = context; }

    QList<Item> items() const { return m_items; }
    int count(Level level) const;
    /// Passed when all is ok, Failed with some warnings, BadInput with some
    /// failures: what the till was given does not let it work.
    ExitCode exitCode() const;

    /// Aligned lines for a person, hints under the line they belong to.
    QString text() const;
    /// {"checks": [...], "summary": {...}, "exitCode": n} and the context.
    QJsonObject json() const;

    static QString levelName(Level level);

private:
    QString summary() const;

    QString m_group;
    QList<Item> m_items;
    QJsonObject m_context;
};

} // namespace till
