#pragma once

#include <dialog.h>

namespace till {

class ActionLog;
class Cashier;

/// The till's Dialog, installed through MockFactory<Dialog>: every message,
/// choice and progress the plug-in shows goes into the action log and to the
/// cashier, whose answer goes back to the plug-in.
class TillDialog : public Dialog
{
public:
    TillDialog(Cashier *cashier, ActionLog *log);

    void showMessage(const tr::Tr &message, int kind, int timeout) override;
    int showChoice(const tr::Tr &title, const QStringList &items) override;
    QSharedPointer<SimpleProgress> showProgress(const tr::Tr &message) override;

private:
    Cashier *m_cashier;
    ActionLog *m_log;
};

} // namespace till
