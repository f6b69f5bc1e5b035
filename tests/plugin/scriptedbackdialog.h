#pragma once

#include "returns/backdialog.h"

#include <inputmultitextparams.h>

#include <QList>
#include <QQueue>

/// The invoice dialog for tests: records every input it is shown and answers
/// from a queue, as a cashier would. With no answer queued the input is
/// cancelled.
class ScriptedBackDialog : public tessaro::BackDialog
{
public:
    void enqueueAnswer(const QVariantMap &answer) { m_answers.enqueue(answer); }
    /// A cashier's answer to the invoice input; \a isoDate as "yyyy-MM-dd".
    static QVariantMap invoice(const QString &cashCode, const QString &invoiceNumber, const QString &storeNumber,
                               const QString &isoDate);

    QVariantMap inputInvoiceInfo(const InputMultiTextParams &params) override;

    QList<InputMultiTextParams> shown() const { return m_shown; }

private:
    QQueue<QVariantMap> m_answers;
    QList<InputMultiTextParams> m_shown;
};
