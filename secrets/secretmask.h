#pragma once

#include <QJsonValue>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QUrl>

/// Hides secrets and card numbers in what the programs show: log lines,
/// reports, progress files, terminal output and the emulator's journal.
///
/// Secret fields are known by their names, compared case-insensitively after
/// JSON escapes ("access\u005ftoken") and percent-encoding are decoded,
/// wherever they stand as a JSON key or as a form or query field:
/// - names ending in "token", "secret", "authorization" or an API key name
///   ("access_token", "client_secret", "appSecret", "x-api-key");
/// - "password", "passwd", "pwd", "apikey", "api_key", "api-key", "key",
///   "signature" and "sig".
/// Their values read as "***". Card numbers ("cardBarcode", "cardNumber",
/// "customerNumber") keep their last four characters, the others read as
/// "*". A URL's password and a bearer or basic credential in a text are
/// hidden as well.
///
/// One object serves one thread: its patterns are not shared.
class SecretMask
{
public:
    SecretMask();

    /// More headers whose values are hidden, compared case-insensitively;
    /// "Authorization" until set. "Cookie", "Set-Cookie" and the headers
    /// named like a secret field ("Proxy-Authorization", "X-Api-Key",
    /// "X-Auth-Token") are hidden whatever the list holds.
    void setSecretHeaders(const QStringList &names);
    QStringList secretHeaders() const { return m_secretHeaders; }
    bool isSecretHeader(const QString &name) const;

    /// Whether a field of that (decoded) name holds a secret.
    static bool isSecretName(const QString &name);
    /// Whether a field of that (decoded) name holds a card number.
    static bool isCardName(const QString &name);

    /// "name: value", the value hidden when the header is secret.
    QString header(const QString &name, const QString &value) const;
    /// A raw header line ("Name: value" or a status line) as header() would put it.
    QString headerLine(const QString &line) const;
    /// \a text with the values of the secret fields hidden; JSON, form and URL
    /// texts alike, including cut-off ones.
    QString text(const QString &text) const;
    /// \a value with the members named like a secret field hidden (strings,
    /// numbers and structures; an empty string, null or a boolean says
    /// nothing secret and stays), at any depth, card numbers cut to their
    /// last four characters, and every other string passed through text().
    QJsonValue json(const QJsonValue &value) const;
    /// \a url as it may be shown: no password, no secret query field.
    QString url(const QUrl &url) const;
    /// text() with its control characters escaped (LineSanitizer): a value
    /// as one line of a log or of a terminal may show it.
    QString line(const QString &text) const;

    /// What a hidden secret reads as: "***".
    static QString hidden();

    /// What may be said of a secret value: its scheme, when it has one, and
    /// its length ("Bearer <40 chars>").
    static QString summary(const QString &value);
    /// A card number with all but its last four characters hidden.
    static QString card(const QString &number);

private:
    /// How a text writes its fields.
    enum class Syntax { Json, Form };

    QString maskedFields(const QString &text, const QRegularExpression &pattern, Syntax syntax) const;

    QStringList m_secretHeaders;
    QRegularExpression m_jsonField;
    QRegularExpression m_formField;
    QRegularExpression m_urlPassword;
    QRegularExpression m_credential;
};
