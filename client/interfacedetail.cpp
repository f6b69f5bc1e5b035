#include "interfacedetail.h"

#include "hostsdk/hostadapter.h"
#include "responses/traceability.h"

#include <abstractdocument.h>
#include <config.h>
#include <singleton.h>
#include <user.h>

#include <limits>

namespace tessaro::detail {

int milliseconds(qint64 seconds)
{
    constexpr qint64 most = std::numeric_limits<int>::max() / 1000;
    return int(qBound(-most, seconds, most) * 1000);
}

QString operatorCode(const QSharedPointer<User> &user)
{
    return user ? user->getCode() : QString();
}

QJsonObject traceabilityObject(const orvel::Traceability &record, bool withGtin)
{
    QList<QPair<const char *, QString>> fields{
        {"cdn", record.cdn},
        {"fz1162Field", record.fz1162Field},
        {"alcoMarkField", record.alcoMarkField},
        {"barcodeField", record.barcodeField},
        {"serialNumber", record.serialNumber},
        {"lotNumber", record.lotNumber},
    };
    if (withGtin)
        fields.append({"gtin", record.gtin});
    QJsonObject object;
    for (const auto &field : fields) {
        if (!field.second.isEmpty())
            object.insert(QLatin1String(field.first), field.second);
    }
    return object;
}

double roundingTotal(const AbstractDocument &document, const QSet<int> &modes)
{
    double total = hostsdk::roundingSum(document);
    const QList<QSharedPointer<DocumentImpact>> impacts = hostsdk::impacts(document);
    for (const QSharedPointer<DocumentImpact> &impact : impacts) {
        if (!impact)
            continue;
        const QList<DocumentImpactDetail> details = impact->getTotals();
        for (const DocumentImpactDetail &detail : details) {
            if (detail.checkDiscountMode(modes))
                total += detail.getDiscountSum();
        }
    }
    return total;
}

} // namespace tessaro::detail
