#include "interface.h"

#include <config.h>
#include <log4qt/logmanager.h>
#include <mockfactory.h>
#include <restclient.h>
#include <singleton.h>

namespace tessaro {

namespace {

Config *config()
{
    return Singleton<Config>::instance();
}

// Section keys are integers; a key that is not one is skipped.
template <typename Store>
void readSection(const QString &section, Store store)
{
    const QStringList names = config()->keys(section);
    for (const QString &name : names) {
        bool ok = false;
        const int key = name.toInt(&ok, 10);
        if (ok)
            store(key, section + QLatin1Char(':') + name);
    }
}

// The service code is the section key; the listed till codes map to it.
QMap<int, int> readInvertedSection(const QString &section)
{
    QMap<int, int> map;
    readSection(section, [&map](int serviceCode, const QString &valueKey) {
        const QList<int> tillCodes = config()->getIntList(valueKey);
        for (int tillCode : tillCodes)
            map.insert(tillCode, serviceCode);
    });
    return map;
}

QMap<int, QStringList> readListSection(const QString &section)
{
    QMap<int, QStringList> map;
    readSection(section, [&map](int key, const QString &valueKey) {
        map.insert(key, config()->getStringList(valueKey));
    });
    return map;
}

QList<int> readIntegers(const QString &key)
{
    QList<int> result;
    const QStringList values = config()->getStringList(key);
    for (const QString &value : values)
        result << value.toInt();
    return result;
}

} // namespace

Interface::Interface()
{
    Config *settings = config();
    url = QUrl(settings->getString(QStringLiteral("Tessaro:url"), QStringLiteral("http://localhost")), QUrl::TolerantMode);
    tokenUrl = QUrl(settings->getString(QStringLiteral("Tessaro:tokenUrl"), QStringLiteral("http://localhost")), QUrl::TolerantMode);
    useTokenAuth = settings->getBool(QStringLiteral("Tessaro:useTokenAuth"), true);
    timeout = settings->getLongLong(QStringLiteral("Tessaro:timeout"), 5);
    clientId = settings->getString(QStringLiteral("Tessaro:clientId"));
    realmId = settings->getString(QStringLiteral("Tessaro:realmId"));
    authorizationHeader = settings->getString(QStringLiteral("Tessaro:authorizationHeader"));

    logger = Log4Qt::LogManager::logger(QStringLiteral("tessaro"));
    restClient = MockFactory<RestClient>::create();
    restClient->setLogger(logger);
    restClient->setTargetAlias(QStringLiteral("сервису Tessaro"));
    restClient->setTimeout(int(timeout * 1000));
    restClient->setSecretHeaders({QStringLiteral("Authorization")});

    validationCouponMask = QRegularExpression(settings->getString(QStringLiteral("Tessaro:validationCouponMask"), QStringLiteral("^255.*")));
    operationIdAsCardNumber = readIntegers(QStringLiteral("Tessaro:operationIdAsCardNumber"));
    operationIdAsEFTApprovalCode = readIntegers(QStringLiteral("Tessaro:operationIdAsEFTApprovalCode"));
    additionalDataSection = QStringLiteral("orvel");

    readPaymentMapping();
    readVatCodesMapping();
    readEanReasons();
    readDiscardPaymentFields();
    readGateSettings();
}

Interface::~Interface() = default;

void Interface::setLogger(Log4Qt::Logger *newLogger)
{
    logger = newLogger;
    restClient->setLogger(newLogger);
}

void Interface::setToken(const QString &newToken)
{
    token = newToken;
}

void Interface::readPaymentMapping()
{
    paymentCodes = readInvertedSection(QStringLiteral("Tessaro.PaymentCodes"));
}

void Interface::readVatCodesMapping()
{
    vatCodes = readInvertedSection(QStringLiteral("Tessaro.VatCodes"));
}

void Interface::readEanReasons()
{
    eanReasons = readListSection(QStringLiteral("Tessaro.EanReasons"));
}

void Interface::readDiscardPaymentFields()
{
    discardPaymentFields = readListSection(QStringLiteral("Tessaro.DiscardPaymentFields"));
}

void Interface::readGateSettings()
{
    if (config()->getBool(QStringLiteral("OrvelGate:tessaro"), false)) {
        useTokenAuth = false;
        logger->info(QStringLiteral("Используется OrvelGate"));
    }
}

} // namespace tessaro
