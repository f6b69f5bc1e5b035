#include "tilldialog.h"

#include "actionlog.h"
#include "cashier.h"

namespace till {

TillDialog::TillDialog(Cashier *cashier, ActionLog *log)
    : m_cashier(cashier)
    , m_log(log)
{
}

void TillDialog::showMessage(const tr::Tr &message, int kind, int)
{
    m_log->addDialog({kind == Dialog::Error ? QStringLiteral("error") : QStringLiteral("message"), message.id(),
                      message.text(), {}, QJsonValue::Undefined});
    m_cashier->read(message, kind);
}

int TillDialog::showChoice(const tr::Tr &title, const QStringList &items)
{
    const int answer = m_cashier->choose(title, items);
    m_log->addDialog({QStringLiteral("choice"), title.id(), title.text(), items,
                      answer < 0 ? QJsonValue(QJsonValue::Null) : QJsonValue(answer)});
    return answer;
}

QSharedPointer<SimpleProgress> TillDialog::showProgress(const tr::Tr &message)
{
    m_log->addDialog({QStringLiteral("progress"), message.id(), message.text(), {}, QJsonValue::Undefined});
    return QSharedPointer<SimpleProgress>::create(message);
}

} // namespace till
