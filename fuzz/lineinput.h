#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>

/// A fuzz input read as text lines, so that seed files stay readable:
/// takeLine() hands out one line after another, rest() what is left.
class LineInput
{
public:
    LineInput(const uint8_t *data, size_t size);

    /// The next line without its line feed; empty at the end of the input.
    QByteArray takeLine();
    /// Everything after the lines taken so far.
    QByteArray rest() const;
    bool atEnd() const;

private:
    QByteArray m_bytes;
    qsizetype m_position = 0;
};
