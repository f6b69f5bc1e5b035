#include "secretmask.h"

#include "linesanitizer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>

namespace {

// Names that are secrets whatever stands before them: "access_token",
// "client_secret", "appSecret", "proxy-authorization", "x-api-key".
const QStringList secretSuffixes{QStringLiteral("token"), QStringLiteral("secret"), QStringLiteral("authorization"),
                                 QStringLiteral("apikey"), QStringLiteral("api_key"), QStringLiteral("api-key")};
// Names that are secrets only as they stand: "key" is, "Key4" (an invoice
// number) and "keyboard" are not; "password" is, "passwordHint" is not.
const QStringList secretNames{QStringLiteral("password"), QStringLiteral("passwd"),    QStringLiteral("pwd"),
                              QStringLiteral("key"),      QStringLiteral("signature"), QStringLiteral("sig")};
const QStringList cardNames{QStringLiteral("cardbarcode"), QStringLiteral("cardnumber"), QStringLiteral("card_number"),
                            QStringLiteral("customernumber")};
// Headers hidden whatever setSecretHeaders() says.
const QStringList alwaysSecretHeaders{QStringLiteral("cookie"), QStringLiteral("set-cookie")};

// Most texts (every request's URL among them) hold nothing to hide; only
// those with one of these fragments are worth the patterns. Escapes and
// percent-encoding could spell a name in other letters, so they count too.
bool mayHoldSecret(const QString &text)
{
    static const QStringList fragments{QStringLiteral("token"), QStringLiteral("secret"), QStringLiteral("auth"),
                                       QStringLiteral("pass"),  QStringLiteral("pwd"),    QStringLiteral("key"),
                                       QStringLiteral("sig"),   QStringLiteral("card"),   QStringLiteral("customernumber"),
                                       QStringLiteral("@"),     QStringLiteral("bearer"), QStringLiteral("basic"),
                                       QStringLiteral("\\u"),   QStringLiteral("%")};
    // Folded once: case-sensitive searches are several times faster than
    // case-insensitive ones.
    const QString folded = text.toCaseFolded();
    return std::any_of(fragments.cbegin(), fragments.cend(),
                       [&folded](const QString &fragment) { return folded.contains(fragment); });
}

// The text of a JSON string literal's inside, escapes decoded; as it stands
// when it is no valid literal (a cut-off text).
QString decodedJsonString(const QString &inside)
{
    const QJsonDocument document = QJsonDocument::fromJson(QStringLiteral("[\"%1\"]").arg(inside).toUtf8());
    const QJsonValue value = document.array().at(0);
    return value.isString() ? value.toString() : inside;
}

// A field's name or value as the text writes it, decoded: JSON escapes in a
// JSON text, percent-encoding in a form or query.
QString decoded(const QString &written, bool json)
{
    return json ? decodedJsonString(written) : QUrl::fromPercentEncoding(written.toUtf8());
}

// A JSON value is a string literal (perhaps cut off) or a bare number.
QString decodedValue(const QString &written, bool json)
{
    if (!json || !written.startsWith(QLatin1Char('"')))
        return decoded(written, json);
    const bool closed = written.size() > 1 && written.endsWith(QLatin1Char('"'));
    return decodedJsonString(written.mid(1, written.size() - (closed ? 2 : 1)));
}

QString normalisedName(const QString &name)
{
    return name.trimmed().toCaseFolded();
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// A number or a string as the text of a card number.
QString scalarText(const QJsonValue &value)
{
    return value.isString() ? value.toString() : value.toVariant().toString();
}

} // namespace

SecretMask::SecretMask()
    : m_secretHeaders{QStringLiteral("Authorization")}
    // "key" : "string with \" escapes" or a bare value (number, literal);
    // an object or array value is left to the matches inside it
    , m_jsonField(QStringLiteral(R"re("(?<name>(?:[^"\\]|\\.)*)"\s*:\s*(?<value>"(?:[^"\\]|\\.)*"?|[^,{}\[\]\s"][^,}\]\s]*))re"))
    // key=value in a form body or a URL query, also inside a JSON string
    , m_formField(QStringLiteral(R"re((?:^|[?&;\s])(?<name>[^&=?#;\s"]+)=(?<value>[^&#\s"]*))re"))
    // scheme://user:password@
    , m_urlPassword(QStringLiteral(R"re(([A-Za-z][A-Za-z0-9+.-]*://[^/@\s:"]*:)[^/@\s"]*@)re"))
    // a credential as an Authorization header carries it
    , m_credential(QStringLiteral(R"re(\b(Bearer|Basic) +[A-Za-z0-9._~+/=-]{8,})re"))
{
}

void SecretMask::setSecretHeaders(const QStringList &names)
{
    m_secretHeaders = names;
}

bool SecretMask::isSecretHeader(const QString &name) const
{
    const QString normalised = normalisedName(name);
    return m_secretHeaders.contains(normalised, Qt::CaseInsensitive) || alwaysSecretHeaders.contains(normalised)
        || isSecretName(normalised);
}

bool SecretMask::isSecretName(const QString &name)
{
    const QString normalised = normalisedName(name);
    return secretNames.contains(normalised)
        || std::any_of(secretSuffixes.cbegin(), secretSuffixes.cend(),
                       [&normalised](const QString &suffix) { return normalised.endsWith(suffix); });
}

bool SecretMask::isCardName(const QString &name)
{
    return cardNames.contains(normalisedName(name));
}

QString SecretMask::header(const QString &name, const QString &value) const
{
    return name + QStringLiteral(": ") + (isSecretHeader(name) ? hidden() : text(value));
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
    if (!mayHoldSecret(text))
        return text;
    QString masked = maskedFields(maskedFields(text, m_jsonField, Syntax::Json), m_formField, Syntax::Form);
    masked.replace(m_urlPassword, QStringLiteral("\\1") + hidden() + QLatin1Char('@'));
    masked.replace(m_credential, QStringLiteral("\\1 ") + hidden());
    return masked;
}

QString SecretMask::maskedFields(const QString &text, const QRegularExpression &pattern, Syntax syntax) const
{
    const bool json = syntax == Syntax::Json;
    QString result;
    qsizetype done = 0;
    QRegularExpressionMatchIterator it = pattern.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        const QString name = decoded(match.captured(u"name"), json);
        QString shown;
        if (isSecretName(name))
            shown = hidden();
        else if (isCardName(name))
            shown = card(decodedValue(match.captured(u"value"), json));
        else
            continue;
        result += text.mid(done, match.capturedStart(u"value") - done);
        result += json ? quoted(shown) : shown;
        done = match.capturedEnd(u"value");
    }
    return done == 0 ? text : result + text.mid(done);
}

QJsonValue SecretMask::json(const QJsonValue &value) const
{
    if (value.isString())
        return text(value.toString());
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue &item : value.toArray())
            array.append(json(item));
        return array;
    }
    if (!value.isObject())
        return value;
    QJsonObject object = value.toObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const QJsonValue member = it.value();
        // "" and null say that a secret is absent, a boolean that it is set.
        const bool saysNothing = member.isNull() || member.isBool() || (member.isString() && member.toString().isEmpty());
        if (isSecretName(it.key()) && !saysNothing)
            it.value() = hidden();
        else if (isCardName(it.key()) && (member.isString() || member.isDouble()))
            it.value() = card(scalarText(member));
        else
            it.value() = json(member);
    }
    return object;
}

QString SecretMask::url(const QUrl &url) const
{
    return text(url.toDisplayString(QUrl::RemovePassword));
}

QString SecretMask::line(const QString &text) const
{
    return LineSanitizer::escaped(this->text(text));
}

QString SecretMask::hidden()
{
    return QStringLiteral("***");
}

QString SecretMask::summary(const QString &value)
{
    const qsizetype space = value.indexOf(QLatin1Char(' '));
    if (space <= 0)
        return QStringLiteral("<%1 chars>").arg(value.size());
    return QStringLiteral("%1 <%2 chars>").arg(value.left(space)).arg(value.size() - space - 1);
}

QString SecretMask::card(const QString &number)
{
    constexpr qsizetype kept = 4;
    if (number.size() <= kept)
        return QString(number.size(), QLatin1Char('*'));
    return QString(number.size() - kept, QLatin1Char('*')) + number.right(kept);
}
