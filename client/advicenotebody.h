#pragma once

// AdviceNoteBody: the body of a return's advice note, as the service takes it
// and as its digest is taken.

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>

class GoodsItem;

namespace tessaro {

/// The body of an advice note, which tells the service what a return gives
/// back: a header with the till, the store, the customer, the sale returned
/// against and the payments paid out, and one item per returned position with
/// its VAT, prices, reason and traceability.
///
/// Interface settles the header's parts and adds the positions in the
/// document's order; toJson() is what is sent and digested, so every member
/// of it counts.
class AdviceNoteBody
{
public:
    /// What, besides the position itself, settles a position's item.
    struct ItemRules
    {
        /// The till's VAT codes to the service's; a code without an entry goes as it is.
        QMap<int, int> vatCodes;
        /// The section word under which positions carry their traceability record.
        QString traceabilitySection;
        /// Whether items carry their VAT rate: a plain return's do, a return by sale's do not.
        bool withVat = false;
        /// The document's return reason, for a position without one of its own.
        int commonReason = 0;
    };

    /// A body with the header of a return at the till \a tillNo of the store
    /// \a store by the customer whose card has the barcode \a customerNumber,
    /// against the sale \a originalInvoice; no items or payments yet.
    AdviceNoteBody(int tillNo, int store, const QString &customerNumber, const QJsonObject &originalInvoice);

    /// Appends the item of \a position, settled by \a rules.
    void addItem(const GoodsItem &position, const ItemRules &rules);
    /// The payments paid out, as Interface::getBackPayments() gives them.
    void setPayments(const QJsonArray &payments);

    /// {"header": {…}, "items": […]}.
    QJsonObject toJson() const;

private:
    /// One element of "items".
    static QJsonObject positionItem(const GoodsItem &position, const ItemRules &rules);
    /// The item's "traceability": the position's record, with the goods-kit
    /// barcode for a missing product code, and the GTIN.
    static QJsonObject positionTraceability(const GoodsItem &position, const QString &section);

    QJsonObject m_header;
    QJsonArray m_items;
};

} // namespace tessaro
