#pragma once

#include <QByteArray>
#include <QJsonObject>

/// The request and answer that the benchmarks send and read: a cart update of
/// five lines, the most frequent exchange of a sale.
namespace typicalbodies {

QString cartUuid();
QJsonObject cartUpdateRequest();
/// The request as it goes on the wire: compact JSON.
QByteArray cartUpdateRequestBytes();
/// The service's answer to it, the five lines priced.
QByteArray cartUpdateAnswer();

} // namespace typicalbodies
