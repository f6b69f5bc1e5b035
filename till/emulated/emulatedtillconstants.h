#pragma once

#include <QString>

/// The till that a new data folder describes (TillDataFolder::create()) and
/// that the emulated service knows: its numbers, the client's credentials and
/// the gateway's key and secret. Bundled scenarios, cassettes and saved
/// sessions are written against these values, so they never change.
namespace till::emulated {

inline constexpr int storeNo = 7;
inline constexpr int tillNo = 12;
/// The client's Basic credentials ("till:secret" in Base64), which no log line may show.
inline const QString clientCredentials = QStringLiteral("dGlsbDpzZWNyZXQ=");
/// The gateway's key and secret of a till that signs its requests.
inline const QString appKey = QStringLiteral("gate-key");
inline const QString appSecret = QStringLiteral("gate-secret");

} // namespace till::emulated
