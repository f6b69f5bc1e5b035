#include "checkreport.h"

#include "reportwords.h"

#include "secrets/linesanitizer.h"
#include "secrets/secretmask.h"

#include <QJsonArray>

#include <algorithm>

namespace till {

namespace {

constexpr qsizetype levelWidth = 9;

} // namespace

void CheckReport::startGroup(const QString &group)
{
    m_group = group;
}

void CheckReport::add(Level level, const QString &name, const QString &detail, const QString &hint,
                      std::optional<qint64> ms)
{
    // Details quote what the till and the service said; the mask catches a
    // secret that came along (an address's key, a credential in an error).
    const SecretMask mask;
    m_items.append({m_group, name, level, mask.text(detail), mask.text(hint), ms});
}

void CheckReport::ok(const QString &name, const QString &detail, std::optional<qint64> ms)
{
    add(Level::Ok, name, detail, QString(), ms);
}

void CheckReport::warning(const QString &name, const QString &detail, const QString &hint, std::optional<qint64> ms)
{
    add(Level::Warning, name, detail, hint, ms);
}

void CheckReport::failure(const QString &name, const QString &detail, const QString &hint, std::optional<qint64> ms)
{
    add(Level::Failure, name, detail, hint, ms);
}

int CheckReport::count(Level level) const
{
    return int(std::count_if(m_items.cbegin(), m_items.cend(), [level](const Item &item) { return item.level == level; }));
}

ExitCode CheckReport::exitCode() const
{
    return verdictExitCode(count(Level::Warning), count(Level::Failure));
}

QString CheckReport::levelName(Level level)
{
    switch (level) {
    case Level::Ok:
        return QStringLiteral("ok");
    case Level::Warning:
        return QStringLiteral("warning");
    case Level::Failure:
        return QStringLiteral("failure");
    }
    return QString();
}

QString CheckReport::summary() const
{
    const int failures = count(Level::Failure);
    const int warnings = count(Level::Warning);
    QString verdict = QStringLiteral("the till is ready for the service");
    if (failures > 0)
        verdict = QStringLiteral("the till will fail until the failures are fixed");
    else if (warnings > 0)
        verdict = QStringLiteral("the till works; look at the warnings");
    const QString tally = ReportWords::tally({ReportWords::count(count(Level::Ok), QStringLiteral("ok")),
                                              ReportWords::count(warnings, QStringLiteral("warning"), QStringLiteral("warnings")),
                                              ReportWords::count(failures, QStringLiteral("failure"), QStringLiteral("failures"))});
    return QStringLiteral("Summary: %1: %2 %3").arg(tally, verdict, ReportWords::exitCode(exitCode()));
}

QString CheckReport::text() const
{
    qsizetype nameWidth = 0;
    for (const Item &item : m_items)
        nameWidth = std::max(nameWidth, item.name.size());
    const QString indent(2 + levelWidth + nameWidth + 2, QLatin1Char(' '));

    QString text;
    // What the service said reaches the terminal escaped: an error text must
    // not clear the screen or write a line of its own.
    const auto shown = [](const QString &text) { return LineSanitizer::escaped(text); };
    const QString till = shown(m_context.value(QStringLiteral("till")).toString());
    const QString config = shown(m_context.value(QStringLiteral("config")).toString());
    text += till.isEmpty() ? QStringLiteral("Installation check, configuration %1\n").arg(config)
                           : QStringLiteral("Installation check of the till in %1 (configuration %2)\n").arg(till, config);
    QString group;
    for (const Item &item : m_items) {
        if (item.group != group) {
            group = item.group;
            text += QLatin1Char('\n') + shown(group) + QLatin1Char('\n');
        }
        QString line = QStringLiteral("  ") + levelName(item.level).leftJustified(levelWidth)
            + shown(item.name).leftJustified(nameWidth) + QStringLiteral("  ") + shown(item.detail);
        if (item.ms)
            line += QStringLiteral(" (%1 ms)").arg(*item.ms);
        text += line + QLatin1Char('\n');
        if (!item.hint.isEmpty())
            text += indent + QStringLiteral("→ ") + shown(item.hint) + QLatin1Char('\n');
    }
    return text + QLatin1Char('\n') + summary() + QLatin1Char('\n');
}

QJsonObject CheckReport::json() const
{
    QJsonArray checks;
    for (const Item &item : m_items) {
        QJsonObject check{{QStringLiteral("group"), item.group},
                          {QStringLiteral("name"), item.name},
                          {QStringLiteral("level"), levelName(item.level)},
                          {QStringLiteral("detail"), item.detail}};
        if (!item.hint.isEmpty())
            check.insert(QStringLiteral("hint"), item.hint);
        if (item.ms)
            check.insert(QStringLiteral("ms"), *item.ms);
        checks.append(check);
    }
    QJsonObject json = m_context;
    json.insert(QStringLiteral("checks"), checks);
    json.insert(QStringLiteral("summary"), QJsonObject{{QStringLiteral("ok"), count(Level::Ok)},
                                                       {QStringLiteral("warnings"), count(Level::Warning)},
                                                       {QStringLiteral("failures"), count(Level::Failure)}});
    json.insert(QStringLiteral("exitCode"), exitStatus(exitCode()));
    return json;
}

} // namespace till
