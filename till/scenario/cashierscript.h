#pragma once

#include "cashier.h"
#include "scenario.h"

#include <QList>
#include <QStringList>

namespace till {

/// The cashier of a scenario: answers dialogs with the scenario's answers, in
/// order. An answer of the wrong kind, a choice that is not on the list, a
/// form text that fails its field's check, or no answer left: the dialog is
/// cancelled and the problem is kept for the report.
class CashierScript : public Cashier
{
public:
    explicit CashierScript(const QList<CashierAnswer> &answers = {});

    /// The index of the next answer; a resumed run starts where it stopped.
    int position() const { return m_position; }
    void setPosition(int position) { m_position = position; }
    int remaining() const { return int(m_answers.size()) - m_position; }

    /// The problems met since the last call.
    QStringList takeProblems();

    void read(const tr::Tr &message, int kind) override;
    int choose(const tr::Tr &title, const QStringList &items) override;
    std::optional<QVariantMap> fill(const FormRequest &form) override;
    std::optional<double> enter(NumberKind kind) override;

private:
    /// The next answer if it is of \a kind; null (and a problem noted) otherwise.
    const CashierAnswer *take(CashierAnswer::Kind kind, const QString &dialog);

    QList<CashierAnswer> m_answers;
    int m_position = 0;
    QStringList m_problems;
};

} // namespace till
