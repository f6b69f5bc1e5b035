#include "configurationjudge.h"

#include "checkreport.h"

#include "plugin/selfcheck/selfcheckprotocol.h"
#include "secrets/secretmask.h"

#include <QHostAddress>
#include <QUrl>
#include <QRegularExpression>

#include <algorithm>

namespace till {

namespace {

// Longer addresses are refused by many servers and proxies; none is meant.
constexpr qsizetype longestAddress = 2048;

bool isLoopback(const QString &host)
{
    return host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0 || QHostAddress(host).isLoopback();
}

QString onOff(bool on)
{
    return on ? QStringLiteral("on") : QStringLiteral("off");
}

// A written value goes into a message with all its neighbours in one arg():
// a later arg() would fill a "%1" in the value instead of its own place.
QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QList<int> sortedCodes(const QStringList &names)
{
    QList<int> codes;
    for (const QString &name : names)
        codes << name.toInt();
    std::sort(codes.begin(), codes.end());
    return codes;
}

QString codeList(const QList<int> &codes)
{
    QStringList texts;
    for (int code : codes)
        texts << QString::number(code);
    return texts.join(QStringLiteral(", "));
}

// "1 → 2, 5 → 2" for a map of codes, "1: 2, 3" for a map of code lists.
QString shownMap(const QJsonObject &map)
{
    if (map.isEmpty())
        return QStringLiteral("empty");
    QStringList entries;
    const QList<int> keys = sortedCodes(map.keys());
    for (int key : keys) {
        const QJsonValue value = map.value(QString::number(key));
        if (value.isArray()) {
            QStringList items;
            const QJsonArray array = value.toArray();
            for (const QJsonValue &item : array)
                items << item.toVariant().toString();
            entries << QStringLiteral("%1: %2").arg(key).arg(items.join(QLatin1Char(',')));
        } else {
            entries << QStringLiteral("%1 → %2").arg(key).arg(value.toInt());
        }
    }
    return entries.join(QStringLiteral("; "));
}

bool isWholeNumber(const QString &text)
{
    bool ok = false;
    static_cast<void>(text.trimmed().toLongLong(&ok));
    return ok;
}

// The words the host's configuration reads as a yes or a no.
bool isYesNo(const QString &text)
{
    static const QStringList words{QStringLiteral("true"), QStringLiteral("1"), QStringLiteral("yes"), QStringLiteral("on"),
                                   QStringLiteral("false"), QStringLiteral("0"), QStringLiteral("no"), QStringLiteral("off")};
    return words.contains(text.trimmed().toLower());
}

QString duration(qint64 seconds)
{
    return QStringLiteral("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
}

bool allIntegers(const QString &text)
{
    const QStringList pieces = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    return std::all_of(pieces.cbegin(), pieces.cend(), [](const QString &piece) {
        return isWholeNumber(piece) || piece.trimmed().isEmpty();
    });
}

} // namespace

ConfigurationJudge::ConfigurationJudge(const QJsonObject &pluginReport, const std::optional<QHash<int, QString>> &currencies)
    : m_settings(pluginReport.value(tessaro::selfcheck::report::Settings).toArray())
    , m_sections(pluginReport.value(tessaro::selfcheck::report::Sections).toArray())
    , m_currencySettings(pluginReport.value(tessaro::selfcheck::report::Currencies).toArray())
    , m_currencies(currencies)
{
}

QJsonObject ConfigurationJudge::setting(const QString &key) const
{
    for (const QJsonValue &value : m_settings) {
        if (value.toObject().value(QStringLiteral("key")).toString() == key)
            return value.toObject();
    }
    return QJsonObject();
}

bool ConfigurationJudge::addressUsable(const QString &key) const
{
    const QJsonObject address = setting(key);
    const QString scheme = address.value(QStringLiteral("scheme")).toString();
    return address.value(QStringLiteral("valid")).toBool() && (scheme == QLatin1String("http") || scheme == QLatin1String("https"))
        && !address.value(QStringLiteral("controlCharacters")).toBool() && !address.value(QStringLiteral("blanks")).toBool()
        && address.value(QStringLiteral("length")).toInteger() <= longestAddress;
}

void ConfigurationJudge::judgeCuts(const QList<ConfigFileText::Cut> &cuts, CheckReport *report) const
{
    for (const ConfigFileText::Cut &cut : cuts) {
        const QString name = cut.section.startsWith(QLatin1String("Tessaro.")) ? QStringLiteral("[%1] %2").arg(cut.section, cut.key)
                                                                                 : QStringLiteral("%1:%2").arg(cut.section, cut.key);
        report->failure(name,
                        QStringLiteral("%1 is cut at \";\", which starts a comment in the configuration file: the plug-in reads %2")
                            .arg(quoted(cut.written), quoted(cut.kept)),
                        QStringLiteral("separate list items with commas, and put a value that must hold \";\" in double quotes"));
    }
}

bool ConfigurationJudge::gatewayOn() const
{
    return setting(QStringLiteral("OrvelGate:tessaro")).value(QStringLiteral("value")).toBool();
}

bool ConfigurationJudge::tokenAuthUsed() const
{
    return setting(QStringLiteral("Tessaro:useTokenAuth")).value(QStringLiteral("value")).toBool();
}

void ConfigurationJudge::judge(CheckReport *report) const
{
    judgeAddress(QStringLiteral("Tessaro:url"), report);
    if (tokenAuthUsed())
        judgeAddress(QStringLiteral("Tessaro:tokenUrl"), report);
    else
        report->ok(QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("not used: no token authorisation"));
    judgeTokenAuth(report);
    judgeTimeout(report);
    judgeCouponMask(report);
    for (const QString &key : {QStringLiteral("Tessaro:validationCoupon"), QStringLiteral("Tessaro:onlineCheckEanReasonCode"),
                               QStringLiteral("Tessaro:operationIdAsCardNumber"), QStringLiteral("Tessaro:operationIdAsEFTApprovalCode"),
                               QStringLiteral("Tessaro:typeTill"), QStringLiteral("Tessaro:nameTypeTill"), QStringLiteral("Tessaro:hostName"),
                               QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"),
                               QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound")})
        judgePlain(key, report);
    judgeGateway(report);
    for (const QJsonValue &section : m_sections)
        judgeSection(section.toObject(), report);
    for (const QJsonValue &currency : m_currencySettings)
        judgeCurrency(currency.toObject(), report);
}

void ConfigurationJudge::judgeAddress(const QString &key, CheckReport *report) const
{
    const QJsonObject address = setting(key);
    const QString value = address.value(QStringLiteral("value")).toString();
    const QString text = address.value(QStringLiteral("text")).toString();
    const QString scheme = address.value(QStringLiteral("scheme")).toString();
    const QString host = address.value(QStringLiteral("host")).toString();
    const QString hint = QStringLiteral("write %1 as https://host:port/path").arg(key);
    const qsizetype length = address.value(QStringLiteral("length")).toInteger();
    if (length > longestAddress)
        report->failure(key, QStringLiteral("%1 characters long: no service takes an address that long (at most %2)").arg(length).arg(longestAddress),
                        hint);
    else if (address.value(QStringLiteral("controlCharacters")).toBool())
        report->failure(key, QStringLiteral("%1 holds a control character (such as %2): no request can carry it").arg(quoted(text), QStringLiteral("%00")), hint);
    else if (address.value(QStringLiteral("blanks")).toBool())
        report->failure(key, QStringLiteral("%1 holds a blank, which the plug-in sends as part of the address").arg(quoted(text)),
                        QStringLiteral("remove the blanks from %1").arg(key));
    else if (!address.value(QStringLiteral("set")).toBool())
        report->warning(key, QStringLiteral("not set: the plug-in uses %1").arg(value), QStringLiteral("set %1 to the service's address").arg(key));
    else if (scheme.isEmpty())
        report->failure(key, QStringLiteral("%1 has no scheme (http:// or https://)").arg(quoted(text)), hint);
    else if (scheme != QLatin1String("http") && scheme != QLatin1String("https"))
        report->failure(key, QStringLiteral("%1 does not start with http:// or https:// (the plug-in reads the scheme %2)").arg(quoted(text), quoted(scheme)), hint);
    else if (!address.value(QStringLiteral("valid")).toBool())
        report->failure(key, QStringLiteral("%1 does not parse as an address with a host").arg(quoted(text)), hint);
    else if (key == QLatin1String("Tessaro:url") && address.value(QStringLiteral("pathEndsWithSlash")).toBool())
        report->warning(key, QStringLiteral("%1 ends with \"/\": requests go to …%2/messages/… and the like, which only a service "
                                            "that merges slashes answers")
                                 .arg(value, QUrl(value).path()),
                        QStringLiteral("remove the trailing slash from %1").arg(key));
    else if (scheme == QLatin1String("http") && !isLoopback(host))
        report->warning(key, QStringLiteral("%1: plain http to %2, which is not this machine: credentials and receipts travel unencrypted").arg(value, host),
                        QStringLiteral("use an https:// address in %1").arg(key));
    else
        report->ok(key, value);
}

void ConfigurationJudge::judgeSecret(const QString &key, const QString &shown, bool required, const QString &hint,
                                     CheckReport *report) const
{
    const QJsonObject secret = setting(key);
    const int length = secret.value(QStringLiteral("length")).toInt();
    if (!required) {
        report->ok(key, length == 0 ? QStringLiteral("not used") : QStringLiteral("not used (set, %1 characters)").arg(length));
        return;
    }
    if (length == 0) {
        report->failure(key, QStringLiteral("empty"), hint);
        return;
    }
    const QString value = QStringLiteral("%1 (%2 characters)").arg(shown, QString::number(length));
    if (secret.value(QStringLiteral("blanksAround")).toBool())
        report->failure(key, value + QStringLiteral(": blanks stand around it, and are sent as part of it"),
                        QStringLiteral("remove the blanks around the value of %1").arg(key));
    else
        report->ok(key, value);
}

void ConfigurationJudge::judgeTokenAuth(CheckReport *report) const
{
    const bool used = tokenAuthUsed();
    const QString configured = setting(QStringLiteral("Tessaro:useTokenAuth")).value(QStringLiteral("text")).toString();
    QString detail = onOff(used);
    if (!used && gatewayOn())
        detail = QStringLiteral("off: the gateway signs the requests instead (OrvelGate:tessaro)");
    else if (!used)
        detail = QStringLiteral("off: requests go without a token or a signature");
    else if (configured.isEmpty())
        detail = QStringLiteral("on (default)");
    report->ok(QStringLiteral("Tessaro:useTokenAuth"), detail);

    const QString clientId = setting(QStringLiteral("Tessaro:clientId")).value(QStringLiteral("value")).toString();
    if (!used)
        report->ok(QStringLiteral("Tessaro:clientId"), QStringLiteral("not used"));
    else if (clientId.isEmpty())
        report->failure(QStringLiteral("Tessaro:clientId"), QStringLiteral("empty, but token authorisation is on"),
                        QStringLiteral("set Tessaro:clientId to the till's client id at the token endpoint"));
    else
        report->ok(QStringLiteral("Tessaro:clientId"), clientId);
    const QString realmId = setting(QStringLiteral("Tessaro:realmId")).value(QStringLiteral("value")).toString();
    report->ok(QStringLiteral("Tessaro:realmId"), !used ? QStringLiteral("not used") : realmId.isEmpty() ? QStringLiteral("(empty)") : realmId);

    const QString scheme = setting(QStringLiteral("Tessaro:authorizationHeader")).value(QStringLiteral("scheme")).toString();
    judgeSecret(QStringLiteral("Tessaro:authorizationHeader"), scheme.isEmpty() ? SecretMask::hidden() : scheme + QLatin1Char(' ') + SecretMask::hidden(),
                used, QStringLiteral("set Tessaro:authorizationHeader to the value the token endpoint expects, e.g. Basic <base64 of id:secret>"),
                report);
}

void ConfigurationJudge::judgeTimeout(CheckReport *report) const
{
    const QString key = QStringLiteral("Tessaro:timeout");
    const QJsonObject timeout = setting(key);
    const qint64 seconds = timeout.value(QStringLiteral("value")).toInteger();
    const QString text = timeout.value(QStringLiteral("text")).toString().trimmed();
    const bool integer = isWholeNumber(text);
    // The transport replaces a time-out that is not positive or above its cap by the cap.
    const qint64 transportMs = timeout.value(QStringLiteral("transportMs")).toInteger();
    const QString cap = duration(timeout.value(QStringLiteral("longestMs")).toInteger() / 1000);
    const QString hint = QStringLiteral("set %1 to the seconds a request may take, between 1 and 60 (5 by default)").arg(key);
    if (seconds <= 0)
        report->failure(key, QStringLiteral("%1 is no time-out: the transport waits up to its cap of %2 for each request instead, "
                                            "and a cashier waits that long whenever the service does not answer")
                                 .arg(seconds)
                                 .arg(cap),
                        hint);
    else if (transportMs < seconds * 1000)
        report->warning(key, QStringLiteral("%1 s is above the transport's cap: each request waits at most %2, and a cashier waits "
                                            "that long whenever the service does not answer")
                                 .arg(seconds)
                                 .arg(cap),
                        hint);
    else if (timeout.value(QStringLiteral("set")).toBool() && !integer)
        report->warning(key, QStringLiteral("%1 is not a whole number: the plug-in uses %2 s").arg(quoted(text), QString::number(seconds)), hint);
    else if (seconds > 60)
        report->warning(key, QStringLiteral("%1 s: a cashier waits that long for every request that gets no answer").arg(seconds), hint);
    else
        report->ok(key, QStringLiteral("%1 s").arg(seconds));
}

void ConfigurationJudge::judgePlain(const QString &key, CheckReport *report) const
{
    const QJsonObject plain = setting(key);
    const QJsonValue value = plain.value(QStringLiteral("value"));
    const QString text = plain.value(QStringLiteral("text")).toString();
    const bool set = plain.value(QStringLiteral("set")).toBool();
    if (value.isBool()) {
        const QString shown = onOff(value.toBool());
        if (set && !isYesNo(text))
            report->warning(key, QStringLiteral("%1 is no yes/no value: the plug-in takes %2").arg(quoted(text), shown),
                            QStringLiteral("write %1 as true or false").arg(key));
        else
            report->ok(key, shown + (set ? QString() : QStringLiteral(" (default)")));
    } else if (value.isArray()) {
        QList<int> codes;
        const QJsonArray array = value.toArray();
        for (const QJsonValue &code : array)
            codes << code.toInt();
        if (!allIntegers(text))
            report->warning(key, QStringLiteral("%1 holds pieces that are not whole numbers: the plug-in reads %2").arg(quoted(text), codeList(codes)),
                            QStringLiteral("write %1 as till payment codes separated by commas").arg(key));
        else
            report->ok(key, codes.isEmpty() ? QStringLiteral("(empty)") : codeList(codes));
    } else if (value.isDouble()) {
        const QString shown = QString::number(value.toInteger());
        if (set && !isWholeNumber(text))
            report->warning(key, QStringLiteral("%1 is not a whole number: the plug-in uses %2").arg(quoted(text), shown),
                            QStringLiteral("write %1 as a whole number").arg(key));
        else
            report->ok(key, shown + (set ? QString() : QStringLiteral(" (default)")));
    } else {
        const QString shown = value.toString().isEmpty() ? QStringLiteral("(empty)") : value.toString();
        report->ok(key, shown + (set ? QString() : QStringLiteral(" (default)")));
    }
}

void ConfigurationJudge::judgeCouponMask(CheckReport *report) const
{
    const QString key = QStringLiteral("Tessaro:validationCouponMask");
    const QString mask = setting(key).value(QStringLiteral("value")).toString();
    if (!QRegularExpression(mask).isValid())
        report->warning(key, QStringLiteral("%1 is no regular expression: no coupon is sent for validation").arg(quoted(mask)),
                        QStringLiteral("correct the regular expression in %1").arg(key));
    else
        report->ok(key, mask.isEmpty() ? QStringLiteral("(empty)") : mask);
}

void ConfigurationJudge::judgeCurrency(const QJsonObject &currency, CheckReport *report) const
{
    const int code = currency.value(QStringLiteral("code")).toInt();
    const QJsonObject receipt = currency.value(QStringLiteral("receiptNumber")).toObject();
    const QString key = QStringLiteral("Tessaro.ReceiptNumber.%1:mask").arg(code);
    const QString mask = receipt.value(QStringLiteral("mask")).toString();
    const QString hint = QStringLiteral("correct %1: a regular expression whose group (?<result>…) is the part sent").arg(key);
    if (!receipt.value(QStringLiteral("valid")).toBool(true))
        report->failure(key, QStringLiteral("%1 is no regular expression (%2): operation ids of currency %3 go to the service uncut")
                                 .arg(quoted(mask), receipt.value(QStringLiteral("error")).toString(), QString::number(code)),
                        hint);
    else if (!receipt.value(QStringLiteral("resultGroup")).toBool(true))
        report->failure(key, QStringLiteral("%1 has no group named result: every operation id of currency %2 that it matches goes to "
                                            "the service empty")
                                 .arg(quoted(mask), QString::number(code)),
                        hint);
    else if (receipt.value(QStringLiteral("maskSet")).toBool())
        report->ok(key, mask);
    const QString removed = receipt.value(QStringLiteral("symbolsToRemove")).toString();
    if (!removed.isEmpty())
        report->ok(QStringLiteral("Tessaro.ReceiptNumber.%1:symbolsToRemove").arg(code), quoted(removed));

    const QJsonObject fields = currency.value(QStringLiteral("customFields")).toObject();
    if (fields.isEmpty())
        return;
    QStringList shown;
    for (auto it = fields.constBegin(); it != fields.constEnd(); ++it) {
        const QJsonObject field = it.value().toObject();
        QString entry = QStringLiteral("%1 = %2").arg(it.key(), quoted(field.value(QStringLiteral("template")).toString()));
        const QString cut = field.value(QStringLiteral("symbolsToRemove")).toString();
        if (!cut.isEmpty())
            entry += QStringLiteral(" without %1").arg(quoted(cut));
        shown << entry;
    }
    report->ok(QStringLiteral("[Tessaro.CustomFields.%1]").arg(code), shown.join(QStringLiteral("; ")));
}

void ConfigurationJudge::judgeGateway(CheckReport *report) const
{
    const bool on = gatewayOn();
    report->ok(QStringLiteral("OrvelGate:tessaro"), on ? QStringLiteral("on: every request is signed for the gateway") : QStringLiteral("off"));
    judgeSecret(QStringLiteral("OrvelGate:appKey"), SecretMask::hidden(), on,
                QStringLiteral("set OrvelGate:appKey to the application key the gateway issued; while it is empty, requests go unsigned"),
                report);
    judgeSecret(QStringLiteral("OrvelGate:appSecret"), SecretMask::hidden(), on,
                QStringLiteral("set OrvelGate:appSecret to the application secret the gateway issued; while it is empty, requests go unsigned"),
                report);
    const QString key = QStringLiteral("OrvelGate:xStage");
    const QString stage = setting(key).value(QStringLiteral("value")).toString();
    if (!on)
        report->ok(key, QStringLiteral("not used"));
    else if (stage.isEmpty())
        report->failure(key, QStringLiteral("empty: requests go unsigned"), QStringLiteral("set %1 to the gateway's stage (PreProd by default)").arg(key));
    else if (stage != stage.trimmed())
        report->failure(key, QStringLiteral("%1: blanks stand around it, and are signed as part of it").arg(quoted(stage)),
                        QStringLiteral("remove the blanks around the value of %1").arg(key));
    else
        report->ok(key, stage);
}

void ConfigurationJudge::judgeSection(const QJsonObject &section, CheckReport *report) const
{
    const QString name = section.value(QStringLiteral("section")).toString();
    const QString title = QLatin1Char('[') + name + QLatin1Char(']');
    const QJsonArray ignored = section.value(QStringLiteral("ignored")).toArray();
    if (!ignored.isEmpty()) {
        QStringList keys;
        for (const QJsonValue &key : ignored)
            keys << quoted(key.toString());
        report->warning(title, QStringLiteral("the plug-in ignores the keys that are not whole numbers: %1").arg(keys.join(QStringLiteral(", "))),
                        QStringLiteral("write each key of %1 as a whole number (a list of them in a currency list)").arg(title));
    }
    if (name == QLatin1String("Tessaro.PaymentCodes"))
        judgePaymentCodes(section, report);
    else if (name == QLatin1String("Tessaro.VatCodes"))
        judgeVatCodes(section, report);
    else if (name.endsWith(QLatin1String("Valuts")))
        judgeCurrencyList(section, report);
    else
        report->ok(title, shownMap(section.value(QStringLiteral("map")).toObject()));
}

void ConfigurationJudge::judgePaymentCodes(const QJsonObject &section, CheckReport *report) const
{
    const QString title = QStringLiteral("[Tessaro.PaymentCodes]");
    const QJsonObject map = section.value(QStringLiteral("map")).toObject();
    const QString hint = QStringLiteral("map each till currency in %1 as serviceCode=tillCode,tillCode").arg(title);
    if (map.isEmpty()) {
        report->warning(title, QStringLiteral("empty: every till currency goes to the service under the till's own code"), hint);
        return;
    }
    if (!m_currencies) {
        report->ok(title, shownMap(map) + QStringLiteral(" (the till's currencies are unknown: not compared)"));
        return;
    }
    QStringList missing;
    QList<int> codes = m_currencies->keys();
    std::sort(codes.begin(), codes.end());
    for (int code : codes) {
        if (!map.contains(QString::number(code)))
            missing << QStringLiteral("%1 (%2)").arg(code).arg(m_currencies->value(code));
    }
    if (missing.isEmpty())
        report->ok(title, shownMap(map));
    else
        report->failure(title, QStringLiteral("till currencies without a service code, sent under the till's own code: %1").arg(missing.join(QStringLiteral(", "))),
                        hint);
}

void ConfigurationJudge::judgeVatCodes(const QJsonObject &section, CheckReport *report) const
{
    const QString title = QStringLiteral("[Tessaro.VatCodes]");
    const QJsonObject map = section.value(QStringLiteral("map")).toObject();
    const QString hint = QStringLiteral("map the till's VAT codes in %1 as serviceCode=tillCode,tillCode").arg(title);
    if (map.isEmpty()) {
        report->warning(title, QStringLiteral("empty: every VAT code goes to the service as the till has it"), hint);
        return;
    }
    QStringList empty;
    const QJsonObject keys = section.value(QStringLiteral("keys")).toObject();
    for (auto it = keys.constBegin(); it != keys.constEnd(); ++it) {
        if (isWholeNumber(it.key()) && !std::any_of(map.constBegin(), map.constEnd(), [&it](const QJsonValue &code) { return code.toInt() == it.key().toInt(); }))
            empty << it.key();
    }
    if (empty.isEmpty())
        report->ok(title, shownMap(map));
    else
        report->warning(title, QStringLiteral("service VAT codes that no till VAT code maps to: %1").arg(empty.join(QStringLiteral(", "))), hint);
}

void ConfigurationJudge::judgeCurrencyList(const QJsonObject &section, CheckReport *report) const
{
    const QString title = QLatin1Char('[') + section.value(QStringLiteral("section")).toString() + QLatin1Char(']');
    const QJsonObject map = section.value(QStringLiteral("map")).toObject();
    if (!m_currencies) {
        report->ok(title, shownMap(map));
        return;
    }
    QList<int> unknown;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        QList<int> named{it.key().toInt()};
        const QJsonArray related = it.value().toArray();
        for (const QJsonValue &code : related)
            named << code.toInt();
        for (int code : std::as_const(named)) {
            if (!m_currencies->contains(code) && !unknown.contains(code))
                unknown << code;
        }
    }
    std::sort(unknown.begin(), unknown.end());
    if (unknown.isEmpty())
        report->ok(title, shownMap(map));
    else
        report->warning(title, QStringLiteral("%1; names currencies the till does not know: %2").arg(shownMap(map), codeList(unknown)),
                        QStringLiteral("remove the unknown codes from %1 or add the currencies to the till").arg(title));
}

} // namespace till
