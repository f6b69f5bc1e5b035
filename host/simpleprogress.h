#pragma once

#include "tr.h"

#include <functional>

/// A progress message shown while work runs; it closes when destroyed.
class SimpleProgress
{
public:
    explicit SimpleProgress(const tr::Tr &message, std::function<void()> onClose = nullptr);
    ~SimpleProgress();
    SimpleProgress(const SimpleProgress &) = delete;
    SimpleProgress &operator=(const SimpleProgress &) = delete;

    tr::Tr message() const { return m_message; }

private:
    tr::Tr m_message;
    std::function<void()> m_onClose;
};
