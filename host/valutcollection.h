#pragma once

#include <QList>
#include <QMap>
#include <QString>

/// The till's currencies (payment kinds), by code.
class ValutCollection
{
public:
    struct Valut
    {
        int code;
        QString name;
        int type;
    };

    /// The currency codes in ascending order.
    QList<int> getValutCodes() const { return m_valuts.keys(); }
    Valut getValut(int code) const { return m_valuts.value(code, Valut{code, QString(), 0}); }
    void addValut(const Valut &valut) { m_valuts.insert(valut.code, valut); }
    void clear() { m_valuts.clear(); }

private:
    QMap<int, Valut> m_valuts;
};
