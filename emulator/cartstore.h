#pragma once

#include "emulator/cart.h"

#include <QHash>
#include <QJsonArray>
#include <QList>
#include <QMutex>

#include <optional>

namespace tessaro::emulator {

/// All carts by uuid, with the service's running transaction number
/// ("lTaNmbr"). The server thread changes carts; tests read them.
class CartStore
{
public:
    /// A new cart with a fresh uuid and the next transaction number.
    Cart create(int storeNo, int tillNo, const QString &invoiceId);
    std::optional<Cart> find(const QString &uuid) const;
    /// Stores a changed cart under its uuid.
    void replace(const Cart &cart);
    /// Every cart, in creation order.
    QList<Cart> carts() const;
    QJsonArray toJson() const;

private:
    mutable QMutex m_mutex;
    QHash<QString, Cart> m_carts;
    QStringList m_order;
    int m_lastTransaction = 0;
};

} // namespace tessaro::emulator
