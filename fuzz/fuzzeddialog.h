#pragma once

#include <dialog.h>

class FuzzedInput;

/// The cashier at the host's dialogs, answering from the fuzzer's bytes:
/// messages are confirmed, and a choice is any index, also one outside the
/// list or a cancel.
class FuzzedDialog : public Dialog
{
public:
    explicit FuzzedDialog(FuzzedInput *input);

    void showMessage(const tr::Tr &message, int kind, int timeout) override;
    int showChoice(const tr::Tr &title, const QStringList &items) override;

private:
    FuzzedInput *m_input;
};
