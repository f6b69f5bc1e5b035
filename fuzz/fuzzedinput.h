#pragma once

#include <QString>
#include <QVariant>

#include <cstddef>
#include <cstdint>
#include <memory>

class FuzzedDataProvider;

/// The fuzzer's bytes as the values a host hands a plug-in: small choices,
/// texts, numbers that may be NaN, infinite or huge, and variants of any of
/// the types that travel in actions, documents and configuration.
///
/// Once the bytes run out every reading gives its first choice (0, false, an
/// empty text), so a short input still makes a whole, plain run.
class FuzzedInput
{
public:
    FuzzedInput(const uint8_t *data, size_t size);
    ~FuzzedInput();
    FuzzedInput(const FuzzedInput &) = delete;
    FuzzedInput &operator=(const FuzzedInput &) = delete;

    bool flag();
    /// A number from 0 to \a count - 1.
    int pick(int count);
    /// Any int; small ones most often.
    int integer();
    /// A double: ordinary amounts most often, then NaN, infinities, huge and tiny values.
    double number();
    /// A text of at most \a length characters, taken from the bytes as UTF-8.
    QString text(size_t length = 24);
    /// A text of digits of \a length characters.
    QString digits(int length);
    /// A value of any of the types hosts keep: nothing, bool, int, 64-bit
    /// integer, double, text, date, list or map.
    QVariant value();
    /// Text holding one of the numbers above, or any text.
    QString numberText();

    bool exhausted() const;

private:
    std::unique_ptr<FuzzedDataProvider> m_bytes;
};
