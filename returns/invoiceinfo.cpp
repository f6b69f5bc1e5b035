#include "invoiceinfo.h"

#include <QMetaProperty>

namespace {
constexpr int IdentifierLength = 24;
constexpr int InvoiceWidth = 6;
constexpr int RawCashWidth = 4;
constexpr int StoreWidth = 4;
constexpr int CashWidth = 6;
const QLatin1Char Zero('0');
} // namespace

InvoiceInfo::InvoiceInfo(const QString &text)
{
    if (text.size() != IdentifierLength)
        return;
    cashCode = text.right(InvoiceWidth + RawCashWidth).left(RawCashWidth);
    invoiceNumber = text.right(InvoiceWidth);
}

InvoiceInfo InvoiceInfo::fromMap(const QVariantMap &values)
{
    InvoiceInfo info;
    const QMetaObject &meta = staticMetaObject;
    for (auto it = values.constBegin(); it != values.constEnd(); ++it) {
        const int index = meta.indexOfProperty(it.key().toUtf8().constData());
        if (index >= 0)
            meta.property(index).writeOnGadget(&info, it.value());
    }
    return info;
}

QVariantMap InvoiceInfo::toMap() const
{
    QVariantMap values;
    const QMetaObject &meta = staticMetaObject;
    for (int index = meta.propertyOffset(); index < meta.propertyCount(); ++index) {
        const QMetaProperty property = meta.property(index);
        values.insert(QString::fromLatin1(property.name()), property.readOnGadget(this));
    }
    return values;
}

bool InvoiceInfo::valid() const
{
    return !cashCode.isEmpty() && !invoiceNumber.isEmpty();
}

QString InvoiceInfo::invoiceIdRaw() const
{
    return QStringLiteral("0/0/%3/%4")
        .arg(cashCode.rightJustified(RawCashWidth, Zero), invoiceNumber.rightJustified(InvoiceWidth, Zero));
}

QString InvoiceInfo::invoiceId() const
{
    return invoiceIdRaw().remove(QLatin1Char('/'));
}

QString InvoiceInfo::documentId() const
{
    return QStringLiteral("%1%2%3%4")
        .arg(storeNumber.rightJustified(StoreWidth, Zero), invoiceDate.toString(QStringLiteral("ddMMyyyy")),
             cashCode.rightJustified(CashWidth, Zero), invoiceNumber.rightJustified(InvoiceWidth, Zero));
}
