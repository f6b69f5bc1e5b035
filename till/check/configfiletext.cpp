#include "configfiletext.h"

#include <QFile>
#include <QTextStream>

namespace till {

namespace {

// Where a ";" outside double quotes starts a comment; -1 when none does.
qsizetype commentStart(const QString &value)
{
    bool quoted = false;
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c == QLatin1Char('\\')) {
            ++i;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (c == QLatin1Char(';') && !quoted) {
            return i;
        }
    }
    return -1;
}

bool isPluginSection(const QString &section)
{
    return section.startsWith(QLatin1String("Tessaro")) || section == QLatin1String("OrvelGate");
}

} // namespace

ConfigFileText::ConfigFileText(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QTextStream stream(&file);
    QString section;
    while (!stream.atEnd()) {
        const QString line = stream.readLine().trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            section = line.mid(1, line.size() - 2).trimmed();
            m_sections << section;
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (equals > 0)
            m_lines.append({section, line.left(equals).trimmed(), line.mid(equals + 1).trimmed()});
    }
}

QList<ConfigFileText::Cut> ConfigFileText::cutValues() const
{
    QList<Cut> cuts;
    for (const Line &line : m_lines) {
        const qsizetype comment = commentStart(line.value);
        if (comment >= 0 && isPluginSection(line.section))
            cuts.append({line.section, line.key, line.value, line.value.left(comment).trimmed()});
    }
    return cuts;
}

QList<int> ConfigFileText::sectionNumbers(const QString &prefix) const
{
    QList<int> numbers;
    for (const QString &section : m_sections) {
        bool ok = false;
        const int number = section.startsWith(prefix) ? section.mid(prefix.size()).toInt(&ok) : 0;
        if (ok && !numbers.contains(number))
            numbers << number;
    }
    return numbers;
}

} // namespace till
