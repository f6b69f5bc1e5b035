#include "tillsettingsreader.h"

#include "jsonpath.h"

#include <QFile>

namespace till {

using namespace detail;

namespace {

/// A list of entries with a "code", a "name" and one optional integer
/// \a extra: the return reasons (their kind) and the currencies (their
/// type). \a allowed lists the three keys in the order messages name them.
template <typename Entry>
QList<Entry> codedListAt(const QJsonValue &value, const QString &path, const QStringList &allowed, const QString &extra,
                         int Entry::*extraField)
{
    QList<Entry> entries;
    const QJsonArray array = arrayAt(value, path);
    for (qsizetype i = 0; i < array.size(); ++i) {
        const QString itemPath = element(path, i);
        const QJsonObject item = objectAt(array.at(i), itemPath);
        allowOnly(item, itemPath, allowed);
        Entry entry;
        entry.code = integerAt(required(item, itemPath, QStringLiteral("code")), child(itemPath, QStringLiteral("code")));
        entry.name = stringAt(required(item, itemPath, QStringLiteral("name")), child(itemPath, QStringLiteral("name")));
        if (item.contains(extra))
            entry.*extraField = integerAt(item.value(extra), child(itemPath, extra));
        entries << entry;
    }
    return entries;
}

} // namespace

std::optional<TillSettings> TillSettingsReader::read(const QByteArray &json, InputError *error)
{
    return readJson<TillSettings>(json, QStringLiteral("a till description"),
                                  [](const QJsonObject &object) { return at(object, QString()); }, error);
}

std::optional<TillSettings> TillSettingsReader::readFile(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    InputError problem{path, QString(), 0, 0, QString()};
    std::optional<TillSettings> settings = read(file.readAll(), &problem);
    if (!settings && error)
        *error = problem.toString();
    return settings;
}

TillSettings TillSettingsReader::at(const QJsonValue &value, const QString &path)
{
    const QJsonObject object = objectAt(value, path);
    allowOnly(object, path,
              {QStringLiteral("store"), QStringLiteral("till"), QStringLiteral("shift"), QStringLiteral("cashier"),
               QStringLiteral("config"), QStringLiteral("backReasons"), QStringLiteral("currencies"),
               QStringLiteral("fiscal")});
    TillSettings till;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        const QString key = it.key();
        const QString at = child(path, key);
        if (key == QLatin1String("store")) {
            till.store = textAt(it.value(), at);
        } else if (key == QLatin1String("till")) {
            till.till = textAt(it.value(), at);
        } else if (key == QLatin1String("shift")) {
            till.shift = integerAt(it.value(), at);
        } else if (key == QLatin1String("cashier")) {
            const QJsonObject cashier = objectAt(it.value(), at);
            allowOnly(cashier, at, {QStringLiteral("id"), QStringLiteral("code"), QStringLiteral("name")});
            till.cashierId = integerAt(required(cashier, at, QStringLiteral("id")), child(at, QStringLiteral("id")));
            till.cashierCode = textAt(required(cashier, at, QStringLiteral("code")), child(at, QStringLiteral("code")));
            if (cashier.contains(QStringLiteral("name")))
                till.cashierName = stringAt(cashier.value(QStringLiteral("name")), child(at, QStringLiteral("name")));
        } else if (key == QLatin1String("fiscal")) {
            const QJsonObject fiscal = objectAt(it.value(), at);
            allowOnly(fiscal, at, {QStringLiteral("registrationNumber"), QStringLiteral("driveSerial")});
            if (fiscal.contains(QStringLiteral("registrationNumber"))) {
                const QString numberPath = child(at, QStringLiteral("registrationNumber"));
                bool ok = false;
                till.fiscalRegistrationNumber = textAt(fiscal.value(QStringLiteral("registrationNumber")), numberPath).toLongLong(&ok);
                if (!ok)
                    fail(numberPath, QStringLiteral("expected the registration number's digits"));
            }
            if (fiscal.contains(QStringLiteral("driveSerial")))
                till.fiscalDriveSerial = textAt(fiscal.value(QStringLiteral("driveSerial")), child(at, QStringLiteral("driveSerial")));
        } else if (key == QLatin1String("config")) {
            const QJsonObject config = objectAt(it.value(), at);
            for (auto entry = config.constBegin(); entry != config.constEnd(); ++entry) {
                const QString entryPath = child(at, entry.key());
                if (!entry.key().contains(QLatin1Char(':')))
                    fail(entryPath, QStringLiteral("a configuration key is written Section:name"));
                if (entry.value().isBool())
                    till.config.insert(entry.key(), entry.value().toBool() ? QStringLiteral("true") : QStringLiteral("false"));
                else
                    till.config.insert(entry.key(), textAt(entry.value(), entryPath));
            }
        } else if (key == QLatin1String("backReasons")) {
            till.backReasons = codedListAt(it.value(), at, {QStringLiteral("kind"), QStringLiteral("code"), QStringLiteral("name")},
                                           QStringLiteral("kind"), &TillSettings::Reason::kind);
        } else if (key == QLatin1String("currencies")) {
            till.currencies = codedListAt(it.value(), at, {QStringLiteral("code"), QStringLiteral("name"), QStringLiteral("type")},
                                          QStringLiteral("type"), &TillSettings::Currency::type);
        }
    }
    return till;
}

} // namespace till
