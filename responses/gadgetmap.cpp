#include "gadgetmap.h"

#include <QMetaProperty>

#include <cmath>
#include <limits>
#include <optional>

namespace tessaro {

namespace {

// The whole number \a value stands for, when it is one: integers as they
// are, floating-point numbers without a fraction, and texts of integers.
std::optional<qint64> wholeNumber(const QVariant &value)
{
    bool ok = false;
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return value.toLongLong();
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        const qulonglong number = value.toULongLong();
        return number <= qulonglong(std::numeric_limits<qint64>::max()) ? std::optional<qint64>(qint64(number))
                                                                       : std::nullopt;
    }
    case QMetaType::Double:
    case QMetaType::Float: {
        // 2^63 itself is beyond qint64: the comparison is made on doubles.
        const double limit = std::ldexp(1.0, 63);
        const double number = value.toDouble();
        if (!std::isfinite(number) || std::trunc(number) != number || number < -limit || number >= limit)
            return std::nullopt;
        return qint64(number);
    }
    case QMetaType::QString:
    case QMetaType::QByteArray: {
        const qint64 number = value.toString().trimmed().toLongLong(&ok, 10);
        return ok ? std::optional<qint64>(number) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

// Whether \a value keeps its meaning when written into a property of \a type.
// The variant conversions alone would wrap an integer beyond the property's
// range, round a fraction to the nearest integer and turn NaN into 0 or "nan".
bool fits(const QVariant &value, QMetaType type)
{
    switch (type.id()) {
    case QMetaType::Int: {
        const std::optional<qint64> number = wholeNumber(value);
        return number && *number >= std::numeric_limits<int>::min() && *number <= std::numeric_limits<int>::max();
    }
    case QMetaType::Double: {
        bool ok = false;
        return std::isfinite(value.toDouble(&ok)) && ok;
    }
    case QMetaType::QString:
        return (value.typeId() != QMetaType::Double && value.typeId() != QMetaType::Float)
            || std::isfinite(value.toDouble());
    default:
        return true;
    }
}

} // namespace

QVariantMap GadgetMap::toMap(const QMetaObject &meta, const void *gadget)
{
    QVariantMap map;
    for (int i = 0; i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        map.insert(QString::fromLatin1(property.name()), property.readOnGadget(gadget));
    }
    return map;
}

void GadgetMap::fill(const QMetaObject &meta, void *gadget, const QVariantMap &map)
{
    for (int i = 0; i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        const auto entry = map.constFind(QString::fromLatin1(property.name()));
        // A null entry would reset the property to an empty value, not keep its default.
        if (entry != map.constEnd() && !entry->isNull() && fits(*entry, property.metaType()))
            property.writeOnGadget(gadget, *entry);
    }
}

} // namespace tessaro
