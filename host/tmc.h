#pragma once

#include <QSet>

/// An article of the host's catalogue.
class Tmc
{
public:
    /// How an article may be looked up when it is entered (by barcode, by code, …).
    enum GetMethod {
        ByBarcode = 0,
        ByCode = 1,
    };

    Tmc() = default;
    explicit Tmc(const QSet<int> &getMethods);

    /// Whether the article is entered by \a method.
    bool checkGetMethod(int method) const { return m_getMethods.contains(method); }
    QSet<int> getMethods() const { return m_getMethods; }

private:
    QSet<int> m_getMethods;
};
