// The original-invoice identifier: arbitrary text parsed as a scanned
// identifier, and arbitrary pieces set by property name as the invoice dialog
// sets them, rendered in the three identifier forms.
//
// Input lines: the scanned text, then store number, date (ddMMyyyy), till
// number and invoice number of a value filled piece by piece.
#include "fuzzsupport.h"
#include "lineinput.h"

#include "returns/invoiceinfo.h"

#include <QMetaProperty>

#include <cstddef>
#include <cstdint>

namespace {

const QLatin1Char Zero('0');

void checkForms(const InvoiceInfo &info)
{
    const QString raw = info.invoiceIdRaw();
    fuzzRequire(raw == QStringLiteral("0/0/") + info.cashCode.rightJustified(4, Zero) + QLatin1Char('/')
                           + info.invoiceNumber.rightJustified(6, Zero),
                "raw form is 0/0/<till>/<invoice>");
    fuzzRequire(info.invoiceId() == QString(raw).remove(QLatin1Char('/')), "compact form is the raw form without slashes");
    info.documentId();
}

void checkScanned(const QString &text)
{
    const InvoiceInfo info(text);
    checkForms(info);
    fuzzRequire(info.storeNumber.isEmpty() && info.invoiceDate.isNull(), "parsing sets no store and no date");
    if (text.size() != 24) {
        fuzzRequire(!info.valid() && info.invoiceIdRaw() == QLatin1String("0/0/0000/000000"),
                    "any length but 24 gives the empty value");
        return;
    }
    fuzzRequire(info.valid(), "a 24-character text is valid");
    fuzzRequire(info.cashCode == text.mid(14, 4) && info.invoiceNumber == text.right(6),
                "till is characters 15-18, invoice the last 6");
}

void setProperty(InvoiceInfo &info, const char *name, const QVariant &value)
{
    const QMetaObject &meta = InvoiceInfo::staticMetaObject;
    fuzzRequire(meta.property(meta.indexOfProperty(name)).writeOnGadget(&info, value), "property write");
}

void checkAssembled(LineInput &input)
{
    InvoiceInfo info;
    const QString store = QString::fromUtf8(input.takeLine());
    const QDate date = QDate::fromString(QString::fromUtf8(input.takeLine()), QStringLiteral("ddMMyyyy"));
    const QString cash = QString::fromUtf8(input.takeLine());
    const QString invoice = QString::fromUtf8(input.takeLine());
    setProperty(info, "storeNumber", store);
    setProperty(info, "invoiceDate", date);
    setProperty(info, "cashCode", cash);
    setProperty(info, "invoiceNumber", invoice);
    checkForms(info);

    const QString id = info.documentId();
    const bool standardWidths = store.size() <= 4 && cash.size() <= 6 && invoice.size() <= 6 && date.isValid()
        && date.year() >= 1000 && date.year() <= 9999;
    if (!standardWidths)
        return;
    fuzzRequire(id.size() == 24, "pieces of standard width give 24 characters");
    const InvoiceInfo scanned(id);
    fuzzRequire(scanned.cashCode == cash.rightJustified(6, Zero).right(4)
                    && scanned.invoiceNumber == invoice.rightJustified(6, Zero),
                "the document identifier scans back to its till and invoice");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    LineInput input(data, size);
    checkScanned(QString::fromUtf8(input.takeLine()));
    checkAssembled(input);
    return 0;
}
