#pragma once

#include <QString>

/// Makes a value safe to put into one line of a log or of a terminal: every
/// control character is written as an escape, so that no value (a token from
/// a token endpoint, a service's error text, a cashier's input) can add a line
/// of its own or move a terminal's cursor.
///
/// Escaped: CR, LF and TAB as "\r", "\n", "\t"; the other C0 characters, ESC
/// among them, and DEL as "\xHH"; the C1 characters and the Unicode line and
/// paragraph separators as "\uHHHH". Everything else stays as it is.
class LineSanitizer
{
public:
    static QString escaped(const QString &value);
};
