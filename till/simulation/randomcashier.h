#pragma once

#include "cashier.h"

#include <random>

namespace till {

/// A cashier whose answers are drawn from a seed: picks from lists or
/// cancels, fills forms with texts that pass each field's check but that the
/// plug-in may still find wanting (zeros, empty store numbers), types
/// quantities and prices from the values that matter (1, 0.0004, 0.004…).
class RandomCashier : public Cashier
{
public:
    explicit RandomCashier(quint64 seed);

    void read(const tr::Tr &message, int kind) override;
    int choose(const tr::Tr &title, const QStringList &items) override;
    std::optional<QVariantMap> fill(const FormRequest &form) override;
    std::optional<double> enter(NumberKind kind) override;

private:
    bool chance(double probability);
    QString text(const FormRequest::Field &field);

    std::mt19937_64 m_random;
};

} // namespace till
