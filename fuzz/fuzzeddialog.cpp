#include "fuzzeddialog.h"

#include "fuzzedinput.h"

FuzzedDialog::FuzzedDialog(FuzzedInput *input)
    : m_input(input)
{
}

void FuzzedDialog::showMessage(const tr::Tr &, int, int)
{
}

int FuzzedDialog::showChoice(const tr::Tr &, const QStringList &items)
{
    return m_input->pick(4) == 0 ? m_input->integer() : m_input->pick(int(items.size()) + 1) - 1;
}
