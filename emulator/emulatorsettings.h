#pragma once

#include "emulator/fault.h"

#include <QHash>
#include <QHostAddress>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace tessaro::emulator {

/// Everything the emulator is told before it starts: address, paths, who may
/// fetch a token, the gateway's key, the tills, customers, articles and the
/// faults to start with. Read from a JSON file (see docs/emulator.md) or built
/// in code; a default-constructed value serves a simple setup out of the box.
class EmulatorSettings
{
public:
    /// How service paths authenticate a request.
    enum class AuthMode {
        Token,   ///< "Authorization: Bearer <token>" from the token path
        Gateway, ///< "SDK-HMAC-SHA256" signature of every request
        None,    ///< no check
    };

    /// One party allowed to fetch a token.
    struct Client {
        QString clientId;
        QString realmId;
        QString authorization; ///< the exact "Authorization" header value expected
    };

    /// A till's state at start.
    struct Till {
        int storeNo = 0;
        int tillNo = 0;
        bool shiftOpen = true;
        int nextInvoiceNo = 1;
    };

    /// A catalogue article, found by barcode or by article code (subsysNo).
    struct Article {
        QString barcode;
        QString subsysNo;
        QString artNo;
        QString artName;
        double price = 0.0;
    };

    EmulatorSettings();

    /// Reads the settings' JSON form; unknown keys are refused so that a typo
    /// does not pass silently. On failure returns nothing and says why.
    static std::optional<EmulatorSettings> fromJson(const QJsonObject &object, QString *error);
    /// Reads a JSON settings file.
    static std::optional<EmulatorSettings> load(const QString &fileName, QString *error);

    /// The article with that barcode or code; an article named after the code,
    /// at defaultPrice, when the catalogue does not know it.
    Article findArticle(const QString &barcode, const QString &subsysNo) const;

    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = 8080;
    QString basePath;                        ///< e.g. "/api"; empty for none
    AuthMode authMode = AuthMode::Token;
    QString tokenPath = QStringLiteral("/token");
    int tokenLifetimeSeconds = 3600;
    QList<Client> clients;
    QString appKey;
    QString appSecret;
    int clockToleranceSeconds = 15 * 60;
    /// Whether GET /_emulator/requests shows credentials, tokens and keys as
    /// they came; by default it shows only their scheme and length.
    bool showSecretsInJournal = false;
    bool shiftOpenByDefault = true;
    QList<Till> tills;
    QString cardBarcodePattern = QStringLiteral("^[0-9]{6,20}$");
    QHash<QString, QJsonObject> customers;   ///< card barcode to customer record
    QList<Article> articles;
    double defaultPrice = 100.0;
    QStringList invalidCoupons;              ///< coupon numbers that fail validation
    QHash<QString, QStringList> messages;    ///< messages id to texts
    QHash<QString, QJsonObject> payloads;    ///< payload id to payload
    QList<Fault> faults;
};

} // namespace tessaro::emulator
