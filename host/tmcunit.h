#pragma once

/// The unit an article is sold in; fractional units are weighed or measured.
class TmcUnit
{
public:
    explicit TmcUnit(bool fractional = false);
    bool isFractional() const { return m_fractional; }

private:
    bool m_fractional;
};
