#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>
#include <QVariantMap>

namespace orvel {

/// Where a marked item comes from, as the service reports it for a cart line
/// and as the till keeps it on a position: the property names are the
/// service's JSON keys.
class Traceability
{
    Q_GADGET
    Q_PROPERTY(QString cdn MEMBER cdn)
    Q_PROPERTY(QString cdnOrig MEMBER cdnOrig)
    Q_PROPERTY(QString fz1162Field MEMBER fz1162Field)
    Q_PROPERTY(QString alcoMarkField MEMBER alcoMarkField)
    Q_PROPERTY(QString barcodeField MEMBER barcodeField)
    Q_PROPERTY(QString serialNumber MEMBER serialNumber)
    Q_PROPERTY(QString lotNumber MEMBER lotNumber)
    Q_PROPERTY(QString gtin MEMBER gtin)

public:
    /// Sets each property named in \a map; other names are ignored.
    static Traceability fromMap(const QVariantMap &map);
    /// One entry per property, under its name.
    QVariantMap toMap() const;

    /// The number that the leading digits of cdnOrig give; 0 when there are
    /// none or they do not fit an int.
    int cdnOrigInt() const;

    bool operator==(const Traceability &other) const;
    bool operator!=(const Traceability &other) const { return !(*this == other); }

    QString cdn;
    QString fz1162Field;    ///< fiscal tag 1162, the product code
    QString alcoMarkField;  ///< alcohol excise mark
    QString barcodeField;
    QString serialNumber;
    QString cdnOrig;
    QString lotNumber;
    QString gtin;
};

} // namespace orvel

Q_DECLARE_METATYPE(orvel::Traceability)
