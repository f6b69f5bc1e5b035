#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace till {

/// The host configuration file as written, line by line, for what reading it
/// through QSettings hides: a value cut short at a ";" (in the INI format a
/// ";" starts a comment, so "5=2;3" is read as "2"), and which sections it has.
///
/// It only looks: the values the plug-in uses are the plug-in's to read.
class ConfigFileText
{
public:
    /// A value that the INI format cuts at a ";" outside double quotes.
    struct Cut
    {
        QString section;
        QString key;
        /// The value as written, and the part of it that is read.
        QString written;
        QString kept;
    };

    explicit ConfigFileText(const QString &fileName);

    /// The cut values of the sections the plug-in reads ("Tessaro…", "OrvelGate").
    QList<Cut> cutValues() const;
    /// The numbers N of the sections named \a prefix followed by N
    /// ("Tessaro.ReceiptNumber." gives the currencies with receipt-number settings).
    QList<int> sectionNumbers(const QString &prefix) const;

private:
    struct Line
    {
        QString section;
        QString key;
        QString value;
    };

    QList<Line> m_lines;
    QStringList m_sections;
};

} // namespace till
