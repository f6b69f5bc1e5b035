#include "interface.h"

#include "interfacedetail.h"
#include "responses/rounding.h"
#include "responses/traceability.h"

#include <goodsitem.h>

namespace tessaro {

using detail::traceabilityObject;

QJsonObject Interface::adviceNoteItem(const GoodsItem &position, int commonReason, bool withVat) const
{
    QJsonObject item{
        {QStringLiteral("sequenceNumber"), QString::number(position.getPosnum())},
        {QStringLiteral("subsysNo"), position.getCode()},
    };
    const int vatIndex = position.getActualVatIndex();
    double vatAmount = 0.0;
    if (vatIndex != -1) {
        const int vatCode = position.getVatCodesArray().value(vatIndex);
        item.insert(QStringLiteral("vatCode"), vatCodes.value(vatCode, vatCode));
        if (withVat)
            item.insert(QStringLiteral("vat"), position.getVatRate());
        vatAmount = position.getVatSumsArray().value(vatIndex);
    }
    item.insert(QStringLiteral("vatAmount"), vatAmount);
    item.insert(QStringLiteral("totalDiscountedGross"), roundToHundredths(position.getSumb()));
    item.insert(QStringLiteral("itemPriceNet"), roundToHundredths((position.getSumb() - vatAmount) / position.getQuantity()));
    item.insert(QStringLiteral("quantity"), position.getQuantity());

    // The position's own reason, when it has one, wins over the document's.
    const QVariant ownReason = position.getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"));
    bool isNumber = false;
    const int own = ownReason.toInt(&isNumber);
    item.insert(QStringLiteral("returnReason"), !ownReason.isNull() && isNumber ? own : commonReason);

    const QJsonObject traceability = adviceNoteTraceability(position);
    if (!traceability.isEmpty())
        item.insert(QStringLiteral("traceability"), traceability);
    return item;
}

QJsonObject Interface::adviceNoteTraceability(const GoodsItem &position) const
{
    auto record = position.getAdditionalData(additionalDataSection, QStringLiteral("traceability")).value<orvel::Traceability>();
    // A goods kit is marked by its barcode when the record has no product code.
    if (record.fz1162Field.isEmpty())
        record.fz1162Field = position.getGoodsKitBarcode();
    return traceabilityObject(record, true);
}

} // namespace tessaro
