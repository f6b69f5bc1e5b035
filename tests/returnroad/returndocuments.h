#pragma once

#include <backbysaledocument.h>
#include <backdocument.h>

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QSharedPointer>
#include <QString>
#include <QVariantMap>

/// The returns that the return-road tests close, as the till holds them at
/// that moment, and the client settings they are read with. Built from host
/// types only, so that tests of the loaded plug-in module can use them too.
///
/// Both returns carry the same two positions: position 1 (article 100200,
/// 2 pieces, 250.00 with VAT code 3 at 20 %, its own reason 3 and a
/// traceability record) and position 2 (article 300400, 1 piece, 99.99 without
/// VAT, no reason of its own, a goods-kit barcode). The common reason is 5 and
/// the customer card has 18 digits. The plain return (349.99) is paid out by
/// card (200) and twice in cash (100 and 50), with 0.30 of change and 0.29 of
/// rounding; the return by sale is paid out by card only. Each carries what
/// binding it to the plug-in needs to name its sale without asking.
class ReturnDocuments
{
public:
    /// The sale both returns refer to, as a return keeps it ("invoiceInfo"):
    /// store 0007, till 0012, invoice 000345 of 1 February 2024.
    static QVariantMap invoiceInfo();
    static QSharedPointer<BackDocument> plainReturn();
    static QSharedPointer<BackBySaleDocument> returnBySale();

    /// A plain return as the cashier starts it: customer card and common
    /// reason, no sale named, no positions, no payments.
    static QSharedPointer<BackDocument> startPlainReturn();
    /// The two positions, without reasons of their own.
    static void addPositions(AbstractDocument &document);
    /// The plain return's payments and rounding.
    static void payPlainReturn(AbstractDocument &document);

    /// The client settings the bodies are built with: till VAT code 3 is the
    /// service's 5, till payment code 3 (card) the service's 2.
    static QMap<QString, QString> clientSettings();

    /// A position of \a quantity pieces worth \a sum, without VAT.
    static QSharedPointer<GoodsItem> position(int posnum, const QString &code, double quantity, double sum);
    /// A payment of \a amount in currency \a code of currency type \a valutType.
    static QSharedPointer<MoneyItem> payment(int code, int valutType, double amount, bool change = false);
    /// Gives position 1 its own return reason, 3.
    static void giveOwnReason(AbstractDocument &document);

    /// The expected advice-note body \a fileName of tests/data/advicenote, as its bytes.
    static QByteArray expectedFile(const QString &fileName);
    /// The same, read as a JSON object.
    static QJsonObject expectedBody(const QString &fileName);

    static const QString customerCard;
    /// The digests of the expected bodies, worked out with md5sum (see
    /// tests/data/advicenote/README).
    static const QString plainReturnDigest;
    static const QString returnBySaleDigest;

private:
    static void start(AbstractDocument &document, const QString &id);
};
