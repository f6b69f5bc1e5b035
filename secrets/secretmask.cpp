#include "secretmask.h"

#include <algorithm>

namespace {

const QString hidden = QStringLiteral("***");

// Field names that carry credentials: every name that ends in "token" or
// "secret" ("access_token", "refresh_token", "id_token", "client_secret",
// "appSecret"), and "password". The patterns match case-insensitively.
const QString jsonSecretName = QStringLiteral(R"re([^"\\]*(?:token|secret)|password)re");
const QString formSecretName = QStringLiteral(R"re([^&=?#;\s]*(?:token|secret)|password)re");

// Most logged texts (every request's URL among them) name no secret field;
// only those that do are worth the patterns.
bool namesSecretField(const QString &text)
{
    static const QStringList words{QStringLiteral("token"), QStringLiteral("secret"), QStringLiteral("password")};
    // Folded once: case-sensitive searches are several times faster than
    // case-insensitive ones.
    const QString folded = text.toCaseFolded();
    return std::any_of(words.cbegin(), words.cend(), [&folded](const QString &word) { return folded.contains(word); });
}

} // namespace

SecretMask::SecretMask()
    : m_secretHeaders{QStringLiteral("Authorization")}
    // "key" : "string with \" escapes" or a bare value (number, literal)
    , m_jsonField(QStringLiteral(R"re(("(?:%1)"\s*:\s*)(?:"(?:[^"\\]|\\.)*"?|[^,}\]\s]+))re")
                          .arg(jsonSecretName),
                  QRegularExpression::CaseInsensitiveOption)
    // key=value in a form body or a URL query
    , m_formField(QStringLiteral(R"re(((?:^|[?&;\s])(?:%1)=)[^&#\s]*)re").arg(formSecretName),
                  QRegularExpression::CaseInsensitiveOption)
{
}

void SecretMask::setSecretHeaders(const QStringList &names)
{
    m_secretHeaders = names;
}

bool SecretMask::isSecretHeader(const QString &name) const
{
    return m_secretHeaders.contains(name.trimmed(), Qt::CaseInsensitive);
}

QString SecretMask::header(const QString &name, const QString &value) const
{
    return name + QStringLiteral(": ") + (isSecretHeader(name) ? hidden : text(value));
}

QString SecretMask::headerLine(const QString &line) const
{
    const qsizetype colon = line.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return line;
    return header(line.left(colon), line.mid(colon + 1).trimmed());
}

QString SecretMask::text(const QString &text) const
{
    if (!namesSecretField(text))
        return text;
    QString masked = text;
    masked.replace(m_jsonField, QStringLiteral("\\1\"") + hidden + QLatin1Char('"'));
    masked.replace(m_formField, QStringLiteral("\\1") + hidden);
    return masked;
}
