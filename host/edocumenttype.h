#pragma once

/// The host's document types, by number.
enum EDocumentType {
    Sale = 1,
    Back = 2,
    CashIn = 3,
    CashOut = 4,
    BackBySale = 25,
};
