#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace tessaro::emulator {

/// One scripted misbehaviour: what goes wrong, for which requests (method and
/// path: exact, prefix or pattern), and how many times.
///
/// Paths are service paths as the client names them ("/advicenote",
/// "/cart/<uuid>/update"), without the base path prefix; the token path is
/// written as configured.
class Fault
{
public:
    enum class Kind {
        Hang,              ///< never answer; the connection stays open until released
        CloseAfterApply,   ///< apply the request, then close without answering
        CloseBeforeApply,  ///< close without answering, nothing applied
        Reset,             ///< TCP reset, nothing applied
        Delay,             ///< wait delayMs, then apply and answer normally
        HttpStatus,        ///< answer status and body as given, nothing applied
        TruncatedJson,     ///< apply, answer the first half of the JSON text
        MalformedJson,     ///< apply, answer a JSON text with a syntax error
        EmptyBody,         ///< apply, answer with an empty body
        InvalidToken,      ///< 401 {"error": "invalid_token"}, nothing applied
        ShiftClosed,       ///< {"status": "The shift is closed"}, nothing applied
        Status3001,        ///< {"status": "error", "statusCode": 3001}, nothing applied
    };

    Fault() = default;
    Fault(Kind kind, const QString &path, int count = 1);

    /// Reads {"kind", "path" | "pathPrefix" | "pathPattern", "method", "count",
    /// "skip", "delayMs", "status", "body", "releaseAfterMs"}. On failure
    /// returns nothing and says why in error.
    static std::optional<Fault> fromJson(const QJsonObject &object, QString *error);
    QJsonObject toJson() const;

    static QString kindName(Kind kind);
    static std::optional<Kind> kindFromName(const QString &name);

    /// Whether a request with this method and service path is one this fault
    /// is meant for (skip and count are the plan's business).
    bool matches(const QByteArray &method, const QString &path) const;

    Kind kind = Kind::HttpStatus;
    QString path;
    QString pathPrefix;
    QString pathPattern;
    QByteArray method;                ///< empty: every method
    int count = 1;                    ///< requests it strikes; -1 (or 0) for every one
    int skip = 0;                     ///< matching requests let through first
    int delayMs = 0;                  ///< Delay
    int status = 500;                 ///< HttpStatus
    QByteArray body;                  ///< HttpStatus
    int releaseAfterMs = 0;           ///< Hang: close after that long; 0 keeps it until shutdown
};

} // namespace tessaro::emulator
