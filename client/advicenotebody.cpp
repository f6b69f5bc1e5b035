// AdviceNoteBody: the body of a return's advice note, as the service takes it
// and as its digest is taken.

#include "advicenotebody.h"

#include "hostsdk/hostadapter.h"
#include "interfacedetail.h"
#include "responses/rounding.h"
#include "responses/traceability.h"

#include <goodsitem.h>

namespace tessaro {

using detail::traceabilityObject;

AdviceNoteBody::AdviceNoteBody(int tillNo, int store, const QString &customerNumber, const QJsonObject &originalInvoice)
    : m_header{
          {QStringLiteral("transactionType"), 2},
          {QStringLiteral("tillNo"), tillNo},
          {QStringLiteral("store"), store},
          {QStringLiteral("customer"), QJsonObject{{QStringLiteral("customerNumber"), customerNumber}}},
          {QStringLiteral("originalInvoice"), originalInvoice},
      }
{
}

void AdviceNoteBody::addItem(const GoodsItem &position, const ItemRules &rules)
{
    m_items.append(positionItem(position, rules));
}

void AdviceNoteBody::setPayments(const QJsonArray &payments)
{
    m_header.insert(QStringLiteral("payments"), payments);
}

QJsonObject AdviceNoteBody::toJson() const
{
    return QJsonObject{{QStringLiteral("header"), m_header}, {QStringLiteral("items"), m_items}};
}

QJsonObject AdviceNoteBody::positionItem(const GoodsItem &position, const ItemRules &rules)
{
    QJsonObject item{
        {QStringLiteral("sequenceNumber"), QString::number(position.getPosnum())},
        {QStringLiteral("subsysNo"), position.getCode()},
    };
    const int vatIndex = position.getActualVatIndex();
    double vatAmount = 0.0;
    if (vatIndex != -1) {
        const int vatCode = position.getVatCodesArray().value(vatIndex);
        item.insert(QStringLiteral("vatCode"), rules.vatCodes.value(vatCode, vatCode));
        if (rules.withVat)
            item.insert(QStringLiteral("vat"), position.getVatRate());
        vatAmount = position.getVatSumsArray().value(vatIndex);
    }
    item.insert(QStringLiteral("vatAmount"), vatAmount);
    item.insert(QStringLiteral("totalDiscountedGross"), roundToHundredths(position.getSumb()));
    item.insert(QStringLiteral("itemPriceNet"), roundToHundredths((position.getSumb() - vatAmount) / position.getQuantity()));
    item.insert(QStringLiteral("quantity"), position.getQuantity());

    // The position's own reason, when it has one, wins over the document's.
    const QVariant ownReason = hostsdk::additionalData(position, QStringLiteral("tessaro"), QStringLiteral("backReason"));
    bool isNumber = false;
    const int own = ownReason.toInt(&isNumber);
    item.insert(QStringLiteral("returnReason"), !ownReason.isNull() && isNumber ? own : rules.commonReason);

    const QJsonObject traceability = positionTraceability(position, rules.traceabilitySection);
    if (!traceability.isEmpty())
        item.insert(QStringLiteral("traceability"), traceability);
    return item;
}

QJsonObject AdviceNoteBody::positionTraceability(const GoodsItem &position, const QString &section)
{
    auto record = hostsdk::additionalData(position, section, QStringLiteral("traceability")).value<orvel::Traceability>();
    // A goods kit is marked by its barcode when the record has no product code.
    if (record.fz1162Field.isEmpty())
        record.fz1162Field = position.getGoodsKitBarcode();
    return traceabilityObject(record, true);
}

} // namespace tessaro
