#include "contracts/placeholdermap.h"

#include <QUrl>

#include <algorithm>

namespace tessaro::contracts {

namespace {

const QByteArray placeholderPrefix = QByteArrayLiteral("secret-placeholder-");

} // namespace

const QRegularExpression &PlaceholderMap::pattern()
{
    static const QRegularExpression expression(QStringLiteral("secret-placeholder-[0-9]+"));
    return expression;
}

bool PlaceholderMap::holdsPlaceholder(const QString &text)
{
    return text.contains(QLatin1String(placeholderPrefix));
}

bool PlaceholderMap::holdsPlaceholder(const QByteArray &text)
{
    return text.contains(placeholderPrefix);
}

QString PlaceholderMap::add(const QString &secret)
{
    if (secret.size() < shortestSecret || pattern().match(secret).hasMatch())
        return {};
    const auto known = m_placeholders.constFind(secret);
    if (known != m_placeholders.cend())
        return *known;
    const QString placeholder = QString::fromLatin1(placeholderPrefix) + QString::number(m_placeholders.size() + 1);
    m_placeholders.insert(secret, placeholder);

    const QByteArray raw = secret.toUtf8();
    const QByteArray replacement = placeholder.toLatin1();
    QList<QByteArray> forms{raw,
                            raw.toBase64(),
                            raw.toBase64(QByteArray::OmitTrailingEquals),
                            raw.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals),
                            QUrl::toPercentEncoding(secret),
                            raw.toPercentEncoding()};
    for (const QByteArray &form : forms) {
        const bool present = std::any_of(m_forms.cbegin(), m_forms.cend(), [&form](const auto &entry) { return entry.first == form; });
        if (form.size() >= shortestSecret && !present)
            m_forms.append({form, replacement});
    }
    std::stable_sort(m_forms.begin(), m_forms.end(), [](const auto &a, const auto &b) { return a.first.size() > b.first.size(); });
    return placeholder;
}

QByteArray PlaceholderMap::apply(const QByteArray &text) const
{
    QByteArray result = text;
    for (const auto &[form, placeholder] : m_forms)
        result.replace(form, placeholder);
    return result;
}

QString PlaceholderMap::apply(const QString &text) const
{
    return QString::fromUtf8(apply(text.toUtf8()));
}

QByteArray PlaceholderMap::substitute(const QByteArray &text, const QHash<QString, QString> &values)
{
    if (!holdsPlaceholder(text))
        return text;
    QString result = QString::fromUtf8(text);
    // Longest first: "secret-placeholder-12" must not be read as "-1" and a "2".
    QStringList names = values.keys();
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) { return a.size() > b.size(); });
    for (const QString &name : std::as_const(names))
        result.replace(name, values.value(name));
    return result.toUtf8();
}

} // namespace tessaro::contracts
