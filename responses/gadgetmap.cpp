#include "gadgetmap.h"

#include <QMetaProperty>

namespace tessaro {

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
        if (entry != map.constEnd() && !entry->isNull())
            property.writeOnGadget(gadget, *entry);
    }
}

} // namespace tessaro
