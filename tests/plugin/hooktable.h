#pragma once

/// The hooks the plug-in registers in init(), in registration order, as
/// QTest data: "row" (from 1), "context", "actionType", "order", "priority", "member" and
/// "returnsOnly" (switched off while an ordinary document is bound).
void addHookTable();
