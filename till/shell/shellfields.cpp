#include "shellfields.h"

#include "scenarioparserdetail.h"

#include <moneyitem.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QMetaProperty>

namespace till {

namespace {

/// How a typed value becomes JSON: text as it stands, a scalar (a number or
/// true/false when it reads as one, else text, which the parser then
/// refuses where it wants a number), or a comma-separated list of scalars.
enum class Kind { Text, Scalar, List };

const QHash<QString, Kind> &positionKinds()
{
    static const QHash<QString, Kind> kinds{
        {QStringLiteral("barcode"), Kind::Text},        {QStringLiteral("name"), Kind::Text},
        {QStringLiteral("quantity"), Kind::Scalar},     {QStringLiteral("price"), Kind::Scalar},
        {QStringLiteral("sum"), Kind::Scalar},          {QStringLiteral("vatRate"), Kind::Scalar},
        {QStringLiteral("vatIndex"), Kind::Scalar},     {QStringLiteral("vatCodes"), Kind::List},
        {QStringLiteral("vatSums"), Kind::List},        {QStringLiteral("fractional"), Kind::Scalar},
        {QStringLiteral("inputType"), Kind::Scalar},    {QStringLiteral("getMethods"), Kind::List},
        {QStringLiteral("exciseMark"), Kind::Text},     {QStringLiteral("goodsKitBarcode"), Kind::Text},
        {QStringLiteral("inputRawData"), Kind::Text},   {QStringLiteral("bcodeMode"), Kind::Scalar},
    };
    return kinds;
}

/// Short forms of the position: the key they stand for.
const QHash<QString, QString> &positionShortForms()
{
    static const QHash<QString, QString> forms{
        {QStringLiteral("vat"), QStringLiteral("vatCodes")},
        {QStringLiteral("rate"), QStringLiteral("vatRate")},
        {QStringLiteral("vatsum"), QStringLiteral("vatSums")},
    };
    return forms;
}

const QHash<QString, QString> &paymentShortForms()
{
    static const QHash<QString, QString> forms{
        {QStringLiteral("terminal"), QStringLiteral("terminalId")},
        {QStringLiteral("operation"), QStringLiteral("operationId")},
    };
    return forms;
}

QJsonValue scalar(const QString &text)
{
    const QJsonDocument document = QJsonDocument::fromJson("[" + text.toUtf8() + "]");
    const QJsonArray array = document.array();
    if (array.size() == 1 && (array.first().isDouble() || array.first().isBool()))
        return array.first();
    return text;
}

QJsonValue valueOf(Kind kind, const QString &text)
{
    switch (kind) {
    case Kind::Text:
        return text;
    case Kind::Scalar:
        return scalar(text);
    case Kind::List: {
        QJsonArray list;
        for (const QString &item : text.split(QLatin1Char(','), Qt::SkipEmptyParts))
            list.append(scalar(item));
        return list;
    }
    }
    return text;
}

/// Splits "field=value"; false (and \a error) when the word has no field.
bool split(const QString &word, QString *field, QString *value, QString *error)
{
    const qsizetype equals = word.indexOf(QLatin1Char('='));
    if (equals <= 0) {
        *error = QStringLiteral("%1 is no field=value").arg(word);
        return false;
    }
    *field = word.left(equals);
    *value = word.mid(equals + 1);
    return true;
}

QString unknown(const QString &field, const QStringList &fields)
{
    return QStringLiteral("unknown field %1 (fields: %2)").arg(field, fields.join(QStringLiteral(", ")));
}

/// Sets namespace.key of the position's additional data.
bool setData(QJsonObject *position, const QString &field, const QString &value, QString *error)
{
    const QStringList parts = field.split(QLatin1Char('.'));
    if (parts.size() != 3 || parts.at(1).isEmpty() || parts.at(2).isEmpty()) {
        *error = QStringLiteral("%1: additional data is data.NAMESPACE.KEY=VALUE").arg(field);
        return false;
    }
    QJsonObject data = position->value(QStringLiteral("data")).toObject();
    QJsonObject space = data.value(parts.at(1)).toObject();
    space.insert(parts.at(2), scalar(value));
    data.insert(parts.at(1), space);
    position->insert(QStringLiteral("data"), data);
    return true;
}

/// A payment detail typed as text, converted to its MoneyItem property's type.
std::optional<QJsonValue> detailValue(const QString &field, const QString &value, QString *error)
{
    const QMetaObject &meta = MoneyItem::staticMetaObject;
    const QMetaProperty property = meta.property(meta.indexOfProperty(field.toLatin1().constData()));
    if (property.metaType() == QMetaType::fromType<QString>())
        return QJsonValue(value);
    QVariant converted(value);
    if (!converted.convert(property.metaType())) {
        *error = QStringLiteral("%1: expected a number, found \"%2\"").arg(field, value);
        return std::nullopt;
    }
    return QJsonValue::fromVariant(converted);
}

} // namespace

QStringList ShellFields::positionFields()
{
    QStringList fields = positionKinds().keys();
    fields.sort();
    QStringList forms = positionShortForms().keys();
    forms.sort();
    return fields + forms + QStringList{QStringLiteral("data.NAMESPACE.KEY")};
}

QStringList ShellFields::paymentFields()
{
    QStringList fields = detail::paymentDetailNames();
    fields.sort();
    QStringList forms = paymentShortForms().keys();
    forms.sort();
    return QStringList{QStringLiteral("change")} + fields + forms;
}

std::optional<QJsonObject> ShellFields::position(const QString &code, const QStringList &words, QString *error)
{
    QJsonObject position{{QStringLiteral("code"), code}};
    for (const QString &word : words) {
        QString field;
        QString value;
        if (!split(word, &field, &value, error))
            return std::nullopt;
        if (field.startsWith(QLatin1String("data."))) {
            if (!setData(&position, field, value, error))
                return std::nullopt;
            continue;
        }
        const QString key = positionShortForms().value(field, field);
        if (!positionKinds().contains(key)) {
            *error = unknown(field, positionFields());
            return std::nullopt;
        }
        position.insert(key, valueOf(positionKinds().value(key), value));
    }
    // A VAT code names the position's one VAT entry.
    if (position.contains(QStringLiteral("vatCodes")) && !position.contains(QStringLiteral("vatIndex")))
        position.insert(QStringLiteral("vatIndex"), 0);
    return position;
}

std::optional<QJsonObject> ShellFields::payment(const QString &code, const QString &amount, const QStringList &words, QString *error)
{
    QJsonObject payment{{QStringLiteral("code"), scalar(code)}, {QStringLiteral("amount"), scalar(amount)}};
    QJsonObject details;
    const QStringList detailNames = detail::paymentDetailNames();
    for (const QString &word : words) {
        QString field;
        QString value;
        if (!split(word, &field, &value, error))
            return std::nullopt;
        const QString key = paymentShortForms().value(field, field);
        if (key == QLatin1String("change")) {
            payment.insert(key, scalar(value));
        } else if (detailNames.contains(key)) {
            const std::optional<QJsonValue> converted = detailValue(key, value, error);
            if (!converted)
                return std::nullopt;
            details.insert(key, *converted);
        } else {
            *error = unknown(field, paymentFields());
            return std::nullopt;
        }
    }
    if (!details.isEmpty())
        payment.insert(QStringLiteral("details"), details);
    return payment;
}

} // namespace till
