#include "emulator/cartstore.h"

#include <QMutexLocker>
#include <QUuid>

namespace tessaro::emulator {

Cart CartStore::create(int storeNo, int tillNo, const QString &invoiceId)
{
    const QMutexLocker locker(&m_mutex);
    const Cart cart(QUuid::createUuid().toString(QUuid::WithoutBraces), storeNo, tillNo,
                    ++m_lastTransaction, invoiceId);
    m_carts.insert(cart.uuid(), cart);
    m_order.append(cart.uuid());
    return cart;
}

std::optional<Cart> CartStore::find(const QString &uuid) const
{
    const QMutexLocker locker(&m_mutex);
    const auto it = m_carts.constFind(uuid);
    if (it == m_carts.cend())
        return std::nullopt;
    return *it;
}

void CartStore::replace(const Cart &cart)
{
    const QMutexLocker locker(&m_mutex);
    m_carts.insert(cart.uuid(), cart);
}

QList<Cart> CartStore::carts() const
{
    const QMutexLocker locker(&m_mutex);
    QList<Cart> carts;
    for (const QString &uuid : m_order)
        carts.append(m_carts.value(uuid));
    return carts;
}

QJsonArray CartStore::toJson() const
{
    QJsonArray array;
    for (const Cart &cart : carts())
        array.append(cart.toJson());
    return array;
}

} // namespace tessaro::emulator
