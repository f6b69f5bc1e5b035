#include "linesanitizer.h"

#include <algorithm>

namespace {

bool needsEscape(QChar c)
{
    const char16_t code = c.unicode();
    return code < 0x20 || (code >= 0x7f && code <= 0x9f) || code == 0x2028 || code == 0x2029;
}

QString escape(QChar c)
{
    switch (c.unicode()) {
    case u'\r':
        return QStringLiteral("\\r");
    case u'\n':
        return QStringLiteral("\\n");
    case u'\t':
        return QStringLiteral("\\t");
    default:
        break;
    }
    const char16_t code = c.unicode();
    if (code <= 0x7f)
        return QStringLiteral("\\x%1").arg(uint(code), 2, 16, QLatin1Char('0'));
    return QStringLiteral("\\u%1").arg(uint(code), 4, 16, QLatin1Char('0'));
}

} // namespace

QString LineSanitizer::escaped(const QString &value)
{
    // Nearly every value is clean: it is returned without a copy.
    if (std::none_of(value.cbegin(), value.cend(), needsEscape))
        return value;
    QString result;
    result.reserve(value.size() + 8);
    for (const QChar c : value) {
        if (needsEscape(c))
            result += escape(c);
        else
            result += c;
    }
    return result;
}
