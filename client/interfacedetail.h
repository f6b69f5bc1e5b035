#pragma once

// Helpers that several of Interface's source files share: the configuration,
// the operator's code, traceability records and the receipt's rounding.
// Private to client/.

#include <QJsonObject>
#include <QSet>
#include <QSharedPointer>
#include <QString>

class AbstractDocument;
class User;

namespace orvel {
class Traceability;
}

namespace tessaro::detail {

// Seconds as the REST client's milliseconds. Seconds beyond what an int holds
// in milliseconds go as the most it holds, which the client then bounds like
// any other time-out that is too long.
int milliseconds(qint64 seconds);

QString operatorCode(const QSharedPointer<User> &user);

// The host's card type of the service's loyalty cards.
constexpr int loyaltyCardType = 27;

// The fields of a traceability record that the service takes, each only when
// set. A cart item never carries the GTIN; an advice note's item does.
QJsonObject traceabilityObject(const orvel::Traceability &record, bool withGtin = false);

// The host's discount modes of rounding: of the receipt's total, and by the change given.
constexpr int roundingDiscountMode = 11;
constexpr int changeRoundingDiscountMode = 6;

// What the receipt was rounded by: its discounts of the rounding \a modes and its own rounding.
double roundingTotal(const AbstractDocument &document, const QSet<int> &modes);

} // namespace tessaro::detail
