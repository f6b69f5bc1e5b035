#pragma once

#include <QDate>
#include <QMetaType>
#include <QObject>
#include <QString>
#include <QVariantMap>

/// Identifies the sale that a return reverses: till, receipt (invoice) number,
/// store and date of the original sale.
///
/// A scanned sale identifier has 24 characters: store (4), date ddMMyyyy (8),
/// till (6) and invoice number (6), each zero-padded on the left. Only the till
/// and invoice number are taken from it; the till keeps its last 4 digits,
/// since the service's raw form pads the till to 4.
class InvoiceInfo
{
    Q_GADGET
    Q_PROPERTY(QString cashCode MEMBER cashCode)
    Q_PROPERTY(QString invoiceNumber MEMBER invoiceNumber)
    Q_PROPERTY(QString storeNumber MEMBER storeNumber)
    Q_PROPERTY(QDate invoiceDate MEMBER invoiceDate)

public:
    InvoiceInfo() = default;
    /// Parses a scanned identifier; any length but 24 leaves the empty value.
    explicit InvoiceInfo(const QString &text);

    /// The value whose properties are written from \a values by name; keys
    /// that name no property, and values that do not convert, are skipped.
    /// Dates convert from QDate, QDateTime or ISO text ("yyyy-MM-dd").
    static InvoiceInfo fromMap(const QVariantMap &values);
    /// Every property by name.
    QVariantMap toMap() const;

    /// Both the till and the invoice number are known.
    bool valid() const;

    /// The service's form: 0/0/<till, 4 digits>/<invoice, 6 digits>.
    QString invoiceIdRaw() const;
    /// invoiceIdRaw() without its slashes.
    QString invoiceId() const;
    /// The 24-character sale identifier.
    QString documentId() const;

    QString cashCode;
    QString invoiceNumber;
    QString storeNumber;
    QDate invoiceDate;
};

Q_DECLARE_METATYPE(InvoiceInfo)
