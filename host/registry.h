#pragma once

#include <QString>

/// Where the till stands: the store and the till's own number, as configured.
class Registry
{
public:
    QString getShopCode() const { return m_shopCode; }
    void setShopCode(const QString &code) { m_shopCode = code; }
    QString getCashCode() const { return m_cashCode; }
    void setCashCode(const QString &code) { m_cashCode = code; }

private:
    QString m_shopCode;
    QString m_cashCode;
};
