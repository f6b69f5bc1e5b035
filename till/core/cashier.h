#pragma once

#include "formrequest.h"

#include <tr.h>

#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace till {

/// The person at the till: reads messages, picks from lists, fills forms and
/// types quantities and prices. A scenario's script plays the part in a run,
/// a person at the terminal in the shell.
class Cashier
{
public:
    enum NumberKind { Quantity, Price };

    virtual ~Cashier();

    /// A message was shown; \a kind 0 information, 1 error.
    virtual void read(const tr::Tr &message, int kind) = 0;
    /// The index of the chosen item, or -1 when the cashier cancels.
    virtual int choose(const tr::Tr &title, const QStringList &items) = 0;
    /// The typed text of every field, or nothing when the cashier cancels.
    /// Each text passes its field's check.
    virtual std::optional<QVariantMap> fill(const FormRequest &form) = 0;
    /// A quantity or price, or nothing when the cashier cancels.
    virtual std::optional<double> enter(NumberKind kind) = 0;
};

} // namespace till
