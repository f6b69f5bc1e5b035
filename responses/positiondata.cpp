#include "positiondata.h"

#include "gadgetmap.h"

namespace tessaro {

namespace {

void registerPositionData()
{
    GadgetMap::registerType<PositionData>();
}
Q_CONSTRUCTOR_FUNCTION(registerPositionData)

} // namespace

PositionData PositionData::fromMap(const QVariantMap &map)
{
    return GadgetMap::fromMap<PositionData>(map);
}

QVariantMap PositionData::toMap() const
{
    return GadgetMap::toMap(*this);
}

bool PositionData::operator==(const PositionData &other) const
{
    return artNo == other.artNo && sequenceNumber == other.sequenceNumber
        && priceModifyReason == other.priceModifyReason && targetPrice == other.targetPrice
        && wholeLine == other.wholeLine && eanReason == other.eanReason
        && blockStatusCode == other.blockStatusCode && blockActorCode == other.blockActorCode;
}

} // namespace tessaro
