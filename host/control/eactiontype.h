#pragma once

namespace control {

/// The host's cashier actions, by number.
enum EActionType {
    AddPayment = 4,
    SelectBackReason = 7,
    BackBySale = 8,
    ExitToMenu = 58,
    InputPrice = 88,
    InputQuantity = 101,
    StornoAll = 131,
    Input = 192,
    AddCoupon = 198,
    AddPosition = 201,
    AttemptToDocumentClose = 211,
    AttemptToBackBySale = 227,
};

} // namespace control
