#include "emulator/cart.h"

#include "emulator/money.h"

#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace tessaro::emulator {

namespace {
constexpr double removalQuantity = 0.0005;
}

Cart::Cart(const QString &uuid, int storeNo, int tillNo, int lTaNmbr, const QString &invoiceId)
    : m_uuid(uuid)
    , m_storeNo(storeNo)
    , m_tillNo(tillNo)
    , m_lTaNmbr(lTaNmbr)
    , m_invoiceId(invoiceId)
{
}

QString Cart::uuid() const
{
    return m_uuid;
}

int Cart::storeNo() const
{
    return m_storeNo;
}

int Cart::tillNo() const
{
    return m_tillNo;
}

int Cart::lTaNmbr() const
{
    return m_lTaNmbr;
}

QString Cart::invoiceId() const
{
    return m_invoiceId;
}

QString Cart::status() const
{
    return m_status;
}

bool Cart::isClosed() const
{
    return m_status == QLatin1String("PAID") || m_status == QLatin1String("CANCELLED");
}

QList<CartLine> Cart::lines() const
{
    return m_lines;
}

QStringList Cart::coupons() const
{
    return m_coupons;
}

QJsonObject Cart::customer() const
{
    return m_customer;
}

QJsonObject Cart::statusBody() const
{
    return m_statusBody;
}

QStringList Cart::messages() const
{
    return m_messages;
}

int Cart::addLine(CartLine line)
{
    line.sequenceNumber = ++m_lastSequenceNumber;
    m_lines.append(line);
    return line.sequenceNumber;
}

QList<CartLine>::iterator Cart::findLine(int sequenceNumber)
{
    return std::find_if(m_lines.begin(), m_lines.end(), [sequenceNumber](const CartLine &line) {
        return line.sequenceNumber == sequenceNumber;
    });
}

bool Cart::isRemoval(double quantity)
{
    return std::abs(quantity) < removalQuantity;
}

bool Cart::setQuantity(int sequenceNumber, double quantity)
{
    const auto line = findLine(sequenceNumber);
    if (line == m_lines.end())
        return false;
    if (isRemoval(quantity))
        m_lines.erase(line);
    else
        line->quantity = quantity;
    return true;
}

bool Cart::setPrice(int sequenceNumber, double price, int reasonCode)
{
    const auto line = findLine(sequenceNumber);
    if (line == m_lines.end())
        return false;
    line->unitPrice = price;
    line->priceReasonCode = reasonCode;
    return true;
}

bool Cart::addCoupon(const QString &number)
{
    if (m_coupons.contains(number))
        return false;
    m_coupons.append(number);
    return true;
}

bool Cart::removeCoupon(const QString &number)
{
    return m_coupons.removeAll(number) > 0;
}

void Cart::setCustomer(const QJsonObject &customer)
{
    m_customer = customer;
}

void Cart::markCollecting()
{
    if (!isClosed())
        m_status = QStringLiteral("collecting");
}

void Cart::close(const QString &status, const QJsonObject &body)
{
    m_status = status;
    m_statusBody = body;
}

void Cart::setMessages(const QStringList &messages)
{
    m_messages = messages;
}

double Cart::totalGross() const
{
    double total = 0.0;
    for (const CartLine &line : m_lines)
        total += line.totalPriceGross();
    return Money::round(total);
}

int Cart::pointsToRredeem() const
{
    if (m_customer.isEmpty())
        return 0;
    const int points = m_customer.value(QStringLiteral("points")).toInt();
    // Compared as doubles: a total beyond the int range must not be converted.
    return int(std::max(0.0, std::min(double(points), std::floor(totalGross()))));
}

QJsonObject Cart::toJson() const
{
    QJsonArray items;
    for (const CartLine &line : m_lines)
        items.append(line.toJson());
    QJsonArray coupons;
    for (const QString &coupon : m_coupons)
        coupons.append(QJsonObject{{QStringLiteral("number"), coupon}});
    QJsonArray messages;
    for (const QString &text : m_messages)
        messages.append(QJsonObject{{QStringLiteral("text"), text}});

    QJsonObject object{
        {QStringLiteral("uuid"), m_uuid},
        {QStringLiteral("status"), m_status},
        {QStringLiteral("statusCode"), 0},
        {QStringLiteral("storeNo"), m_storeNo},
        {QStringLiteral("tillNo"), m_tillNo},
        {QStringLiteral("lTaNmbr"), m_lTaNmbr},
        {QStringLiteral("invoiceID"), m_invoiceId},
        {QStringLiteral("items"), items},
        {QStringLiteral("totalItems"), int(m_lines.size())},
        {QStringLiteral("totalGross"), totalGross()},
        {QStringLiteral("pointsToRredeem"), pointsToRredeem()},
        {QStringLiteral("coupons"), coupons},
        {QStringLiteral("messages"), messages},
    };
    if (!m_customer.isEmpty())
        object.insert(QStringLiteral("customer"), m_customer);
    return object;
}

} // namespace tessaro::emulator
