#pragma once

#include <QMetaType>

/// A quantity entered by the cashier.
class Quantity
{
public:
    explicit Quantity(double value = 0.0);
    double value() const { return m_value; }

private:
    double m_value;
};

Q_DECLARE_METATYPE(Quantity)
