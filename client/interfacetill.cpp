// Interface: the till's own requests (opening and closing the shift, cash put
// in and taken out) and the fiscal and shift data they carry.

#include "interface.h"

#include "dao.h"
#include "hostsdk/hostadapter.h"
#include "interfacedetail.h"

#include <cashdrawer.h>
#include <config.h>
#include <frcollection.h>
#include <log4qt/logger.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>
#include <user.h>

#include <QHostInfo>

namespace tessaro {

using detail::operatorCode;

QJsonObject Interface::tillFields() const
{
    const Registry &registry = Singleton<Session>::instance()->getRegistry();
    // A code that is not a number is sent as 0.
    return QJsonObject{{QStringLiteral("storeNo"), registry.getShopCode().toInt()},
                       {QStringLiteral("tillNo"), registry.getCashCode().toInt()}};
}

int Interface::tillType() const
{
    return hostsdk::configInt(QStringLiteral("Tessaro:typeTill"), 0);
}

QString Interface::tillTypeName() const
{
    return hostsdk::configString(QStringLiteral("Tessaro:nameTypeTill"), QStringLiteral("RegularSales"));
}

QString Interface::tillHostName() const
{
    const QString configured = hostsdk::configString(QStringLiteral("Tessaro:hostName"));
    return configured.isEmpty() ? QHostInfo::localHostName() : configured;
}

Response Interface::tillOpen(const QSharedPointer<User> &user, double amount)
{
    logger->info(QStringLiteral("Открытие смены"));
    QJsonObject body = tillFields();
    body.insert(QStringLiteral("operatorID"), operatorCode(user));
    body.insert(QStringLiteral("operatorName"), user ? user->getName() : QString());
    body.insert(QStringLiteral("typeTill"), tillType());
    body.insert(QStringLiteral("hostName"), tillHostName());
    body.insert(QStringLiteral("nameTypeTill"), tillTypeName());
    body.insert(QStringLiteral("enteredAmount"), amount + hostsdk::cashDrawerAmount());
    fillFiscalInfo(body);
    return send(getUrl(TillOpen, QString()), body, getHeaders(QString()));
}

Response Interface::tillClose()
{
    logger->info(QStringLiteral("Закрытие смены"));
    QJsonObject body = tillFields();
    body.insert(QStringLiteral("payments"), getShiftPayments());
    return send(getUrl(TillClose, QString()), body, getHeaders(QString()));
}

Response Interface::deposit(const QSharedPointer<User> &user, double amount, EDocumentType type, const QString &requestId)
{
    const bool cashIn = type == CashIn;
    logger->info(QStringLiteral("Отправка запроса %1").arg(cashIn ? QStringLiteral("внесения") : QStringLiteral("изъятия")));
    QJsonObject body = tillFields();
    body.insert(QStringLiteral("operatorID"), operatorCode(user));
    body.insert(QStringLiteral("typeCode"), cashIn ? 2 : 1);
    body.insert(QStringLiteral("amount"), amount);
    return send(getUrl(Deposit, QString()), body, getHeaders(requestId));
}

void Interface::fillFiscalInfo(QJsonObject &body) const
{
    body.insert(QStringLiteral("fiscalRegistrationNo"), getFiscalNumber());
    // A registrar without a fiscal drive reports an empty serial; the field is
    // then left out rather than sent empty.
    const QString serial = hostsdk::fiscalDriveSerial();
    if (!serial.isEmpty())
        body.insert(QStringLiteral("fiscalDriveSerialNumber"), serial);
}

QString Interface::getFiscalNumber() const
{
    return QString::number(hostsdk::fiscalRegistrationNumber());
}

QJsonArray Interface::getShiftPayments() const
{
    const int shift = Singleton<Session>::instance()->getCurrentShift();
    const QList<Dao::ShiftPayment> entries = MockFactory<Dao>::create()->getShiftPayments(shift);

    // Several till codes may fold into one service code: count and add them up.
    QMap<int, int> counts;
    QMap<int, double> amounts;
    for (const Dao::ShiftPayment &entry : entries) {
        if (entry.amount == 0.0)
            continue;
        const int code = paymentCodes.value(entry.code, entry.code);
        ++counts[code];
        amounts[code] += entry.amount;
    }

    QJsonArray payments;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        payments.append(QJsonObject{{QStringLiteral("paymentCode"), it.key()},
                                    {QStringLiteral("paymentCount"), it.value()},
                                    {QStringLiteral("paymentAmount"), amounts.value(it.key())}});
    }
    return payments;
}

} // namespace tessaro
