#pragma once

#include <QMetaObject>
#include <QMetaType>
#include <QVariantMap>

namespace tessaro {

/// Converts value types with reflected properties (gadgets) to and from
/// name-to-value maps: one entry per property, under the property's name.
///
/// This is how such values are kept on documents and positions, whose stored
/// form knows only plain values and maps.
class GadgetMap
{
public:
    template <typename T>
    static QVariantMap toMap(const T &gadget)
    {
        return toMap(T::staticMetaObject, &gadget);
    }

    /// A default value of \a T with every property named in \a map written;
    /// unknown names are ignored, and a property whose entry is missing or does
    /// not fit the property's type keeps its default: an int takes only a
    /// whole number within its range (a double without a fraction, or the
    /// text of one, included), a double and a text no NaN or infinity.
    template <typename T>
    static T fromMap(const QVariantMap &map)
    {
        T gadget;
        fill(T::staticMetaObject, &gadget, map);
        return gadget;
    }

    /// Registers \a T by name with the meta-type system, together with its
    /// conversions to and from a map, so a variant holding either converts.
    template <typename T>
    static void registerType()
    {
        qRegisterMetaType<T>();
        QMetaType::registerConverter<T, QVariantMap>(&GadgetMap::toMap<T>);
        QMetaType::registerConverter<QVariantMap, T>(&GadgetMap::fromMap<T>);
    }

    static QVariantMap toMap(const QMetaObject &meta, const void *gadget);
    static void fill(const QMetaObject &meta, void *gadget, const QVariantMap &map);
};

} // namespace tessaro
