#include "traceability.h"

#include "gadgetmap.h"

namespace orvel {

namespace {

void registerTraceability()
{
    tessaro::GadgetMap::registerType<Traceability>();
}
Q_CONSTRUCTOR_FUNCTION(registerTraceability)

} // namespace

Traceability Traceability::fromMap(const QVariantMap &map)
{
    return tessaro::GadgetMap::fromMap<Traceability>(map);
}

QVariantMap Traceability::toMap() const
{
    return tessaro::GadgetMap::toMap(*this);
}

int Traceability::cdnOrigInt() const
{
    qsizetype digits = 0;
    while (digits < cdnOrig.size() && cdnOrig.at(digits) >= QLatin1Char('0') && cdnOrig.at(digits) <= QLatin1Char('9'))
        ++digits;
    bool ok = false;
    const int number = cdnOrig.left(digits).toInt(&ok, 10);
    return ok ? number : 0;
}

bool Traceability::operator==(const Traceability &other) const
{
    return cdn == other.cdn && fz1162Field == other.fz1162Field && alcoMarkField == other.alcoMarkField
        && barcodeField == other.barcodeField && serialNumber == other.serialNumber && cdnOrig == other.cdnOrig
        && lotNumber == other.lotNumber && gtin == other.gtin;
}

} // namespace orvel
