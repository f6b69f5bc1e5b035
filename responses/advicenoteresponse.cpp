#include "advicenoteresponse.h"

#include "gadgetmap.h"

namespace tessaro {

namespace {

void registerAdviceNoteResponse()
{
    GadgetMap::registerType<AdviceNoteResponse>();
}
Q_CONSTRUCTOR_FUNCTION(registerAdviceNoteResponse)

} // namespace

AdviceNoteResponse::AdviceNoteResponse(const Response &response)
    : Response(response)
{
}

AdviceNoteResponse AdviceNoteResponse::fromMap(const QVariantMap &map)
{
    return GadgetMap::fromMap<AdviceNoteResponse>(map);
}

QVariantMap AdviceNoteResponse::toMap() const
{
    return GadgetMap::toMap(*this);
}

QString AdviceNoteResponse::uuid() const
{
    return object.value(QLatin1String("uuid")).toString();
}

QString AdviceNoteResponse::key4() const
{
    const QJsonValue capitalised = object.value(QLatin1String("Key4"));
    if (capitalised.isString())
        return capitalised.toString();
    return object.value(QLatin1String("key4")).toString();
}

} // namespace tessaro
