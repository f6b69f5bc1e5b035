#pragma once

#include "cashier.h"
#include "scenario.h"

#include <QList>

namespace till {

/// Passes every dialog to another cashier and writes down the answer given,
/// as a scenario's answers, so that a session drawn at random replays with a
/// scripted cashier.
class RecordingCashier : public Cashier
{
public:
    explicit RecordingCashier(Cashier *inner);

    /// The answers given so far, in order.
    QList<CashierAnswer> answers() const { return m_answers; }

    void read(const tr::Tr &message, int kind) override;
    int choose(const tr::Tr &title, const QStringList &items) override;
    std::optional<QVariantMap> fill(const FormRequest &form) override;
    std::optional<double> enter(NumberKind kind) override;

private:
    void record(CashierAnswer answer);

    Cashier *m_inner;
    QList<CashierAnswer> m_answers;
};

} // namespace till
