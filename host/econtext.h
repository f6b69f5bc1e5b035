#pragma once

/// The host's action contexts and the results of hooks and handlers.
class EContext
{
public:
    enum Code {
        Menu = 4,         ///< the main menu
        Document = 6,     ///< a document is open
        Payment = 7,      ///< the payment screen
        Any = 255,        ///< every context
    };

    enum Result {
        Stop = 0,         ///< refuse the action (the hook has told the cashier why)
        Error = 1,
        Continue = 2,     ///< let the action go on
        NotHandled = 3,   ///< nothing to do for this hook
    };
};
