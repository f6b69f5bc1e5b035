#include "cashierscript.h"

namespace till {

namespace {

QString kindName(CashierAnswer::Kind kind)
{
    switch (kind) {
    case CashierAnswer::Choice:
        return QStringLiteral("choice");
    case CashierAnswer::Form:
        return QStringLiteral("form");
    case CashierAnswer::Quantity:
        return QStringLiteral("quantity");
    case CashierAnswer::Price:
        break;
    }
    return QStringLiteral("price");
}

} // namespace

CashierScript::CashierScript(const QList<CashierAnswer> &answers)
    : m_answers(answers)
{
}

QStringList CashierScript::takeProblems()
{
    const QStringList problems = m_problems;
    m_problems.clear();
    return problems;
}

const CashierAnswer *CashierScript::take(CashierAnswer::Kind kind, const QString &dialog)
{
    if (m_position >= m_answers.size()) {
        m_problems << QStringLiteral("no answer left for the %1 %2; cancelled").arg(kindName(kind), dialog);
        return nullptr;
    }
    const CashierAnswer &answer = m_answers.at(m_position);
    if (answer.kind != kind) {
        m_problems << QStringLiteral("%1 is a %2 answer, but the dialog is the %3 %4; cancelled")
                          .arg(answer.path, kindName(answer.kind), kindName(kind), dialog);
        return nullptr;
    }
    ++m_position;
    return &answer;
}

void CashierScript::read(const tr::Tr &, int)
{
}

int CashierScript::choose(const tr::Tr &title, const QStringList &items)
{
    const CashierAnswer *answer = take(CashierAnswer::Choice, QStringLiteral("\"%1\"").arg(title.text()));
    if (!answer || answer->cancel)
        return -1;
    const int index = answer->index >= 0 ? answer->index : int(items.indexOf(answer->item));
    if (index < 0 || index >= items.size()) {
        const QString wanted = answer->index >= 0 ? QString::number(answer->index) : QStringLiteral("\"%1\"").arg(answer->item);
        m_problems << QStringLiteral("%1: %2 is not among the %3 items of \"%4\"; cancelled")
                          .arg(answer->path, wanted)
                          .arg(items.size())
                          .arg(title.text());
        return -1;
    }
    return index;
}

std::optional<QVariantMap> CashierScript::fill(const FormRequest &form)
{
    const CashierAnswer *answer = take(CashierAnswer::Form, QStringLiteral("\"%1\"").arg(form.form()));
    if (!answer || answer->cancel)
        return std::nullopt;
    QVariantMap texts;
    QStringList names;
    for (const FormRequest::Field &field : form.fields()) {
        names << field.name;
        // A field the script leaves out keeps the text the form starts with.
        const QString text = answer->fields.value(field.name, field.value).toString();
        const QString problem = field.check(text);
        if (!problem.isEmpty()) {
            m_problems << QStringLiteral("%1: %2; cancelled").arg(answer->path, problem);
            return std::nullopt;
        }
        texts.insert(field.name, text);
    }
    for (auto it = answer->fields.cbegin(); it != answer->fields.cend(); ++it) {
        if (!names.contains(it.key())) {
            m_problems << QStringLiteral("%1: the form \"%2\" has no field %3; cancelled").arg(answer->path, form.form(), it.key());
            return std::nullopt;
        }
    }
    return texts;
}

std::optional<double> CashierScript::enter(NumberKind kind)
{
    const CashierAnswer::Kind answerKind = kind == Quantity ? CashierAnswer::Quantity : CashierAnswer::Price;
    const CashierAnswer *answer = take(answerKind, QStringLiteral("input"));
    if (!answer || answer->cancel)
        return std::nullopt;
    return answer->number;
}

} // namespace till
