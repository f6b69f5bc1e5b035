#pragma once

// The pieces of ScenarioParser that its source files share: readers of one
// JSON value each, which name the place of a problem by its JSON path, and the
// reader of each part of a scenario. Private to till/.

#include "scenario.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>

namespace till::detail {

/// The first problem found; ends the reading.
struct Failure
{
    QString path;
    QString message;
};

[[noreturn]] void fail(const QString &path, const QString &message);
[[noreturn]] void wrongKind(const QString &path, const QString &expected, const QJsonValue &found);

QString child(const QString &path, const QString &key);
QString element(const QString &path, qsizetype index);
QString quoted(const QString &text);

QJsonObject objectAt(const QJsonValue &value, const QString &path);
QJsonArray arrayAt(const QJsonValue &value, const QString &path);
QString stringAt(const QJsonValue &value, const QString &path);
double numberAt(const QJsonValue &value, const QString &path);
int integerAt(const QJsonValue &value, const QString &path);
bool boolAt(const QJsonValue &value, const QString &path);
QString textAt(const QJsonValue &value, const QString &path);
QList<int> integersAt(const QJsonValue &value, const QString &path);
QList<double> numbersAt(const QJsonValue &value, const QString &path);

void allowOnly(const QJsonObject &object, const QString &path, const QStringList &allowed);
QJsonValue required(const QJsonObject &object, const QString &path, const QString &key);

/// MoneyItem properties a payment may set besides code, amount and change.
QStringList paymentDetailNames();

// The parts of a scenario.
TillSettings tillAt(const QJsonValue &value, const QString &path);
PositionSpec positionAt(const QJsonValue &value, const QString &path);
PaymentSpec paymentAt(const QJsonObject &object, const QString &path, const QStringList &otherKeys);
DocumentSpec documentAt(const QString &name, const QJsonValue &value, const QString &path);
CashierAnswer answerAt(const QJsonValue &value, const QString &path);
Expectation expectationAt(const QJsonValue &value, const QString &path, bool forAction);
ScenarioAction actionAt(const QJsonValue &value, const QString &path, const Scenario &scenario);

} // namespace till::detail
