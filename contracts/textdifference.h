#pragma once

#include <QByteArray>
#include <QString>

namespace tessaro::contracts {

/// Where a text sent differs from a recorded one, the recorded text's
/// placeholders (PlaceholderMap) standing for any text.
class TextDifference
{
public:
    /// The offset in \a sent of the first byte that differs from \a recorded;
    /// -1 when they agree.
    static qsizetype firstDifference(const QByteArray &recorded, const QByteArray &sent);
    /// "byte 57: recorded «…"quantity":1…» sent «…"quantity":2…»", both around
    /// that byte. \a offset is firstDifference's, in \a sent.
    static QString describe(const QByteArray &recorded, const QByteArray &sent, qsizetype offset);
};

} // namespace tessaro::contracts
