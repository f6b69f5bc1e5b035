#include "emulator/emulatorsettings.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>

namespace tessaro::emulator {

namespace {

const QSet<QString> &knownKeys()
{
    static const QSet<QString> keys{
        QStringLiteral("host"), QStringLiteral("port"), QStringLiteral("basePath"),
        QStringLiteral("auth"), QStringLiteral("tokenPath"), QStringLiteral("tokenLifetimeSeconds"),
        QStringLiteral("clients"), QStringLiteral("gateway"), QStringLiteral("shiftOpenByDefault"),
        QStringLiteral("tills"), QStringLiteral("cardBarcodePattern"), QStringLiteral("customers"),
        QStringLiteral("articles"), QStringLiteral("defaultPrice"), QStringLiteral("invalidCoupons"),
        QStringLiteral("messages"), QStringLiteral("payloads"), QStringLiteral("faults"),
    };
    return keys;
}

std::optional<EmulatorSettings::AuthMode> authModeFromName(const QString &name)
{
    if (name == QLatin1String("token"))
        return EmulatorSettings::AuthMode::Token;
    if (name == QLatin1String("gateway"))
        return EmulatorSettings::AuthMode::Gateway;
    if (name == QLatin1String("none"))
        return EmulatorSettings::AuthMode::None;
    return std::nullopt;
}

// Objects of a JSON object, keyed as in the file.
QHash<QString, QJsonObject> objectsByKey(const QJsonObject &object)
{
    QHash<QString, QJsonObject> result;
    for (auto it = object.begin(); it != object.end(); ++it)
        result.insert(it.key(), it.value().toObject());
    return result;
}

QStringList strings(const QJsonArray &array)
{
    QStringList result;
    for (const QJsonValue &value : array)
        result.append(value.toString());
    return result;
}

} // namespace

EmulatorSettings::EmulatorSettings()
{
    // One client for a quick start; a settings file replaces it.
    clients.append({QStringLiteral("till"), QStringLiteral("tessaro"),
                    QStringLiteral("Basic dGlsbDpzZWNyZXQ=")});
}

std::optional<EmulatorSettings> EmulatorSettings::fromJson(const QJsonObject &object, QString *error)
{
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!knownKeys().contains(it.key())) {
            *error = QStringLiteral("unknown setting '%1'").arg(it.key());
            return std::nullopt;
        }
    }

    EmulatorSettings settings;
    if (object.contains(QStringLiteral("host"))) {
        settings.address = QHostAddress(object.value(QStringLiteral("host")).toString());
        if (settings.address.isNull()) {
            *error = QStringLiteral("\"host\" is not an IP address");
            return std::nullopt;
        }
    }
    settings.port = quint16(object.value(QStringLiteral("port")).toInt(settings.port));
    settings.basePath = object.value(QStringLiteral("basePath")).toString();
    while (settings.basePath.endsWith(QLatin1Char('/')))
        settings.basePath.chop(1);
    if (!settings.basePath.isEmpty() && !settings.basePath.startsWith(QLatin1Char('/')))
        settings.basePath.prepend(QLatin1Char('/'));

    const auto mode = authModeFromName(object.value(QStringLiteral("auth")).toString(QStringLiteral("token")));
    if (!mode) {
        *error = QStringLiteral("\"auth\" must be \"token\", \"gateway\" or \"none\"");
        return std::nullopt;
    }
    settings.authMode = *mode;
    settings.tokenPath = object.value(QStringLiteral("tokenPath")).toString(settings.tokenPath);
    settings.tokenLifetimeSeconds =
        object.value(QStringLiteral("tokenLifetimeSeconds")).toInt(settings.tokenLifetimeSeconds);

    if (object.contains(QStringLiteral("clients"))) {
        settings.clients.clear();
        for (const QJsonValue &value : object.value(QStringLiteral("clients")).toArray()) {
            const QJsonObject client = value.toObject();
            settings.clients.append({client.value(QStringLiteral("client_id")).toString(),
                                     client.value(QStringLiteral("realm_id")).toString(),
                                     client.value(QStringLiteral("authorization")).toString()});
        }
    }

    const QJsonObject gateway = object.value(QStringLiteral("gateway")).toObject();
    settings.appKey = gateway.value(QStringLiteral("appKey")).toString();
    settings.appSecret = gateway.value(QStringLiteral("appSecret")).toString();
    settings.clockToleranceSeconds =
        gateway.value(QStringLiteral("clockToleranceSeconds")).toInt(settings.clockToleranceSeconds);
    if (settings.authMode == AuthMode::Gateway && (settings.appKey.isEmpty() || settings.appSecret.isEmpty())) {
        *error = QStringLiteral("gateway mode needs \"gateway\": {\"appKey\", \"appSecret\"}");
        return std::nullopt;
    }

    settings.shiftOpenByDefault =
        object.value(QStringLiteral("shiftOpenByDefault")).toBool(settings.shiftOpenByDefault);
    for (const QJsonValue &value : object.value(QStringLiteral("tills")).toArray()) {
        const QJsonObject till = value.toObject();
        settings.tills.append({till.value(QStringLiteral("storeNo")).toInt(),
                               till.value(QStringLiteral("tillNo")).toInt(),
                               till.value(QStringLiteral("shiftOpen")).toBool(settings.shiftOpenByDefault),
                               till.value(QStringLiteral("nextInvoiceNo")).toInt(1)});
    }

    settings.cardBarcodePattern =
        object.value(QStringLiteral("cardBarcodePattern")).toString(settings.cardBarcodePattern);
    if (!QRegularExpression(settings.cardBarcodePattern).isValid()) {
        *error = QStringLiteral("invalid cardBarcodePattern '%1'").arg(settings.cardBarcodePattern);
        return std::nullopt;
    }
    settings.customers = objectsByKey(object.value(QStringLiteral("customers")).toObject());

    for (const QJsonValue &value : object.value(QStringLiteral("articles")).toArray()) {
        const QJsonObject article = value.toObject();
        settings.articles.append({article.value(QStringLiteral("barcode")).toString(),
                                  article.value(QStringLiteral("subsysNo")).toString(),
                                  article.value(QStringLiteral("artNo")).toString(),
                                  article.value(QStringLiteral("artName")).toString(),
                                  article.value(QStringLiteral("price")).toDouble()});
    }
    settings.defaultPrice = object.value(QStringLiteral("defaultPrice")).toDouble(settings.defaultPrice);
    settings.invalidCoupons = strings(object.value(QStringLiteral("invalidCoupons")).toArray());

    const QJsonObject messages = object.value(QStringLiteral("messages")).toObject();
    for (auto it = messages.begin(); it != messages.end(); ++it)
        settings.messages.insert(it.key(), strings(it.value().toArray()));
    settings.payloads = objectsByKey(object.value(QStringLiteral("payloads")).toObject());

    for (const QJsonValue &value : object.value(QStringLiteral("faults")).toArray()) {
        const auto fault = Fault::fromJson(value.toObject(), error);
        if (!fault)
            return std::nullopt;
        settings.faults.append(*fault);
    }
    return settings;
}

std::optional<EmulatorSettings> EmulatorSettings::load(const QString &fileName, QString *error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1: %2").arg(fileName, file.errorString());
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!document.isObject()) {
        *error = QStringLiteral("%1 is not a JSON object: %2").arg(fileName, parseError.errorString());
        return std::nullopt;
    }
    return fromJson(document.object(), error);
}

EmulatorSettings::Article EmulatorSettings::findArticle(const QString &barcode, const QString &subsysNo) const
{
    for (const Article &article : articles) {
        if ((!barcode.isEmpty() && article.barcode == barcode)
            || (!subsysNo.isEmpty() && article.subsysNo == subsysNo))
            return article;
    }
    const QString code = subsysNo.isEmpty() ? barcode : subsysNo;
    return {barcode, subsysNo, code, QStringLiteral("Article %1").arg(code), defaultPrice};
}

} // namespace tessaro::emulator
