#pragma once

#include <QFlags>

/// Where the cashier's input may come from.
class EInput
{
public:
    enum Source {
        Keyboard = 0x1,
        Scanner = 0x2,
        Card = 0x4,
    };
    Q_DECLARE_FLAGS(Sources, Source)
};

Q_DECLARE_OPERATORS_FOR_FLAGS(EInput::Sources)
