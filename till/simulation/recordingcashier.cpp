#include "recordingcashier.h"

namespace till {

RecordingCashier::RecordingCashier(Cashier *inner)
    : m_inner(inner)
{
}

void RecordingCashier::record(CashierAnswer answer)
{
    answer.path = QStringLiteral("answers[%1]").arg(m_answers.size());
    m_answers << answer;
}

void RecordingCashier::read(const tr::Tr &message, int kind)
{
    m_inner->read(message, kind);
}

int RecordingCashier::choose(const tr::Tr &title, const QStringList &items)
{
    const int index = m_inner->choose(title, items);
    CashierAnswer answer;
    answer.kind = CashierAnswer::Choice;
    answer.cancel = index < 0;
    answer.index = index;
    record(answer);
    return index;
}

std::optional<QVariantMap> RecordingCashier::fill(const FormRequest &form)
{
    const std::optional<QVariantMap> texts = m_inner->fill(form);
    CashierAnswer answer;
    answer.kind = CashierAnswer::Form;
    answer.cancel = !texts;
    answer.fields = texts.value_or(QVariantMap());
    record(answer);
    return texts;
}

std::optional<double> RecordingCashier::enter(NumberKind kind)
{
    const std::optional<double> number = m_inner->enter(kind);
    CashierAnswer answer;
    answer.kind = kind == Quantity ? CashierAnswer::Quantity : CashierAnswer::Price;
    answer.cancel = !number;
    answer.number = number.value_or(0.0);
    record(answer);
    return number;
}

} // namespace till
