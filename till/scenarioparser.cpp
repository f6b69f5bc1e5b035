#include "scenarioparser.h"

#include "scenarioparserdetail.h"

#include <moneyitem.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QMetaProperty>
#include <QRegularExpression>

namespace till {

using detail::actionAt;
using detail::allowOnly;
using detail::answerAt;
using detail::arrayAt;
using detail::child;
using detail::documentAt;
using detail::element;
using detail::expectationAt;
using detail::fail;
using detail::Failure;
using detail::objectAt;
using detail::quoted;
using detail::required;
using detail::stringAt;
using detail::tillAt;

namespace detail {

/// An expected value: a literal, or {"$present": bool}, or {"$matches": "regex"}.
void checkMatcher(const QJsonValue &value, const QString &path)
{
    if (!value.isObject())
        return;
    const QJsonObject object = value.toObject();
    if (object.contains(QStringLiteral("$present"))) {
        allowOnly(object, path, {QStringLiteral("$present")});
        boolAt(object.value(QStringLiteral("$present")), child(path, QStringLiteral("$present")));
    } else if (object.contains(QStringLiteral("$matches"))) {
        allowOnly(object, path, {QStringLiteral("$matches")});
        const QString pattern = stringAt(object.value(QStringLiteral("$matches")), child(path, QStringLiteral("$matches")));
        const QRegularExpression expression(pattern);
        if (!expression.isValid())
            fail(child(path, QStringLiteral("$matches")),
                 QStringLiteral("invalid regular expression: %1").arg(expression.errorString()));
    }
}

QJsonObject matchersAt(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    for (auto it = object.constBegin(); it != object.constEnd(); ++it)
        checkMatcher(it.value(), child(path, it.key()));
    return object;
}

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

/// MoneyItem properties a payment may set besides code, amount and change.
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

TillSettings tillAt(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    allowOnly(object, path,
              {QStringLiteral("store"), QStringLiteral("till"), QStringLiteral("shift"), QStringLiteral("cashier"),
               QStringLiteral("config"), QStringLiteral("backReasons"), QStringLiteral("currencies"),
               QStringLiteral("fiscal")});
    TillSettings till;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        const QString at = child(path, key);
        if (key == QLatin1String("store")) {
            till.store = textAt(it.value(), at);
        } else if (key == QLatin1String("till")) {
            till.till = textAt(it.value(), at);
        } else if (key == QLatin1String("shift")) {
            till.shift = integerAt(it.value(), at);
        } else if (key == QLatin1String("cashier")) {
            const QJsonObject cashier = objectAt(it.value(), at);
            allowOnly(cashier, at, {QStringLiteral("id"), QStringLiteral("code"), QStringLiteral("name")});
            till.cashierId = integerAt(required(cashier, at, QStringLiteral("id")), child(at, QStringLiteral("id")));
            till.cashierCode = textAt(required(cashier, at, QStringLiteral("code")), child(at, QStringLiteral("code")));
            if (cashier.contains(QStringLiteral("name")))
                till.cashierName = stringAt(cashier.value(QStringLiteral("name")), child(at, QStringLiteral("name")));
        } else if (key == QLatin1String("fiscal")) {
            const QJsonObject fiscal = objectAt(it.value(), at);
            allowOnly(fiscal, at, {QStringLiteral("registrationNumber"), QStringLiteral("driveSerial")});
            if (fiscal.contains(QStringLiteral("registrationNumber"))) {
                const QString numberPath = child(at, QStringLiteral("registrationNumber"));
                bool ok = false;
                till.fiscalRegistrationNumber = textAt(fiscal.value(QStringLiteral("registrationNumber")), numberPath).toLongLong(&ok);
                if (!ok)
                    fail(numberPath, QStringLiteral("expected the registration number's digits"));
            }
            if (fiscal.contains(QStringLiteral("driveSerial")))
                till.fiscalDriveSerial = textAt(fiscal.value(QStringLiteral("driveSerial")), child(at, QStringLiteral("driveSerial")));
        } else if (key == QLatin1String("config")) {
            const QJsonObject config = objectAt(it.value(), at);
            for (auto entry = config.constBegin(); entry != config.constEnd(); ++entry) {
                const QString entryPath = child(at, entry.key());
                if (!entry.key().contains(QLatin1Char(':')))
                    fail(entryPath, QStringLiteral("a configuration key is written Section:name"));
                if (entry.value().isBool())
                    till.config.insert(entry.key(), entry.value().toBool() ? QStringLiteral("true") : QStringLiteral("false"));
                else
                    till.config.insert(entry.key(), textAt(entry.value(), entryPath));
            }
        } else if (key == QLatin1String("backReasons")) {
            QList<TillSettings::Reason> reasons;
            const QJsonArray array = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < array.size(); ++i) {
                const QString itemPath = element(at, i);
                const QJsonObject item = objectAt(array.at(i), itemPath);
                allowOnly(item, itemPath, {QStringLiteral("kind"), QStringLiteral("code"), QStringLiteral("name")});
                TillSettings::Reason reason;
                reason.code = integerAt(required(item, itemPath, QStringLiteral("code")), child(itemPath, QStringLiteral("code")));
                reason.name = stringAt(required(item, itemPath, QStringLiteral("name")), child(itemPath, QStringLiteral("name")));
                if (item.contains(QStringLiteral("kind")))
                    reason.kind = integerAt(item.value(QStringLiteral("kind")), child(itemPath, QStringLiteral("kind")));
                reasons << reason;
            }
            till.backReasons = reasons;
        } else if (key == QLatin1String("currencies")) {
            QList<TillSettings::Currency> currencies;
            const QJsonArray array = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < array.size(); ++i) {
                const QString itemPath = element(at, i);
                const QJsonObject item = objectAt(array.at(i), itemPath);
                allowOnly(item, itemPath, {QStringLiteral("code"), QStringLiteral("name"), QStringLiteral("type")});
                TillSettings::Currency currency;
                currency.code = integerAt(required(item, itemPath, QStringLiteral("code")), child(itemPath, QStringLiteral("code")));
                currency.name = stringAt(required(item, itemPath, QStringLiteral("name")), child(itemPath, QStringLiteral("name")));
                if (item.contains(QStringLiteral("type")))
                    currency.type = integerAt(item.value(QStringLiteral("type")), child(itemPath, QStringLiteral("type")));
                currencies << currency;
            }
            till.currencies = currencies;
        }
    }
    return till;
}

CashierAnswer answerAt(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    static const QStringList kinds{QStringLiteral("choice"), QStringLiteral("form"), QStringLiteral("quantity"),
                                   QStringLiteral("price")};
    if (object.size() != 1 || !kinds.contains(object.constBegin().key()))
        fail(path, QStringLiteral("an answer is an object with exactly one key: choice, form, quantity or price"));
    const QString key = object.constBegin().key();
    const QJsonValue answer = object.constBegin().value();
    const QString at = child(path, key);
    CashierAnswer result;
    result.path = path;
    result.kind = CashierAnswer::Kind(kinds.indexOf(key));
    result.cancel = answer.isNull();
    if (result.cancel)
        return result;
    switch (result.kind) {
    case CashierAnswer::Choice:
        if (answer.isString()) {
            result.item = answer.toString();
        } else if (answer.isDouble()) {
            result.index = integerAt(answer, at);
            if (result.index < 0)
                fail(at, QStringLiteral("a choice counts from 0"));
        } else {
            wrongKind(at, QStringLiteral("an index, an item's text or null"), answer);
        }
        break;
    case CashierAnswer::Form: {
        if (!answer.isObject())
            wrongKind(at, QStringLiteral("an object of field answers or null"), answer);
        const QJsonObject fields = answer.toObject();
        for (auto it = fields.constBegin(); it != fields.constEnd(); ++it)
            result.fields.insert(it.key(), textAt(it.value(), child(at, it.key())));
        break;
    }
    case CashierAnswer::Quantity:
    case CashierAnswer::Price:
        if (!answer.isDouble())
            wrongKind(at, QStringLiteral("a number or null"), answer);
        result.number = answer.toDouble();
        break;
    }
    return result;
}

DocumentCheck documentCheckAt(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    allowOnly(object, path,
              {QStringLiteral("pluginData"), QStringLiteral("properties"), QStringLiteral("positions"),
               QStringLiteral("closed"), QStringLiteral("payments"), QStringLiteral("positionCount"),
               QStringLiteral("commonReason")});
    DocumentCheck check;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        const QString at = child(path, key);
        if (key == QLatin1String("pluginData")) {
            check.pluginData = matchersAt(it.value(), at);
        } else if (key == QLatin1String("properties")) {
            check.properties = matchersAt(it.value(), at);
        } else if (key == QLatin1String("closed")) {
            check.closed = boolAt(it.value(), at);
        } else if (key == QLatin1String("payments")) {
            check.payments = integerAt(it.value(), at);
        } else if (key == QLatin1String("positionCount")) {
            check.positionCount = integerAt(it.value(), at);
        } else if (key == QLatin1String("commonReason")) {
            checkMatcher(it.value(), at);
            check.commonReason = it.value();
        } else if (key == QLatin1String("positions")) {
            const QJsonArray positions = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < positions.size(); ++i) {
                const QString itemPath = element(at, i);
                QJsonObject item = objectAt(positions.at(i), itemPath);
                allowOnly(item, itemPath,
                          {QStringLiteral("posnum"), QStringLiteral("data"), QStringLiteral("code"),
                           QStringLiteral("barcode"), QStringLiteral("name"), QStringLiteral("quantity"),
                           QStringLiteral("price"), QStringLiteral("sum")});
                PositionCheck position;
                position.posnum = integerAt(required(item, itemPath, QStringLiteral("posnum")), child(itemPath, QStringLiteral("posnum")));
                if (item.contains(QStringLiteral("data"))) {
                    const QString dataPath = child(itemPath, QStringLiteral("data"));
                    position.data = objectAt(item.value(QStringLiteral("data")), dataPath);
                    for (auto ns = position.data.constBegin(); ns != position.data.constEnd(); ++ns)
                        matchersAt(ns.value(), child(dataPath, ns.key()));
                }
                item.remove(QStringLiteral("posnum"));
                item.remove(QStringLiteral("data"));
                position.fields = matchersAt(item, itemPath);
                check.positions << position;
            }
        }
    }
    return check;
}

Expectation expectationAt(const QJsonValue &value, const QString &path, bool forAction)
{
    const QJsonObject object = objectAt(value, path);
    QStringList allowed{QStringLiteral("dialogs"), QStringLiteral("requests"), QStringLiteral("documents"),
                        QStringLiteral("storage"), QStringLiteral("paymentTotals")};
    if (forAction)
        allowed << QStringLiteral("result") << QStringLiteral("document");
    allowOnly(object, path, allowed);
    Expectation expect;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        const QString at = child(path, key);
        if (key == QLatin1String("result")) {
            expect.result = integerAt(it.value(), at);
        } else if (key == QLatin1String("dialogs")) {
            QStringList ids;
            const QJsonArray array = arrayAt(it.value(), at);
            for (qsizetype i = 0; i < array.size(); ++i)
                ids << stringAt(array.at(i), element(at, i));
            expect.dialogs = ids;
        } else if (key == QLatin1String("requests")) {
            const QJsonObject requests = objectAt(it.value(), at);
            for (auto request = requests.constBegin(); request != requests.constEnd(); ++request) {
                const QString requestPath = child(at, request.key());
                if (!request.key().startsWith(QLatin1Char('/')))
                    fail(requestPath, QStringLiteral("a request path starts with /"));
                const int count = integerAt(request.value(), requestPath);
                if (count < 0)
                    fail(requestPath, QStringLiteral("a number of requests cannot be negative"));
                expect.requests.insert(request.key(), count);
            }
        } else if (key == QLatin1String("document")) {
            expect.document = documentCheckAt(it.value(), at);
        } else if (key == QLatin1String("documents")) {
            const QJsonObject documents = objectAt(it.value(), at);
            for (auto document = documents.constBegin(); document != documents.constEnd(); ++document)
                expect.documents.insert(document.key(), documentCheckAt(document.value(), child(at, document.key())));
        } else if (key == QLatin1String("storage")) {
            expect.storage = matchersAt(it.value(), at);
        } else if (key == QLatin1String("paymentTotals")) {
            const QJsonObject totals = objectAt(it.value(), at);
            for (auto total = totals.constBegin(); total != totals.constEnd(); ++total) {
                bool ok = false;
                const int code = total.key().toInt(&ok);
                if (!ok)
                    fail(child(at, total.key()), QStringLiteral("a currency code is an integer"));
                expect.paymentTotals.insert(code, numberAt(total.value(), child(at, total.key())));
            }
        }
    }
    return expect;
}

ScenarioAction actionAt(const QJsonValue &value, const QString &path, const Scenario &scenario)
{
    const QJsonObject object = objectAt(value, path);
    const QString typePath = child(path, QStringLiteral("type"));
    const QString typeName = stringAt(required(object, path, QStringLiteral("type")), typePath);
    const QStringList names = ScenarioAction::typeNames();
    if (!names.contains(typeName))
        fail(typePath, QStringLiteral("unknown action %1 (expected one of: %2)").arg(quoted(typeName), names.join(QStringLiteral(", "))));

    ScenarioAction action;
    action.path = path;
    action.type = ScenarioAction::Type(names.indexOf(typeName));
    const QStringList common{QStringLiteral("type"), QStringLiteral("note"), QStringLiteral("expect")};
    switch (action.type) {
    case ScenarioAction::Bind:
    case ScenarioAction::BackBySale: {
        allowOnly(object, path, common + QStringList{QStringLiteral("document"), QStringLiteral("orvel")});
        const QString at = child(path, QStringLiteral("document"));
        action.document = stringAt(required(object, path, QStringLiteral("document")), at);
        const DocumentSpec *described = scenario.document(action.document);
        if (!described)
            fail(at, QStringLiteral("no document %1 in documents").arg(quoted(action.document)));
        if (action.type == ScenarioAction::BackBySale) {
            if (described->type != 25)
                fail(at, QStringLiteral("a return by sale needs a document of type returnBySale"));
            action.orvel = object.contains(QStringLiteral("orvel"))
                ? boolAt(object.value(QStringLiteral("orvel")), child(path, QStringLiteral("orvel")))
                : described->saleIdentifier.isEmpty();
        } else if (object.contains(QStringLiteral("orvel"))) {
            fail(child(path, QStringLiteral("orvel")), QStringLiteral("only a backBySale action takes orvel"));
        }
        break;
    }
    case ScenarioAction::Card:
    case ScenarioAction::Coupon:
        allowOnly(object, path, common + QStringList{QStringLiteral("number")});
        action.number = textAt(required(object, path, QStringLiteral("number")), child(path, QStringLiteral("number")));
        break;
    case ScenarioAction::Add:
        allowOnly(object, path, common + QStringList{QStringLiteral("position"), QStringLiteral("quantity"), QStringLiteral("price")});
        action.position = positionAt(required(object, path, QStringLiteral("position")), child(path, QStringLiteral("position")));
        if (object.contains(QStringLiteral("quantity")))
            action.quantity = numberAt(object.value(QStringLiteral("quantity")), child(path, QStringLiteral("quantity")));
        if (object.contains(QStringLiteral("price")))
            action.price = numberAt(object.value(QStringLiteral("price")), child(path, QStringLiteral("price")));
        break;
    case ScenarioAction::Reason: {
        allowOnly(object, path, common + QStringList{QStringLiteral("target"), QStringLiteral("position")});
        const QString at = child(path, QStringLiteral("target"));
        const QString target = stringAt(required(object, path, QStringLiteral("target")), at);
        if (target == QLatin1String("document")) {
            action.reasonForDocument = true;
            if (object.contains(QStringLiteral("position")))
                fail(child(path, QStringLiteral("position")), QStringLiteral("a reason for the document names no position"));
        } else if (target == QLatin1String("position")) {
            action.positionNumber = integerAt(required(object, path, QStringLiteral("position")), child(path, QStringLiteral("position")));
        } else {
            fail(at, QStringLiteral("expected \"document\" or \"position\", found %1").arg(quoted(target)));
        }
        break;
    }
    case ScenarioAction::Pay:
        action.payment = paymentAt(object, path, common);
        break;
    case ScenarioAction::Close:
        allowOnly(object, path, common + QStringList{QStringLiteral("hostRefuses")});
        if (object.contains(QStringLiteral("hostRefuses")))
            action.hostRefuses = boolAt(object.value(QStringLiteral("hostRefuses")), child(path, QStringLiteral("hostRefuses")));
        break;
    case ScenarioAction::Input:
    case ScenarioAction::StornoAll:
    case ScenarioAction::Restart:
        allowOnly(object, path, common);
        break;
    }
    if (object.contains(QStringLiteral("note")))
        action.note = stringAt(object.value(QStringLiteral("note")), child(path, QStringLiteral("note")));
    if (object.contains(QStringLiteral("expect"))) {
        const QString at = child(path, QStringLiteral("expect"));
        action.expect = expectationAt(object.value(QStringLiteral("expect")), at, true);
        if (action.expect.result && !action.hasResult())
            fail(child(at, QStringLiteral("result")), QStringLiteral("a %1 action has no result").arg(typeName));
    }
    for (auto it = action.expect.documents.constBegin(); it != action.expect.documents.constEnd(); ++it) {
        if (!scenario.document(it.key()))
            fail(child(child(path, QStringLiteral("expect.documents")), it.key()),
                 QStringLiteral("no document %1 in documents").arg(quoted(it.key())));
    }
    return action;
}

} // namespace detail

namespace {

Scenario scenarioAt(const QJsonObject &root)
{
    allowOnly(root, QString(),
              {QStringLiteral("name"), QStringLiteral("description"), QStringLiteral("till"),
               QStringLiteral("documents"), QStringLiteral("answers"), QStringLiteral("actions"),
               QStringLiteral("expect")});
    Scenario scenario;
    scenario.name = stringAt(required(root, QString(), QStringLiteral("name")), QStringLiteral("name"));
    if (root.contains(QStringLiteral("description")))
        scenario.description = stringAt(root.value(QStringLiteral("description")), QStringLiteral("description"));
    if (root.contains(QStringLiteral("till")))
        scenario.till = tillAt(root.value(QStringLiteral("till")), QStringLiteral("till"));
    if (root.contains(QStringLiteral("documents"))) {
        const QJsonObject documents = objectAt(root.value(QStringLiteral("documents")), QStringLiteral("documents"));
        static const QRegularExpression namePattern(QStringLiteral("^[A-Za-z0-9_-]{1,40}$"));
        for (auto it = documents.constBegin(); it != documents.constEnd(); ++it) {
            const QString at = child(QStringLiteral("documents"), it.key());
            // Names become part of file names, so they stay plain.
            if (!namePattern.match(it.key()).hasMatch())
                fail(at, QStringLiteral("a document name is 1 to 40 letters, digits, _ or -"));
            scenario.documents << documentAt(it.key(), it.value(), at);
        }
    }
    if (root.contains(QStringLiteral("answers"))) {
        const QJsonArray answers = arrayAt(root.value(QStringLiteral("answers")), QStringLiteral("answers"));
        for (qsizetype i = 0; i < answers.size(); ++i)
            scenario.answers << answerAt(answers.at(i), element(QStringLiteral("answers"), i));
    }
    const QJsonArray actions = arrayAt(required(root, QString(), QStringLiteral("actions")), QStringLiteral("actions"));
    if (actions.isEmpty())
        fail(QStringLiteral("actions"), QStringLiteral("a scenario needs at least one action"));
    for (qsizetype i = 0; i < actions.size(); ++i)
        scenario.actions << actionAt(actions.at(i), element(QStringLiteral("actions"), i), scenario);
    if (root.contains(QStringLiteral("expect"))) {
        scenario.expect = expectationAt(root.value(QStringLiteral("expect")), QStringLiteral("expect"), false);
        for (auto it = scenario.expect.documents.constBegin(); it != scenario.expect.documents.constEnd(); ++it) {
            if (!scenario.document(it.key()))
                fail(child(QStringLiteral("expect.documents"), it.key()), QStringLiteral("no document %1 in documents").arg(quoted(it.key())));
        }
    }
    return scenario;
}

/// Line and column (from 1, in characters) of a byte offset into UTF-8 text.
QPair<int, int> lineAndColumn(const QByteArray &text, qsizetype offset)
{
    offset = qBound<qsizetype>(0, offset, text.size());
    const QByteArray before = text.left(offset);
    const int line = int(before.count('\n')) + 1;
    const QByteArray lastLine = before.mid(before.lastIndexOf('\n') + 1);
    return {line, int(QString::fromUtf8(lastLine).size()) + 1};
}

} // namespace

ScenarioParser::ScenarioParser(const QString &fileName)
    : m_fileName(fileName)
{
}

template <typename Value, typename Reader>
std::optional<Value> ScenarioParser::read(const QByteArray &json, const QString &what, Reader reader)
{
    m_error = ScenarioError();
    m_error.file = m_fileName;
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        const auto [line, column] = lineAndColumn(json, parseError.offset);
        m_error.line = line;
        m_error.column = column;
        m_error.message = QStringLiteral("JSON syntax error: %1").arg(parseError.errorString());
        return std::nullopt;
    }
    if (!document.isObject()) {
        m_error.message = QStringLiteral("%1 is a JSON object").arg(what);
        return std::nullopt;
    }
    try {
        return reader(document.object());
    } catch (const Failure &failure) {
        m_error.path = failure.path;
        m_error.message = failure.message;
    }
    return std::nullopt;
}

std::optional<Scenario> ScenarioParser::parse(const QByteArray &json)
{
    return read<Scenario>(json, QStringLiteral("a scenario"), scenarioAt);
}

std::optional<TillSettings> ScenarioParser::parseTillSettings(const QByteArray &json)
{
    return read<TillSettings>(json, QStringLiteral("a till description"),
                              [](const QJsonObject &object) { return tillAt(object, QString()); });
}

std::optional<Scenario> ScenarioParser::parseFile(const QString &path, ScenarioError *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = ScenarioError{path, QString(), 0, 0, QStringLiteral("cannot read the file: %1").arg(file.errorString())};
        return std::nullopt;
    }
    ScenarioParser parser(path);
    std::optional<Scenario> scenario = parser.parse(file.readAll());
    if (error)
        *error = parser.error();
    return scenario;
}

} // namespace till
