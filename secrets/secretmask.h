#pragma once

#include <QRegularExpression>
#include <QString>
#include <QStringList>

/// Hides secrets in texts bound for a log. Two kinds of secret are known: the
/// values of the headers named by setSecretHeaders(), and the values of the
/// fields whose names end in "token" or "secret" ("access_token",
/// "refresh_token", "client_secret", "appSecret", in any case) or are
/// "password", wherever they stand as a JSON key or as a form or query field.
/// Each hidden value reads as "***".
///
/// One object serves one thread: its patterns are not shared.
class SecretMask
{
public:
    SecretMask();

    /// Names of headers whose values are hidden, compared case-insensitively.
    /// Until set, "Authorization" alone.
    void setSecretHeaders(const QStringList &names);
    QStringList secretHeaders() const { return m_secretHeaders; }
    bool isSecretHeader(const QString &name) const;

    /// "name: value", the value hidden when the header is secret.
    QString header(const QString &name, const QString &value) const;
    /// A raw header line ("Name: value" or a status line) as header() would put it.
    QString headerLine(const QString &line) const;
    /// \a text with the values of the secret fields hidden; JSON, form and URL
    /// texts alike, including cut-off ones.
    QString text(const QString &text) const;

private:
    QStringList m_secretHeaders;
    QRegularExpression m_jsonField;
    QRegularExpression m_formField;
};
