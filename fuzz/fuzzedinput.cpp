#include "fuzzedinput.h"

#include <QDate>
#include <QVariantList>
#include <QVariantMap>

#include <fuzzer/FuzzedDataProvider.h>

#include <limits>

FuzzedInput::FuzzedInput(const uint8_t *data, size_t size)
    : m_bytes(std::make_unique<FuzzedDataProvider>(data, size))
{
}

FuzzedInput::~FuzzedInput() = default;

bool FuzzedInput::flag()
{
    return m_bytes->ConsumeBool();
}

int FuzzedInput::pick(int count)
{
    return count <= 1 ? 0 : m_bytes->ConsumeIntegralInRange<int>(0, count - 1);
}

int FuzzedInput::integer()
{
    switch (pick(4)) {
    case 0:
        return pick(8);
    case 1:
        return m_bytes->ConsumeIntegralInRange<int>(-3, 40);
    case 2:
        return m_bytes->ConsumeIntegral<int>();
    default:
        return pick(2) == 0 ? std::numeric_limits<int>::max() : std::numeric_limits<int>::min();
    }
}

double FuzzedInput::number()
{
    switch (pick(8)) {
    case 0:
        return pick(4);
    case 1:
        return m_bytes->ConsumeIntegralInRange<int>(-100000, 100000) / 100.0;
    case 2:
        return std::numeric_limits<double>::quiet_NaN();
    case 3:
        return flag() ? std::numeric_limits<double>::infinity() : -std::numeric_limits<double>::infinity();
    case 4:
        return flag() ? 1e300 : -1e19;
    case 5:
        return flag() ? 0.0004 : 0.004;
    case 6:
        return std::numeric_limits<double>::denorm_min();
    default:
        return m_bytes->ConsumeFloatingPoint<double>();
    }
}

QString FuzzedInput::text(size_t length)
{
    return QString::fromStdString(m_bytes->ConsumeRandomLengthString(length));
}

QString FuzzedInput::digits(int length)
{
    QString result;
    result.reserve(length);
    for (int i = 0; i < length; ++i)
        result += QChar(u'0' + pick(10));
    return result;
}

QVariant FuzzedInput::value()
{
    switch (pick(10)) {
    case 0:
        return QVariant();
    case 1:
        return flag();
    case 2:
        return integer();
    case 3:
        return qlonglong(m_bytes->ConsumeIntegral<qint64>());
    case 4:
        return number();
    case 5:
        return QDate(m_bytes->ConsumeIntegralInRange<int>(-10000, 10000), pick(14), pick(33));
    case 6:
        return QVariantList{text(8), integer()};
    case 7:
        return QVariantMap{{text(8), text(8)}};
    case 8:
        return numberText();
    default:
        return text();
    }
}

QString FuzzedInput::numberText()
{
    switch (pick(4)) {
    case 0:
        return QString::number(integer());
    case 1:
        return QString::number(number(), 'g', 17);
    case 2:
        return QString::number(m_bytes->ConsumeIntegral<qint64>());
    default:
        return text(12);
    }
}

bool FuzzedInput::exhausted() const
{
    return m_bytes->remaining_bytes() == 0;
}
