#pragma once

#include "cashier.h"

class QTextStream;

namespace till {

/// The cashier at a terminal: messages are printed, choices are numbered
/// lists, a form is asked field by field with each field's check, made on
/// the text as typed as the QML form makes it (a field left empty keeps its
/// initial text; a date is typed as its format says),
/// quantities and prices are typed as numbers. An empty answer to a list or
/// a number, "-" in a form, or the end of input cancels.
class TerminalCashier : public Cashier
{
public:
    TerminalCashier(QTextStream *in, QTextStream *out);

    void read(const tr::Tr &message, int kind) override;
    int choose(const tr::Tr &title, const QStringList &items) override;
    std::optional<QVariantMap> fill(const FormRequest &form) override;
    std::optional<double> enter(NumberKind kind) override;

private:
    /// One line of input as typed; nothing at the end of input.
    std::optional<QString> ask(const QString &prompt);

    QTextStream *m_in;
    QTextStream *m_out;
};

} // namespace till
