#include "simpleprogress.h"

SimpleProgress::SimpleProgress(const tr::Tr &message, std::function<void()> onClose)
    : m_message(message)
    , m_onClose(std::move(onClose))
{
}

SimpleProgress::~SimpleProgress()
{
    if (m_onClose)
        m_onClose();
}
