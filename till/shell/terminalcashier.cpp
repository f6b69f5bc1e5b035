#include "terminalcashier.h"

#include "secrets/linesanitizer.h"

#include <QTextStream>

namespace till {

TerminalCashier::TerminalCashier(QTextStream *in, QTextStream *out)
    : m_in(in)
    , m_out(out)
{
}

std::optional<QString> TerminalCashier::ask(const QString &prompt)
{
    *m_out << prompt << Qt::flush;
    QString line;
    if (!m_in->readLineInto(&line)) {
        *m_out << Qt::endl;
        return std::nullopt;
    }
    return line;
}

void TerminalCashier::read(const tr::Tr &message, int kind)
{
    // A message may quote the service: escaped, it cannot drive the terminal or forge a line.
    *m_out << (kind == 1 ? QStringLiteral("  ! ") : QStringLiteral("  i ")) << LineSanitizer::escaped(message.text())
           << QStringLiteral("  [") << LineSanitizer::escaped(message.id()) << QStringLiteral("]") << Qt::endl;
}

int TerminalCashier::choose(const tr::Tr &title, const QStringList &items)
{
    *m_out << QStringLiteral("  ? ") << LineSanitizer::escaped(title.text()) << Qt::endl;
    for (int i = 0; i < items.size(); ++i)
        *m_out << QStringLiteral("    %1. %2").arg(i + 1).arg(LineSanitizer::escaped(items.at(i))) << Qt::endl;
    for (;;) {
        const std::optional<QString> answer = ask(QStringLiteral("    number (empty cancels): "));
        if (!answer || answer->trimmed().isEmpty())
            return -1;
        bool ok = false;
        const int number = answer->trimmed().toInt(&ok);
        if (ok && number >= 1 && number <= items.size())
            return number - 1;
        *m_out << QStringLiteral("    a number from 1 to %1, please").arg(items.size()) << Qt::endl;
    }
}

std::optional<QVariantMap> TerminalCashier::fill(const FormRequest &form)
{
    *m_out << QStringLiteral("  ? ") << LineSanitizer::escaped(form.title().text()) << QStringLiteral("  (\"-\" cancels)") << Qt::endl;
    QVariantMap texts;
    for (const FormRequest::Field &field : form.fields()) {
        QString hint = field.isDate ? field.format : field.pattern;
        if (!field.value.isEmpty())
            hint += (hint.isEmpty() ? QString() : QStringLiteral(", ")) + QStringLiteral("empty keeps %1").arg(field.value);
        const QString prompt = QStringLiteral("    %1%2: ").arg(field.label.text(), hint.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(hint));
        for (;;) {
            // Checked as typed, blanks and all, as the QML form checks its fields.
            const std::optional<QString> answer = ask(prompt);
            if (!answer || *answer == QLatin1String("-"))
                return std::nullopt;
            const QString text = answer->isEmpty() ? field.value : *answer;
            const QString problem = field.check(text);
            if (problem.isEmpty()) {
                texts.insert(field.name, text);
                break;
            }
            *m_out << QStringLiteral("    ") << problem << Qt::endl;
        }
    }
    return texts;
}

std::optional<double> TerminalCashier::enter(NumberKind kind)
{
    const QString prompt = kind == Quantity ? QStringLiteral("  ? Количество (empty cancels): ")
                                            : QStringLiteral("  ? Цена (empty cancels): ");
    for (;;) {
        const std::optional<QString> answer = ask(prompt);
        if (!answer || answer->trimmed().isEmpty())
            return std::nullopt;
        bool ok = false;
        const double value = answer->trimmed().replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&ok);
        if (ok)
            return value;
        *m_out << QStringLiteral("    a number, please") << Qt::endl;
    }
}

} // namespace till
