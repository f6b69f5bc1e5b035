// ScenarioParser: what a scenario or one of its actions expects: results,
// dialogs, requests, documents, storage and payment totals.

#include "scenarioparserdetail.h"

#include <QRegularExpression>

namespace till::detail {

namespace {

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

} // namespace

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

} // namespace till::detail
