#pragma once

/// The check the invoice form "InputInvoiceInfo" makes on each field, as QTest
/// data: "field", "text" (what the cashier typed) and "passes". The QML form
/// and the till's terminal form are both tested against this one table, so
/// the two cannot drift apart.
void addInvoiceFormChecks();
