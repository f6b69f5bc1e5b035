#pragma once

#include "emulator/cartline.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace tessaro::emulator {

/// One cart of the service with the rules by which updates change it.
///
/// Status: "init" when created, "collecting" after the first update, then
/// "PAID" or "CANCELLED", after which it takes no more changes. Every change
/// leaves the messages that the next answer shows under "messages".
class Cart
{
public:
    Cart() = default;
    Cart(const QString &uuid, int storeNo, int tillNo, int lTaNmbr, const QString &invoiceId);

    QString uuid() const;
    int storeNo() const;
    int tillNo() const;
    int lTaNmbr() const;
    QString invoiceId() const;
    QString status() const;
    /// PAID or CANCELLED.
    bool isClosed() const;
    QList<CartLine> lines() const;
    QStringList coupons() const;
    QJsonObject customer() const;
    /// The body of the cart_status request that closed the cart.
    QJsonObject statusBody() const;
    QStringList messages() const;

    /// Appends a line and gives it the next sequence number, which it returns.
    int addLine(CartLine line);
    /// Whether a new quantity removes the line: below 0.0005, the service's
    /// rounding of zero.
    static bool isRemoval(double quantity);

    /// New quantity of a line; a removal quantity removes the line.
    /// False when the cart has no line with that number.
    bool setQuantity(int sequenceNumber, double quantity);
    /// New unit price of a line (the list price stays, so the difference shows
    /// as discount). False when the cart has no line with that number.
    bool setPrice(int sequenceNumber, double price, int reasonCode);
    /// False when the coupon is on the cart already.
    bool addCoupon(const QString &number);
    /// False when the coupon is not on the cart.
    bool removeCoupon(const QString &number);
    void setCustomer(const QJsonObject &customer);
    /// Status "collecting", unless the cart is closed.
    void markCollecting();
    /// Closes the cart with "PAID" or "CANCELLED" and keeps the request body.
    void close(const QString &status, const QJsonObject &body);
    /// Replaces the messages of the last change.
    void setMessages(const QStringList &messages);

    double totalGross() const;
    /// The customer's points ("points" of the customer record), at most the
    /// cart's gross total in whole units; 0 without a customer.
    int pointsToRredeem() const;

    /// The cart answer: "uuid", "status", "statusCode" 0, "storeNo", "tillNo",
    /// "lTaNmbr", "invoiceID", "items", "totalItems", "totalGross",
    /// "pointsToRredeem", "coupons", "customer" (when set), "messages" [{"text"}].
    QJsonObject toJson() const;

private:
    QList<CartLine>::iterator findLine(int sequenceNumber);

    QString m_uuid;
    int m_storeNo = 0;
    int m_tillNo = 0;
    int m_lTaNmbr = 0;
    QString m_invoiceId;
    QString m_status = QStringLiteral("init");
    QList<CartLine> m_lines;
    int m_lastSequenceNumber = 0;
    QStringList m_coupons;
    QJsonObject m_customer;
    QJsonObject m_statusBody;
    QStringList m_messages;
};

} // namespace tessaro::emulator
