#pragma once

#include <QObject>
#include <QSharedPointer>
#include <QString>

/// One payment of a document. Its values are properties, so that templates
/// (SimpleFormatter) can name them.
class MoneyItem : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int valCode READ getValCode WRITE setValCode)
    Q_PROPERTY(QString valName READ getValName WRITE setValName)
    Q_PROPERTY(int valutType READ getValutType WRITE setValutType)
    Q_PROPERTY(double amount READ getAmount WRITE setAmount)
    Q_PROPERTY(bool change READ isChange WRITE setChange)
    Q_PROPERTY(QString cardNum READ getCardNum WRITE setCardNum)
    Q_PROPERTY(QString cardType READ getCardType WRITE setCardType)
    Q_PROPERTY(QString terminalId READ getTerminalId WRITE setTerminalId)
    Q_PROPERTY(QString authorizationCode READ getAuthorizationCode WRITE setAuthorizationCode)
    Q_PROPERTY(QString operationId READ getOperationId WRITE setOperationId)
    Q_PROPERTY(QString rrn READ getRrn WRITE setRrn)

public:
    /// Currency types of the host's currency table.
    enum ValutType {
        Cash = 1,
        BankCard = 2,
        Other = 3,
    };

    explicit MoneyItem(QObject *parent = nullptr);

    int getValCode() const { return m_valCode; }
    void setValCode(int code) { m_valCode = code; }
    QString getValName() const { return m_valName; }
    void setValName(const QString &name) { m_valName = name; }
    int getValutType() const { return m_valutType; }
    void setValutType(int type) { m_valutType = type; }
    double getAmount() const { return m_amount; }
    void setAmount(double amount) { m_amount = amount; }
    /// Change given back to the customer.
    bool isChange() const { return m_change; }
    void setChange(bool change) { m_change = change; }
    QString getCardNum() const { return m_cardNum; }
    void setCardNum(const QString &number) { m_cardNum = number; }
    QString getCardType() const { return m_cardType; }
    void setCardType(const QString &type) { m_cardType = type; }
    QString getTerminalId() const { return m_terminalId; }
    void setTerminalId(const QString &id) { m_terminalId = id; }
    QString getAuthorizationCode() const { return m_authorizationCode; }
    void setAuthorizationCode(const QString &code) { m_authorizationCode = code; }
    QString getOperationId() const { return m_operationId; }
    void setOperationId(const QString &id) { m_operationId = id; }
    QString getRrn() const { return m_rrn; }
    void setRrn(const QString &rrn) { m_rrn = rrn; }

private:
    int m_valCode = 0;
    QString m_valName;
    int m_valutType = Cash;
    double m_amount = 0.0;
    bool m_change = false;
    QString m_cardNum;
    QString m_cardType;
    QString m_terminalId;
    QString m_authorizationCode;
    QString m_operationId;
    QString m_rrn;
};
