#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QUrl>

namespace orvel {

/// The headers of a request sent through the retailer's API gateway.
///
/// Returns the caller's \a headers plus the gateway's signed headers ("host",
/// "x-sdk-date", "x-stage", "env") and the signature in "Authorization", for
/// the \a url, the compact JSON \a body that is sent and the verb (\a get true
/// for a GET). The settings "OrvelGate:appKey", "OrvelGate:appSecret" and
/// "OrvelGate:xStage" (default "PreProd") are read on every call; when any of
/// them is empty, \a headers come back unchanged and the request goes unsigned.
/// The time is the host clock's, in UTC.
QHash<QString, QString> getGateHeaders(const QUrl &url, const QByteArray &body, const QHash<QString, QString> &headers,
                                       bool get);

} // namespace orvel
