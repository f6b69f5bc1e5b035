#pragma once

#include "client/clientsettings.h"
#include "responses/addcustomerresponse.h"
#include "responses/advicenoteresponse.h"
#include "responses/cartcreateresponse.h"
#include "responses/cartstatusresponse.h"
#include "responses/cartupdateresponse.h"
#include "responses/messagesresponse.h"
#include "responses/payloadresponse.h"
#include "responses/positiondata.h"
#include "responses/response.h"
#include "returns/invoiceinfo.h"

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

#include <optional>

class AbstractDocument;
class BackBySaleDocument;
class BackDocument;
class DocumentCardRecord;
class GoodsItem;
class MoneyItem;
class RestClient;
class User;

namespace Log4Qt {
class Logger;
}

namespace http {
class Response;
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
    /// Based on int, so that a number outside the table is still a value
    /// (getUrl() then appends no path) rather than undefined behaviour.
    enum Method : int {
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
    /// Bounds each exchange to \a seconds instead of the configured time-out,
    /// for a configuration whose own time-out would let a check wait forever.
    void boundTimeout(int seconds);
    /// The transport's outcome of the last exchange, token requests included.
    http::Response lastExchange() const;

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

    // Cart lifecycle and customer

    /// The service's barcode form of an 18-character card number: of its last
    /// 13 characters the first 3 and the last 8. Other lengths stay as they are.
    virtual QString getCardBarcode(const QString &card);
    /// Creates a cart for this store and till; forgets the last confirmed cart.
    virtual CartCreateResponse cartCreate();
    /// Attaches the customer with \a card to the cart.
    virtual AddCustomerResponse addCustomer(const QString &cartUuid, const QString &card);
    /// Reads the cart back as the service holds it.
    virtual CartUpdateResponse cartContent(const QString &cartUuid);
    /// The current document's loyalty card record (card type 27); null when
    /// there is no document or no such card.
    virtual QSharedPointer<DocumentCardRecord> getCard();
    /// Sends a changed cart. When the connection breaks, reads the cart back
    /// until the service answers and resends only an update that did not reach
    /// it, so an update is neither lost nor doubled. The accepted reply, an
    /// error reply included, becomes the last confirmed cart, and its points
    /// limit goes to the card record.
    virtual CartUpdateResponse updateCart(const QString &cartUuid, const QJsonObject &body);

    // Coupons

    /// Adds \a coupon to the cart; the service validates it when \a validate
    /// and the mask (checkValidationCouponMask()) both ask for it.
    virtual CartUpdateResponse addCouponToCart(const QString &cartUuid, const QString &coupon, bool validate);
    /// Removes \a coupon from the cart.
    virtual CartUpdateResponse deleteCoupon(const QString &cartUuid, const QString &coupon);
    /// Whether the service is to validate \a coupon: the configured mask is not
    /// empty and matches somewhere in it.
    bool checkValidationCouponMask(const QString &coupon) const;

    // Cart items

    /// The service's reasons for a quantity change; the numbers are sent as they
    /// stand, so the type holds any int, not only the named ones.
    enum DeleteReason : int {
        NoDeleteReason = 0,
    };

    /// Puts \a goodsItem on the cart. Settles the reason for an entry by code
    /// (asking the cashier when the configuration leaves a choice) and keeps it
    /// in \a positionData for the next request on the same position.
    virtual CartUpdateResponse addItemToCart(const QString &cartUuid, const QSharedPointer<GoodsItem> &goodsItem,
                                             PositionData &positionData, bool checkBlock);
    /// "Tessaro:onlineCheckEanReasonCode"; -1 (none) when not set.
    int getOnlineCheckEanReasonCode() const;
    /// The reason for an entry by code: 9 with no reasons configured, the only
    /// one without asking, otherwise the cashier's choice. Throws an empty
    /// BasicException when the cashier cancels.
    int getEanReasonCode() const;
    /// The coupon that travels with \a goodsItem; empty when it carries none.
    QJsonObject getCoupon(const QSharedPointer<GoodsItem> &goodsItem) const;
    /// Sets the quantity of a cart line; a quantity below 0.0005 removes it,
    /// which the service accepts only with a \a deleteReason (sent unless it
    /// is NoDeleteReason).
    virtual CartUpdateResponse quantityOverwrite(const QString &cartUuid, int sequenceNumber, double quantity,
                                                 DeleteReason deleteReason);
    /// Sets a manual gross price of a cart line, authorised by \a user. Sent
    /// once: no recovery, and the last confirmed cart stays as it is.
    virtual CartUpdateResponse priceOverwrite(const QString &cartUuid, int sequenceNumber, double price,
                                              int reasonCode, const QSharedPointer<User> &user, double quantity);

    // Cart status

    /// Marks the cart paid with the current document's payments.
    virtual CartStatusResponse setCartStatusPaid(const QString &cartUuid);
    /// Marks the cart cancelled.
    virtual CartStatusResponse setCartStatusCancelled(const QString &cartUuid);
    /// The PAID body for the current document: its non-cash payments in order,
    /// then all cash as one line with the receipt's rounding, and the fiscal
    /// receipt number.
    QJsonObject generatePayloadCartStatusPaid();
    /// The payment's operation id with the currency's configured characters
    /// removed and cut by its mask ("Tessaro.ReceiptNumber.<currency>").
    QString processOperationId(const QSharedPointer<MoneyItem> &moneyItem) const;
    /// The currency's extra payment fields ("Tessaro.CustomFields.<currency>"),
    /// each template filled from the payment.
    QMap<QString, QString> getCustomFields(const QSharedPointer<MoneyItem> &moneyItem) const;

    // Payload and messages

    /// The payload the service prepared for the receipt \a id.
    virtual PayloadResponse payload(const QString &id);
    /// The service's messages for the cashier about \a id.
    virtual MessagesResponse messages(const QString &id);

    // Return advice notes

    /// Tells the service about the plain return \a document (one made without
    /// its sale document) of the sale \a invoice, while the cashier sees a
    /// progress message. When \a previous is the answer to this very advice
    /// note, nothing is sent and \a previous comes back.
    virtual AdviceNoteResponse adviceNote(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice,
                                          const AdviceNoteResponse &previous);
    /// The same for a return built from its sale document, whose items carry
    /// no VAT rate; no progress message is shown.
    virtual AdviceNoteResponse adviceNote(const QSharedPointer<BackBySaleDocument> &document,
                                          const InvoiceInfo &invoice, const AdviceNoteResponse &previous);
    /// The advice note's "originalInvoice": date, store, till and number of the sale.
    QJsonObject getOriginalInvoiceObject(const InvoiceInfo &invoice) const;
    /// The advice note's "payments": every payment in order, except that the
    /// cash paid out goes as one element, last, with the cash total and the
    /// document's payment rounding.
    QJsonArray getBackPayments(const QSharedPointer<AbstractDocument> &document) const;
    /// Sends the advice note \a body unless its digest is that of \a previous,
    /// which then comes back as it is. The answer carries the digest whatever
    /// its status.
    AdviceNoteResponse sendAdviceNote(const QJsonObject &body, const AdviceNoteResponse &previous);

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
    /// The settings above and those of the transport, as one value to report.
    ClientSettings settings() const;

    // Settings read where they are used, each through its one reader

    /// "typeTill" of the till opening ("Tessaro:typeTill", 0 when unset or no number).
    int tillType() const;
    /// "nameTypeTill" of the till opening ("Tessaro:nameTypeTill", "RegularSales").
    QString tillTypeName() const;
    /// "hostName" of the till opening: "Tessaro:hostName", or this machine's name.
    QString tillHostName() const;
    /// Whether a coupon bound to an item asks for validation ("Tessaro:validationCoupon").
    bool validatesCoupons() const;
    /// The anchored mask that cuts the operation id of payments in \a currency
    /// ("Tessaro.ReceiptNumber.<currency>:mask"); its group "result" is kept.
    QRegularExpression receiptNumberMask(int currency) const;

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
    /// The last cart state the service confirmed to updateCart(); empty after
    /// construction and after each cartCreate().
    std::optional<CartUpdateResponse> lastCart;

private:
    Response retryWithNewToken(const QUrl &url, const QJsonObject &body, const Response &failed);
    /// "storeNo" and "tillNo", with which every till operation starts.
    QJsonObject tillFields() const;
    /// cartContent() until the service answers, telling the cashier of every failed attempt.
    CartUpdateResponse readCartBack(const QString &cartUuid);
    /// Whether the update whose answer was lost reached the service, judged by
    /// the cart read back against the last confirmed one.
    bool updateApplied(const CartUpdateResponse &current) const;
    /// Keeps \a cart as the last confirmed one and hands its points limit to the card record.
    CartUpdateResponse acceptCart(const CartUpdateResponse &cart);
    /// The "item" object of addItemToCart(); settles the EAN reason into \a positionData.
    QJsonObject itemObject(const GoodsItem &goodsItem, PositionData &positionData, bool checkBlock) const;
    /// The EAN reason of an item that goes by article code or excise EAN; negative for none.
    int settleEanReason(const GoodsItem &goodsItem, const PositionData &positionData) const;
    /// One payment of the PAID body, without the cash folding.
    QJsonObject paymentObject(const QSharedPointer<MoneyItem> &moneyItem) const;
    /// The advice note of \a document; \a withVat adds each position's VAT rate.
    QJsonObject adviceNoteBody(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice, bool withVat);
};

} // namespace tessaro
