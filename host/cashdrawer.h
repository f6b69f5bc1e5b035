#pragma once

/// The till's cash drawer. Made through MockFactory<CashDrawer>.
class CashDrawer
{
public:
    virtual ~CashDrawer();
    /// The cash now in the drawer.
    virtual double getAmount() const;
};
