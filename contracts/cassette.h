#pragma once

#include "contracts/cassetteexchange.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessaro::contracts {

/// A recorded session of the plug-in with the service: every exchange in
/// order, with the addresses it was recorded against and the rules that say
/// which parts of a request may differ on replay (time stamps, the
/// gateway's date). Read and written as JSON by CassetteFile.
class Cassette
{
public:
    /// The format this program writes; a cassette of a higher one is refused.
    static constexpr int formatVersion = 1;

    /// The request headers whose values a replay does not compare: those of
    /// a new cassette.
    static QStringList defaultVolatileHeaders();

    QJsonObject toJson() const;
    /// Null when \a json is no cassette this program can read; \a error says why.
    static std::optional<Cassette> fromJson(const QJsonObject &json, QString *error);

    /// The plug-in's version that made the requests.
    QString pluginVersion;
    /// The service's base address ("Tessaro:url") and token address at recording.
    QString serviceUrl;
    QString tokenUrl;
    /// Request headers whose values are not compared on replay (names, any case).
    QStringList volatileHeaders = defaultVolatileHeaders();
    /// Request body fields whose values are not compared on replay, as
    /// DriftRules patterns ("*Date", "items[].time").
    QStringList volatileFields;
    QList<CassetteExchange> exchanges;
};

} // namespace tessaro::contracts
