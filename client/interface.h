#pragma once

#include "responses/response.h"

#include <edocumenttype.h>

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QSharedPointer>
#include <QStringList>
#include <QUrl>

class RestClient;
class User;

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
///
/// Every call is synchronous: the calling thread waits for the answer or the
/// time-out. Service errors come back inside the returned Response for the
/// caller to check; a lost connection throws ConnectionErrorException.
class Interface
{
public:
    /// The service's operations; the numbers are fixed.
    enum Method {
        TillOpen = 0,     ///< "/till/open"
        TillClose = 1,    ///< "/till/close"
        Cart = 2,         ///< "/cart/%1"
        CartCreate = 3,   ///< "/cart/create"
        CartUpdate = 4,   ///< "/cart/%1/update"
        CartStatus = 5,   ///< "/cart/%1/cart_status"
        AddCustomer = 6,  ///< "/cart/%1/add_customer"
        AdviceNote = 7,   ///< "/advicenote"
        Payload = 8,      ///< "/payload/%1"
        Deposit = 9,      ///< "/till/deposit"
        Messages = 10,    ///< "/messages/%1"
    };

    using Headers = QHash<QString, QString>;

    Interface();
    virtual ~Interface();
    Interface(const Interface &) = delete;
    Interface &operator=(const Interface &) = delete;

    /// Replaces the logger of the client and of its REST client.
    void setLogger(Log4Qt::Logger *logger);
    /// Replaces the service token (kept on documents, fetched by the token flow).
    virtual void setToken(const QString &token);

    // Transport

    /// The address of \a method: the service URL's path followed by the
    /// method's path, with "%1" replaced by \a arg.
    QUrl getUrl(Method method, const QString &arg) const;
    /// The standard headers: the bearer token (with token authorisation),
    /// the JSON content type and, when \a requestId is not empty, "X-Request-ID".
    Headers getHeaders(const QString &requestId) const;
    /// POSTs \a body as JSON; see handleRequest().
    virtual Response send(const QUrl &url, const QJsonObject &body, const Headers &headers);
    /// GETs \a url; see handleRequest().
    virtual Response request(const QUrl &url, const Headers &headers);
    /// Fetches an OAuth2 token (client credentials) from the token URL.
    /// Throws what TokenResponse::checkStatus() throws; does not store the token.
    virtual TokenResponse getToken();
    /// \a headers signed for the gateway when "OrvelGate:tessaro" is on
    /// (read on every call), else \a headers unchanged.
    Headers getGateHeaders(const QUrl &url, const QByteArray &body, const Headers &headers, bool get) const;

    // Till

    /// Opens the till at the service; the entered amount is \a amount plus
    /// the cash in the drawer.
    virtual Response tillOpen(const QSharedPointer<User> &user, double amount);
    /// Closes the till at the service with the shift's payment totals.
    virtual Response tillClose();
    /// Reports cash put in (\a type CashIn) or taken out (any other type).
    virtual Response deposit(const QSharedPointer<User> &user, double amount, EDocumentType type,
                             const QString &requestId);
    /// Adds the fiscal registrar's registration number and fiscal drive serial.
    void fillFiscalInfo(QJsonObject &body) const;
    /// The fiscal registrar's registration number.
    QString getFiscalNumber() const;
    /// The shift's payment totals per service payment code.
    virtual QJsonArray getShiftPayments() const;

    // Settings, as read at construction

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
    /// Sends one request (POST when \a post, else GET), signed for the gateway
    /// when it is on. With token authorisation, fetches a token first when
    /// there is none and once more after a token error, then repeats the
    /// request as a POST with fresh standard headers; a second token error in
    /// a row throws. A network failure throws ConnectionErrorException unless
    /// the answer still says the shift is closed or already open.
    Response handleRequest(const QUrl &url, const QJsonObject &body, const Headers &headers, bool post);

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
    /// A token was just fetched to repeat a request; cleared by the next
    /// answer that is not a token error.
    bool tokenRetried = false;

private:
    Response retryWithNewToken(const QUrl &url, const QJsonObject &body, const Response &failed);
    /// "storeNo" and "tillNo", with which every till operation starts.
    QJsonObject tillFields() const;
};

} // namespace tessaro
