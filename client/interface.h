#pragma once

#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <QSharedPointer>
#include <QStringList>
#include <QUrl>

class RestClient;

namespace Log4Qt {
class Logger;
}

namespace tessaro {

/// The client of the Tessaro service.
///
/// The constructor reads every setting once from the host configuration:
/// the service and token addresses, the authorisation, the time-out, and the
/// tables that translate the till's own codes into the service's (payment
/// codes, VAT codes, EAN reasons, payment fields to leave out). Nothing is
/// read again while the plug-in runs, except the gateway settings, which are
/// read for every request.
class Interface
{
public:
    Interface();
    virtual ~Interface();
    Interface(const Interface &) = delete;
    Interface &operator=(const Interface &) = delete;

    /// Replaces the logger of the client and of its REST client.
    void setLogger(Log4Qt::Logger *logger);
    /// Replaces the service token (kept on documents, fetched by the token flow).
    virtual void setToken(const QString &token);

    QUrl serviceUrl() const { return url; }
    QUrl tokenServiceUrl() const { return tokenUrl; }
    bool usesTokenAuth() const { return useTokenAuth; }
    qint64 timeoutSeconds() const { return timeout; }
    QString currentToken() const { return token; }
    /// Till payment code to service payment code.
    QMap<int, int> paymentCodeMap() const { return paymentCodes; }
    /// Till VAT code to service VAT code.
    QMap<int, int> vatCodeMap() const { return vatCodes; }
    /// EAN reason code to its text.
    QMap<int, QStringList> eanReasonMap() const { return eanReasons; }
    /// Till payment code to the payment fields left out for it.
    QMap<int, QStringList> discardPaymentFieldMap() const { return discardPaymentFields; }

protected:
    void readPaymentMapping();
    void readVatCodesMapping();
    void readEanReasons();
    void readDiscardPaymentFields();
    void readGateSettings();

    QUrl url;
    QUrl tokenUrl;
    bool useTokenAuth = true;
    QString clientId;
    QString realmId;
    QString authorizationHeader;
    qint64 timeout = 5;
    QString token;
    QSharedPointer<RestClient> restClient;
    Log4Qt::Logger *logger = nullptr;
    QRegularExpression validationCouponMask;
    QList<int> operationIdAsCardNumber;
    QList<int> operationIdAsEFTApprovalCode;
    QMap<int, int> paymentCodes;
    QMap<int, int> vatCodes;
    QMap<int, QStringList> eanReasons;
    QMap<int, QStringList> discardPaymentFields;
    /// The section word under which goods items carry this client's values.
    QString additionalDataSection;
};

} // namespace tessaro
