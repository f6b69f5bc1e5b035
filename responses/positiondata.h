#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>
#include <QVariantMap>

namespace tessaro {

/// What travels with one sale position between the code that adds it and the
/// cart-item requests: its article and line, a price change, the authorised
/// sale of a blocked item, and the reason for an entry by code.
///
/// Kept on the position as a map of its properties (toMap(), fromMap()).
class PositionData
{
    Q_GADGET
    Q_PROPERTY(QString artNo MEMBER artNo)
    Q_PROPERTY(int sequenceNumber MEMBER sequenceNumber)
    Q_PROPERTY(int priceModifyReason MEMBER priceModifyReason)
    Q_PROPERTY(double targetPrice MEMBER targetPrice)
    Q_PROPERTY(bool wholeLine MEMBER wholeLine)
    Q_PROPERTY(int eanReason MEMBER eanReason)
    Q_PROPERTY(int blockStatusCode MEMBER blockStatusCode)
    Q_PROPERTY(QString blockActorCode MEMBER blockActorCode)

public:
    /// Sets each property named in \a map; the others keep their defaults.
    static PositionData fromMap(const QVariantMap &map);
    /// One entry per property, under its name.
    QVariantMap toMap() const;

    bool operator==(const PositionData &other) const;
    bool operator!=(const PositionData &other) const { return !(*this == other); }

    QString artNo;
    /// The line's number on the cart; -1 while not known.
    int sequenceNumber = -1;
    /// Reason code of a manual price change.
    int priceModifyReason = 0;
    /// The price that the price change asks for.
    double targetPrice = 0.0;
    /// The price change applies to the whole line rather than to one unit.
    bool wholeLine = false;
    /// The reason for an entry by code; negative while none is chosen.
    int eanReason = -1;
    /// The item's block status; -1 while none is reported.
    int blockStatusCode = -1;
    /// The operator who authorised selling a blocked item; empty when none did.
    QString blockActorCode;
};

} // namespace tessaro

Q_DECLARE_METATYPE(tessaro::PositionData)
