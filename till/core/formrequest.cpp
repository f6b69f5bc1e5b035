#include "formrequest.h"

#include <QDate>
#include <QRegularExpression>

namespace till {

FormRequest::FormRequest(const QString &form, const QVariantMap &params)
    : m_form(form)
    , m_title(params.value(QStringLiteral("titleId")).toString(), params.value(QStringLiteral("title")).toString())
    , m_button(params.value(QStringLiteral("buttonId")).toString(), params.value(QStringLiteral("button")).toString())
{
    const QVariantList fields = params.value(QStringLiteral("fields")).toList();
    for (const QVariant &value : fields) {
        const QVariantMap map = value.toMap();
        Field field;
        field.name = map.value(QStringLiteral("name")).toString();
        field.isDate = map.value(QStringLiteral("type")).toString() == QLatin1String("date");
        field.label = tr::Tr(map.value(QStringLiteral("labelId")).toString(), map.value(QStringLiteral("label")).toString());
        field.value = map.value(QStringLiteral("value")).toString();
        field.pattern = map.value(QStringLiteral("pattern")).toString();
        field.format = map.value(QStringLiteral("format")).toString();
        if (field.isDate && field.format.isEmpty())
            field.format = QStringLiteral("dd.MM.yyyy");
        m_fields << field;
    }
}

QString FormRequest::Field::check(const QString &text) const
{
    if (isDate) {
        if (!QDate::fromString(text, format).isValid())
            return QStringLiteral("%1: \"%2\" is not a date written %3").arg(name, text, format);
        return QString();
    }
    if (pattern.isEmpty())
        return QString();
    const QRegularExpression expression(QRegularExpression::anchoredPattern(pattern));
    if (!expression.match(text).hasMatch())
        return QStringLiteral("%1: \"%2\" does not match %3").arg(name, text, pattern);
    return QString();
}

QVariant FormRequest::Field::answerValue(const QString &text) const
{
    if (isDate)
        return QDate::fromString(text, format);
    return text;
}

} // namespace till
