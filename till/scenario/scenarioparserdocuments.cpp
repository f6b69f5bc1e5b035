// ScenarioParser: the documents of a scenario, with their positions, payments
// and impacts.

#include "scenarioparserdetail.h"

#include <moneyitem.h>

#include <QMetaProperty>

namespace till::detail {

namespace {

int documentTypeAt(const QJsonValue &value, const QString &path)
{
    if (value.isDouble())
        return integerAt(value, path);
    const QString name = stringAt(value, path);
    static const QHash<QString, int> types{
        {QStringLiteral("sale"), 1},
        {QStringLiteral("return"), 2},
        {QStringLiteral("returnBySale"), 25},
    };
    if (!types.contains(name))
        fail(path, QStringLiteral("unknown document type %1 (expected sale, return, returnBySale or a number)").arg(quoted(name)));
    return types.value(name);
}

QDate dateAt(const QJsonValue &value, const QString &path)
{
    const QDate date = QDate::fromString(stringAt(value, path), Qt::ISODate);
    if (!date.isValid())
        fail(path, QStringLiteral("expected a date as yyyy-MM-dd, found %1").arg(quoted(value.toString())));
    return date;
}

QDateTime dateTimeAt(const QJsonValue &value, const QString &path)
{
    const QDateTime dateTime = QDateTime::fromString(stringAt(value, path), Qt::ISODate);
    if (!dateTime.isValid())
        fail(path, QStringLiteral("expected a date and time as yyyy-MM-ddTHH:mm:ss, found %1").arg(quoted(value.toString())));
    return dateTime;
}

QHash<QString, QVariantMap> additionalDataAt(const QJsonValue &value, const QString &path)
{
    QHash<QString, QVariantMap> data;
    const QJsonObject object = objectAt(value, path);
    for (auto it = object.constBegin(); it != object.constEnd(); ++it)
        data.insert(it.key(), objectAt(it.value(), child(path, it.key())).toVariantMap());
    return data;
}

ImpactSpec impactAt(const QJsonValue &value, const QString &path)
{
    ImpactSpec described;
    const QJsonArray totals = arrayAt(value, path);
    for (qsizetype i = 0; i < totals.size(); ++i) {
        const QString at = element(path, i);
        const QJsonObject total = objectAt(totals.at(i), at);
        allowOnly(total, at, {QStringLiteral("discountMode"), QStringLiteral("discountSum")});
        described.totals << qMakePair(
            integerAt(required(total, at, QStringLiteral("discountMode")), child(at, QStringLiteral("discountMode"))),
            numberAt(required(total, at, QStringLiteral("discountSum")), child(at, QStringLiteral("discountSum"))));
    }
    return described;
}

} // namespace

QStringList paymentDetailNames()
{
    QStringList names;
    const QMetaObject &meta = MoneyItem::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QString name = QString::fromLatin1(meta.property(i).name());
        if (name != QLatin1String("valCode") && name != QLatin1String("amount") && name != QLatin1String("change"))
            names << name;
    }
    return names;
}

PositionSpec positionAt(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    allowOnly(object, path,
              {QStringLiteral("code"), QStringLiteral("barcode"), QStringLiteral("name"), QStringLiteral("quantity"),
               QStringLiteral("price"), QStringLiteral("sum"), QStringLiteral("vatRate"), QStringLiteral("vatIndex"),
               QStringLiteral("vatCodes"), QStringLiteral("vatSums"), QStringLiteral("fractional"),
               QStringLiteral("inputType"), QStringLiteral("getMethods"), QStringLiteral("exciseMark"),
               QStringLiteral("goodsKitBarcode"), QStringLiteral("inputRawData"), QStringLiteral("bcodeMode"),
               QStringLiteral("data")});
    PositionSpec described;
    described.code = stringAt(required(object, path, QStringLiteral("code")), child(path, QStringLiteral("code")));
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        const QString at = child(path, key);
        if (key == QLatin1String("barcode"))
            described.barcode = stringAt(it.value(), at);
        else if (key == QLatin1String("name"))
            described.name = stringAt(it.value(), at);
        else if (key == QLatin1String("quantity"))
            described.quantity = numberAt(it.value(), at);
        else if (key == QLatin1String("price"))
            described.price = numberAt(it.value(), at);
        else if (key == QLatin1String("sum"))
            described.sum = numberAt(it.value(), at);
        else if (key == QLatin1String("vatRate"))
            described.vatRate = numberAt(it.value(), at);
        else if (key == QLatin1String("vatIndex"))
            described.vatIndex = integerAt(it.value(), at);
        else if (key == QLatin1String("vatCodes"))
            described.vatCodes = integersAt(it.value(), at);
        else if (key == QLatin1String("vatSums"))
            described.vatSums = numbersAt(it.value(), at);
        else if (key == QLatin1String("fractional"))
            described.fractional = boolAt(it.value(), at);
        else if (key == QLatin1String("inputType"))
            described.inputType = integerAt(it.value(), at);
        else if (key == QLatin1String("getMethods"))
            described.getMethods = integersAt(it.value(), at);
        else if (key == QLatin1String("exciseMark"))
            described.exciseMark = stringAt(it.value(), at);
        else if (key == QLatin1String("goodsKitBarcode"))
            described.goodsKitBarcode = stringAt(it.value(), at);
        else if (key == QLatin1String("inputRawData"))
            described.inputRawData = stringAt(it.value(), at);
        else if (key == QLatin1String("bcodeMode"))
            described.bcodeMode = integerAt(it.value(), at);
        else if (key == QLatin1String("data"))
            described.data = additionalDataAt(it.value(), at);
    }
    return described;
}

PaymentSpec paymentAt(const QJsonObject &object, const QString &path, const QStringList &otherKeys)
{
    allowOnly(object, path,
              QStringList{QStringLiteral("code"), QStringLiteral("amount"), QStringLiteral("change"), QStringLiteral("details")}
                  + otherKeys);
    PaymentSpec described;
    described.code = integerAt(required(object, path, QStringLiteral("code")), child(path, QStringLiteral("code")));
    described.amount = numberAt(required(object, path, QStringLiteral("amount")), child(path, QStringLiteral("amount")));
    if (object.contains(QStringLiteral("change")))
        described.change = boolAt(object.value(QStringLiteral("change")), child(path, QStringLiteral("change")));
    if (object.contains(QStringLiteral("details"))) {
        const QString at = child(path, QStringLiteral("details"));
        const QJsonObject details = objectAt(object.value(QStringLiteral("details")), at);
        allowOnly(details, at, paymentDetailNames());
        described.details = details.toVariantMap();
    }
    return described;
}

DocumentSpec documentAt(const QString &name, const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    allowOnly(object, path,
              {QStringLiteral("type"), QStringLiteral("saleIdentifier"), QStringLiteral("saleDate"),
               QStringLiteral("dateTime"), QStringLiteral("store"), QStringLiteral("card"),
               QStringLiteral("commonReason"), QStringLiteral("reasonDictionary"), QStringLiteral("roundingSum"),
               QStringLiteral("positions"), QStringLiteral("payments"), QStringLiteral("impacts"),
               QStringLiteral("properties"), QStringLiteral("pluginData")});
    DocumentSpec described;
    described.name = name;
    described.type = documentTypeAt(required(object, path, QStringLiteral("type")), child(path, QStringLiteral("type")));
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        const QString at = child(path, key);
        if (key == QLatin1String("saleIdentifier"))
            described.saleIdentifier = stringAt(it.value(), at);
        else if (key == QLatin1String("saleDate"))
            described.saleDate = dateAt(it.value(), at);
        else if (key == QLatin1String("dateTime"))
            described.dateTime = dateTimeAt(it.value(), at);
        else if (key == QLatin1String("store"))
            described.store = stringAt(it.value(), at);
        else if (key == QLatin1String("card"))
            described.card = stringAt(it.value(), at);
        else if (key == QLatin1String("commonReason"))
            described.commonReason = integerAt(it.value(), at);
        else if (key == QLatin1String("reasonDictionary"))
            described.reasonDictionary = integerAt(it.value(), at);
        else if (key == QLatin1String("roundingSum"))
            described.roundingSum = numberAt(it.value(), at);
        else if (key == QLatin1String("positions")) {
            const QJsonArray positions = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < positions.size(); ++i)
                described.positions << positionAt(positions.at(i), element(at, i));
        } else if (key == QLatin1String("payments")) {
            const QJsonArray payments = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < payments.size(); ++i)
                described.payments << paymentAt(objectAt(payments.at(i), element(at, i)), element(at, i), {});
        } else if (key == QLatin1String("impacts")) {
            const QJsonArray impacts = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < impacts.size(); ++i)
                described.impacts << impactAt(impacts.at(i), element(at, i));
        } else if (key == QLatin1String("properties")) {
            described.properties = objectAt(it.value(), at).toVariantMap();
        } else if (key == QLatin1String("pluginData")) {
            described.pluginData = objectAt(it.value(), at).toVariantMap();
        }
    }
    if (described.type == 25 && described.saleIdentifier.isEmpty() && object.contains(QStringLiteral("saleDate")))
        fail(child(path, QStringLiteral("saleDate")), QStringLiteral("a sale date needs a saleIdentifier"));
    return described;
}

} // namespace till::detail
