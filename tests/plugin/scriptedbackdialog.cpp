#include "scriptedbackdialog.h"

QVariantMap ScriptedBackDialog::invoice(const QString &cashCode, const QString &invoiceNumber,
                                        const QString &storeNumber, const QString &isoDate)
{
    return {
        {QStringLiteral("cashCode"), cashCode},
        {QStringLiteral("invoiceNumber"), invoiceNumber},
        {QStringLiteral("storeNumber"), storeNumber},
        {QStringLiteral("invoiceDate"), isoDate},
    };
}

QVariantMap ScriptedBackDialog::inputInvoiceInfo(const InputMultiTextParams &params)
{
    m_shown << params;
    return m_answers.isEmpty() ? QVariantMap() : m_answers.dequeue();
}
