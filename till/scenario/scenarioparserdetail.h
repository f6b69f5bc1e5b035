#pragma once

// The pieces of ScenarioParser that its source files share: the reader of
// each part of a scenario, built on the JSON path readers. Private to the
// scenario part.

#include "jsonpath.h"
#include "scenario.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>

namespace till::detail {

/// MoneyItem properties a payment may set besides code, amount and change.
QStringList paymentDetailNames();

// The parts of a scenario.
PositionSpec positionAt(const QJsonValue &value, const QString &path);
PaymentSpec paymentAt(const QJsonObject &object, const QString &path, const QStringList &otherKeys);
DocumentSpec documentAt(const QString &name, const QJsonValue &value, const QString &path);
CashierAnswer answerAt(const QJsonValue &value, const QString &path);
Expectation expectationAt(const QJsonValue &value, const QString &path, bool forAction);
ScenarioAction actionAt(const QJsonValue &value, const QString &path, const Scenario &scenario);

} // namespace till::detail
