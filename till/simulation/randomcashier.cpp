#include "randomcashier.h"

#include "emulatedtillconstants.h"

namespace till {

RandomCashier::RandomCashier(quint64 seed)
    : m_random(seed)
{
}

bool RandomCashier::chance(double probability)
{
    return std::uniform_real_distribution<double>(0.0, 1.0)(m_random) < probability;
}

void RandomCashier::read(const tr::Tr &, int)
{
}

int RandomCashier::choose(const tr::Tr &, const QStringList &items)
{
    if (items.isEmpty() || chance(0.2))
        return -1;
    return std::uniform_int_distribution<int>(0, int(items.size()) - 1)(m_random);
}

QString RandomCashier::text(const FormRequest::Field &field)
{
    QStringList candidates;
    if (field.isDate)
        candidates = {QStringLiteral("01.02.2024"), QStringLiteral("31.12.2023"), QStringLiteral("29.02.2024")};
    else if (field.name == QLatin1String("cashCode"))
        candidates = {QString::number(emulated::tillNo), QStringLiteral("0"), QStringLiteral("9999"), field.value};
    else if (field.name == QLatin1String("invoiceNumber"))
        candidates = {QStringLiteral("401"), QStringLiteral("0"), QStringLiteral("999999"), field.value};
    else
        candidates = {QString::number(emulated::storeNo), QString(), QStringLiteral("%1").arg(emulated::storeNo, 4, 10, QLatin1Char('0')),
                      field.value};
    const QString drawn = candidates.at(std::uniform_int_distribution<int>(0, int(candidates.size()) - 1)(m_random));
    // The form itself refuses a text that fails the field's check.
    return field.check(drawn).isEmpty() ? drawn : field.value;
}

std::optional<QVariantMap> RandomCashier::fill(const FormRequest &form)
{
    if (chance(0.15))
        return std::nullopt;
    QVariantMap texts;
    for (const FormRequest::Field &field : form.fields())
        texts.insert(field.name, text(field));
    return texts;
}

std::optional<double> RandomCashier::enter(NumberKind kind)
{
    if (chance(0.15))
        return std::nullopt;
    const QList<double> values = kind == Quantity ? QList<double>{1.0, 0.0004, 0.004, 2.0, 1.5}
                                                  : QList<double>{150.0, 0.004, 0.01, 99.99, 1.0};
    return values.at(std::uniform_int_distribution<int>(0, int(values.size()) - 1)(m_random));
}

} // namespace till
