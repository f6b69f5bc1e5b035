#include "interface.h"

#include "dao.h"
#include "gate.h"
#include "responses/connectionerrorexception.h"
#include "responses/rounding.h"
#include "responses/traceability.h"

#include <abstractdocument.h>
#include <backbysaledocument.h>
#include <basicexception.h>
#include <cashdrawer.h>
#include <config.h>
#include <dialog.h>
#include <documentcardrecord.h>
#include <frcollection.h>
#include <goodsitem.h>
#include <log4qt/logmanager.h>
#include <mockfactory.h>
#include <moneyitem.h>
#include <restclient.h>
#include <session.h>
#include <simpleformatter.h>
#include <singleton.h>
#include <user.h>

#include <QCryptographicHash>
#include <QHostInfo>
#include <QJsonDocument>
#include <QUrlQuery>

#include <functional>
#include <limits>

namespace tessaro {

namespace {

Config *config()
{
    return Singleton<Config>::instance();
}

// Configured seconds as the REST client's milliseconds. Seconds beyond what an
// int holds in milliseconds go as the most it holds, which the client then
// bounds like any other time-out that is too long.
int milliseconds(qint64 seconds)
{
    constexpr qint64 most = std::numeric_limits<int>::max() / 1000;
    return int(qBound(-most, seconds, most) * 1000);
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

QString methodPath(Interface::Method method)
{
    switch (method) {
    case Interface::TillOpen:
        return QStringLiteral("/till/open");
    case Interface::TillClose:
        return QStringLiteral("/till/close");
    case Interface::Cart:
        return QStringLiteral("/cart/%1");
    case Interface::CartCreate:
        return QStringLiteral("/cart/create");
    case Interface::CartUpdate:
        return QStringLiteral("/cart/%1/update");
    case Interface::CartStatus:
        return QStringLiteral("/cart/%1/cart_status");
    case Interface::AddCustomer:
        return QStringLiteral("/cart/%1/add_customer");
    case Interface::AdviceNote:
        return QStringLiteral("/advicenote");
    case Interface::Payload:
        return QStringLiteral("/payload/%1");
    case Interface::Deposit:
        return QStringLiteral("/till/deposit");
    case Interface::Messages:
        return QStringLiteral("/messages/%1");
    }
    return QString();
}

// A JSON body whose caller names no content type goes as JSON, as a posted
// JSON document would.
Interface::Headers withJsonContentType(Interface::Headers headers)
{
    const QString name = QStringLiteral("Content-Type");
    for (auto it = headers.cbegin(); it != headers.cend(); ++it) {
        if (it.key().compare(name, Qt::CaseInsensitive) == 0)
            return headers;
    }
    headers.insert(name, QStringLiteral("application/json"));
    return headers;
}

// A form value with every reserved character encoded: QUrlQuery leaves "+" as
// it stands, which a form decoder would read as a blank.
QString formValue(const QString &value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

QString operatorCode(const QSharedPointer<User> &user)
{
    return user ? user->getCode() : QString();
}

QList<int> readIntegers(const QString &key)
{
    QList<int> result;
    const QStringList values = config()->getStringList(key);
    for (const QString &value : values)
        result << value.toInt();
    return result;
}

// The host's card type of the service's loyalty cards.
constexpr int loyaltyCardType = 27;

// The cart's lines as the service sent them, for comparing two states of a cart.
QList<QJsonObject> lineObjects(const CartUpdateResponse &cart)
{
    QList<QJsonObject> lines;
    const QList<Item> items = cart.items();
    for (const Item &item : items)
        lines << item.json();
    return lines;
}

// The scanner's group separator (GS, code 29) as the service wants it written.
QString withVisibleSeparators(QString text)
{
    return text.replace(QChar(29), QLatin1String("[1d]"));
}

// The fields of a traceability record that the service takes, each only when
// set. A cart item never carries the GTIN; an advice note's item does.
QJsonObject traceabilityObject(const orvel::Traceability &record, bool withGtin = false)
{
    QList<QPair<const char *, QString>> fields{
        {"cdn", record.cdn},
        {"fz1162Field", record.fz1162Field},
        {"alcoMarkField", record.alcoMarkField},
        {"barcodeField", record.barcodeField},
        {"serialNumber", record.serialNumber},
        {"lotNumber", record.lotNumber},
    };
    if (withGtin)
        fields.append({"gtin", record.gtin});
    QJsonObject object;
    for (const auto &field : fields) {
        if (!field.second.isEmpty())
            object.insert(QLatin1String(field.first), field.second);
    }
    return object;
}

// \a text without any of \a characters.
QString withoutCharacters(QString text, const QString &characters)
{
    for (const QChar character : characters)
        text.remove(character);
    return text;
}

// The host's discount modes of rounding: of the receipt's total, and by the change given.
constexpr int roundingDiscountMode = 11;
constexpr int changeRoundingDiscountMode = 6;

// What the receipt was rounded by: its discounts of the rounding \a modes and its own rounding.
double roundingTotal(const AbstractDocument &document, const QSet<int> &modes)
{
    double total = document.getRoundingSum();
    const QList<QSharedPointer<DocumentImpact>> impacts = document.getImpacts();
    for (const QSharedPointer<DocumentImpact> &impact : impacts) {
        const QList<DocumentImpactDetail> details = impact->getTotals();
        for (const DocumentImpactDetail &detail : details) {
            if (detail.checkDiscountMode(modes))
                total += detail.getDiscountSum();
        }
    }
    return total;
}

// A document's payments as the service takes them: every payment made by
// \a paymentFor, in order, except that the cash paid out goes as one element,
// the last cash payment's, carrying the cash total (cashTotal); the caller
// completes it and appends it last. Change is no cash paid out and goes as it is.
struct FoldedPayments
{
    QJsonArray payments;
    QJsonObject cash;  ///< empty when nothing was paid out in cash
    double cashTotal = 0.0;
};

FoldedPayments foldCash(const QList<QSharedPointer<MoneyItem>> &moneyItems,
                        const std::function<QJsonObject(const QSharedPointer<MoneyItem> &)> &paymentFor)
{
    FoldedPayments folded;
    for (const QSharedPointer<MoneyItem> &moneyItem : moneyItems) {
        const QJsonObject payment = paymentFor(moneyItem);
        if (moneyItem->getValutType() == MoneyItem::Cash && !moneyItem->isChange()) {
            folded.cashTotal += moneyItem->getAmount();
            folded.cash = payment;
        } else {
            folded.payments.append(payment);
        }
    }
    return folded;
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
    restClient->setTimeout(milliseconds(timeout));
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

QUrl Interface::getUrl(Method method, const QString &arg) const
{
    QUrl result = url;
    result.setPath(url.path(QUrl::FullyDecoded) + methodPath(method).replace(QLatin1String("%1"), arg), QUrl::DecodedMode);
    return result;
}

Interface::Headers Interface::getHeaders(const QString &requestId) const
{
    Headers headers;
    if (useTokenAuth)
        headers.insert(QStringLiteral("Authorization"), QStringLiteral("Bearer ") + token);
    headers.insert(QStringLiteral("Content-Type"), QStringLiteral("application/json"));
    if (!requestId.isEmpty())
        headers.insert(QStringLiteral("X-Request-ID"), requestId);
    return headers;
}

Response Interface::send(const QUrl &target, const QJsonObject &body, const Headers &headers)
{
    return handleRequest(target, body, headers, true);
}

Response Interface::request(const QUrl &target, const Headers &headers)
{
    return handleRequest(target, QJsonObject(), headers, false);
}

Interface::Headers Interface::getGateHeaders(const QUrl &target, const QByteArray &body, const Headers &headers,
                                             bool get) const
{
    if (!config()->getBool(QStringLiteral("OrvelGate:tessaro"), false))
        return headers;
    return orvel::getGateHeaders(target, body, headers, get);
}

Response Interface::handleRequest(const QUrl &target, const QJsonObject &body, const Headers &headers, bool post)
{
    Response result;
    // With token authorisation nothing is sent without a token.
    if (!useTokenAuth || !token.isEmpty()) {
        const QByteArray json = QJsonDocument(body).toJson(QJsonDocument::Compact);
        const Headers sent = getGateHeaders(target, json, headers, !post);
        // The text signed is the text sent, serialised once: a second
        // serialisation by the transport could differ from the signed one, and
        // costs as much as the exchange itself.
        if (post)
            restClient->postRaw(target, json, withJsonContentType(sent));
        else
            restClient->get(target, QJsonDocument(), sent);
        const http::Response reply = restClient->lastResponse();
        result = Response(reply);

        const Response::Status status = result.status();
        if (!useTokenAuth || status != Response::TokenError) {
            tokenRetried = false;
            if (reply.isNetworkError() && status != Response::ShiftAlreadyOpened && status != Response::ShiftClosed)
                throw ConnectionErrorException();
            return result;
        }
    }
    return retryWithNewToken(target, body, result);
}

Response Interface::retryWithNewToken(const QUrl &target, const QJsonObject &body, const Response &failed)
{
    if (tokenRetried) {
        logger->error(QStringLiteral("Повторная ошибка авторизации после запроса токена"));
        // Throws: the answer is a token error, or there was none at all.
        failed.checkStatus();
        return failed;
    }
    const TokenResponse reply = getToken();
    if (reply.status() != Response::Success) {
        logger->error(QStringLiteral("Не удалось получить токен"));
        return reply;
    }
    tokenRetried = true;
    setToken(reply.token());
    // Deliberately a POST with the standard headers only, whatever the first request was.
    return send(target, body, getHeaders(QString()));
}

TokenResponse Interface::getToken()
{
    logger->info(QStringLiteral("Получение токена"));
    QUrlQuery form(tokenUrl);
    form.addQueryItem(QStringLiteral("grant_type"), QStringLiteral("client_credentials"));
    form.addQueryItem(QStringLiteral("client_id"), formValue(clientId));
    form.addQueryItem(QStringLiteral("realm_id"), formValue(realmId));
    const Headers headers{{QStringLiteral("Authorization"), authorizationHeader},
                          {QStringLiteral("Content-Type"), QStringLiteral("application/x-www-form-urlencoded")}};
    restClient->postRaw(tokenUrl, form.toString(QUrl::FullyEncoded).toUtf8(), headers);
    const TokenResponse reply(restClient->lastResponse());
    reply.checkStatus();
    logger->info(QStringLiteral("Получен токен: %1").arg(reply.token()));
    return reply;
}

QJsonObject Interface::tillFields() const
{
    const Registry &registry = Singleton<Session>::instance()->getRegistry();
    // A code that is not a number is sent as 0.
    return QJsonObject{{QStringLiteral("storeNo"), registry.getShopCode().toInt()},
                       {QStringLiteral("tillNo"), registry.getCashCode().toInt()}};
}

Response Interface::tillOpen(const QSharedPointer<User> &user, double amount)
{
    logger->info(QStringLiteral("Открытие смены"));
    const Config *settings = config();
    QString hostName = settings->getString(QStringLiteral("Tessaro:hostName"));
    if (hostName.isEmpty())
        hostName = QHostInfo::localHostName();

    QJsonObject body = tillFields();
    body.insert(QStringLiteral("operatorID"), operatorCode(user));
    body.insert(QStringLiteral("operatorName"), user ? user->getName() : QString());
    body.insert(QStringLiteral("typeTill"), settings->getInt(QStringLiteral("Tessaro:typeTill"), 0));
    body.insert(QStringLiteral("hostName"), hostName);
    body.insert(QStringLiteral("nameTypeTill"), settings->getString(QStringLiteral("Tessaro:nameTypeTill"), QStringLiteral("RegularSales")));
    body.insert(QStringLiteral("enteredAmount"), amount + MockFactory<CashDrawer>::create()->getAmount());
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
    const QString serial = Singleton<FrCollection>::instance()->getFiscalDriveSerial();
    if (!serial.isEmpty())
        body.insert(QStringLiteral("fiscalDriveSerialNumber"), serial);
}

QString Interface::getFiscalNumber() const
{
    return QString::number(Singleton<FrCollection>::instance()->getRegistrationNumber());
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

QString Interface::getCardBarcode(const QString &card)
{
    if (card.size() != 18)
        return card;
    const QString tail = card.right(13);
    const QString barcode = tail.left(3) + tail.right(8);
    logger->info(QStringLiteral("Вместо номера карты используются номер ТКД: %1").arg(barcode));
    return barcode;
}

CartCreateResponse Interface::cartCreate()
{
    logger->info(QStringLiteral("Инициализация корзины"));
    lastCart.reset();
    return CartCreateResponse(send(getUrl(CartCreate, QString()), tillFields(), getHeaders(QString())));
}

AddCustomerResponse Interface::addCustomer(const QString &cartUuid, const QString &card)
{
    logger->info(QStringLiteral("Добавление клиента '%1'").arg(card));
    const QJsonObject body{{QStringLiteral("cardBarcode"), getCardBarcode(card)}};
    return AddCustomerResponse(send(getUrl(AddCustomer, cartUuid), body, getHeaders(QString())));
}

CartUpdateResponse Interface::cartContent(const QString &cartUuid)
{
    return CartUpdateResponse(request(getUrl(Cart, cartUuid), getHeaders(QString())));
}

QSharedPointer<DocumentCardRecord> Interface::getCard()
{
    const QSharedPointer<AbstractDocument> document = Singleton<Session>::instance()->getCurrentDocument();
    return document ? document->getCardRecord(loyaltyCardType) : nullptr;
}

CartUpdateResponse Interface::updateCart(const QString &cartUuid, const QJsonObject &body)
{
    bool retrying = false;
    for (;;) {
        try {
            const CartUpdateResponse reply(send(getUrl(CartUpdate, cartUuid), body, getHeaders(QString())));
            // A resent update that the service calls a conflict (3001) may have
            // reached it after all: the cart read back decides.
            if (!retrying || reply.status() != Response::CartUpdateConflict)
                return acceptCart(reply);
        } catch (const ConnectionErrorException &error) {
            logger->error(error.tr().text());
        }
        const CartUpdateResponse current = readCartBack(cartUuid);
        if (updateApplied(current))
            return acceptCart(current);
        retrying = true;
    }
}

CartUpdateResponse Interface::readCartBack(const QString &cartUuid)
{
    for (;;) {
        try {
            return cartContent(cartUuid);
        } catch (const ConnectionErrorException &error) {
            logger->error(error.tr().text());
            MockFactory<Dialog>::create()->showMessage(error.tr(), Dialog::Error, 0);
        }
    }
}

bool Interface::updateApplied(const CartUpdateResponse &current) const
{
    if (!lastCart)
        return !current.items().isEmpty();
    return lineObjects(current) != lineObjects(*lastCart);
}

CartUpdateResponse Interface::acceptCart(const CartUpdateResponse &cart)
{
    lastCart = cart;
    // The document may carry no loyalty card (no customer on the receipt):
    // then there is no points limit to set.
    if (const QSharedPointer<DocumentCardRecord> card = getCard())
        card->setMaxPointsForSpend(cart.pointsToRredeem());
    return cart;
}

CartUpdateResponse Interface::addCouponToCart(const QString &cartUuid, const QString &coupon, bool validate)
{
    logger->info(QStringLiteral("Добавление купона '%1' в корзину '%2'").arg(coupon, cartUuid));
    const bool matches = checkValidationCouponMask(coupon);
    if (matches && !validate)
        logger->warn(QStringLiteral("Добавление купона в корзину без валидации"));
    const QJsonObject body{{QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), coupon},
                                                                   {QStringLiteral("validationCoupon"), matches && validate}}}};
    return updateCart(cartUuid, body);
}

CartUpdateResponse Interface::deleteCoupon(const QString &cartUuid, const QString &coupon)
{
    logger->info(QStringLiteral("Удаление купона '%1' из корзины '%2'").arg(coupon, cartUuid));
    const QJsonObject body{{QStringLiteral("coupon"), QJsonObject{{QStringLiteral("number"), coupon},
                                                                   {QStringLiteral("validationCoupon"), false},
                                                                   {QStringLiteral("isDeleted"), true}}}};
    return updateCart(cartUuid, body);
}

bool Interface::checkValidationCouponMask(const QString &coupon) const
{
    // An empty pattern would match every number, yet it means "validate none".
    return !validationCouponMask.pattern().isEmpty() && validationCouponMask.match(coupon).hasMatch();
}

CartUpdateResponse Interface::addItemToCart(const QString &cartUuid, const QSharedPointer<GoodsItem> &goodsItem,
                                            PositionData &positionData, bool checkBlock)
{
    logger->info(QStringLiteral("Добавление позиции в корзину '%1'").arg(cartUuid));
    QJsonObject body{{QStringLiteral("item"), itemObject(*goodsItem, positionData, checkBlock)}};
    const QJsonObject coupon = getCoupon(goodsItem);
    if (!coupon.isEmpty())
        body.insert(QStringLiteral("coupon"), coupon);
    return updateCart(cartUuid, body);
}

QJsonObject Interface::itemObject(const GoodsItem &goodsItem, PositionData &positionData, bool checkBlock) const
{
    QJsonObject item{{QStringLiteral("checkBlock"), checkBlock}};
    if (!positionData.blockActorCode.isEmpty())
        item.insert(QStringLiteral("blockedItemAutorizationOperatorID"), positionData.blockActorCode);
    item.insert(QStringLiteral("barcode"), goodsItem.getBarcode());

    const bool byInputType5 = goodsItem.checkInputType({GoodsItem::ByCode});
    const QString exciseEan = goodsItem.getAdditionalData(additionalDataSection, QStringLiteral("ean")).toString();
    bool settleReason = true;
    if (!exciseEan.isEmpty()) {
        logger->info(QStringLiteral("Для добавления позиции используется EAN от Excise: '%1'").arg(exciseEan));
        item.insert(QStringLiteral("barcode"), exciseEan);
    } else {
        const QSharedPointer<Tmc> article = goodsItem.getTmc();
        settleReason = (article && article->checkGetMethod(Tmc::ByCode)) || byInputType5;
        if (settleReason) {
            logger->info(QStringLiteral("Для добавления позиции используется код товара"));
            item.remove(QStringLiteral("barcode"));
            item.insert(QStringLiteral("subsysNo"), goodsItem.getCode());
        }
    }
    if (settleReason) {
        const int reason = settleEanReason(goodsItem, positionData);
        if (reason >= 0) {
            item.insert(QStringLiteral("eanReasonCode"), reason);
            positionData.eanReason = reason;
        }
    }

    item.insert(QStringLiteral("quantity"), goodsItem.getQuantity());
    QString scannerInput = withVisibleSeparators(goodsItem.getInputRawData());
    if (scannerInput.isEmpty())
        scannerInput = withVisibleSeparators(goodsItem.getExciseMark());
    if (scannerInput.isEmpty())
        scannerInput = goodsItem.getBarcode();
    item.insert(QStringLiteral("scanerInput"), scannerInput);

    const auto record =
        goodsItem.getAdditionalData(additionalDataSection, QStringLiteral("traceability")).value<orvel::Traceability>();
    const QJsonObject traceability = traceabilityObject(record);
    if (!traceability.isEmpty())
        item.insert(QStringLiteral("traceability"), traceability);
    return item;
}

int Interface::settleEanReason(const GoodsItem &goodsItem, const PositionData &positionData) const
{
    if (goodsItem.checkInputType({GoodsItem::ByCode}))
        return getOnlineCheckEanReasonCode();
    // A reason settled for this position before is not asked for again.
    if (positionData.eanReason >= 0)
        return positionData.eanReason;
    if (goodsItem.getBcodeMode() == 1)
        return getEanReasonCode();
    return -1;
}

int Interface::getOnlineCheckEanReasonCode() const
{
    return config()->getInt(QStringLiteral("Tessaro:onlineCheckEanReasonCode"), -1);
}

int Interface::getEanReasonCode() const
{
    // Without configured reasons the service's reason 9 applies.
    if (eanReasons.isEmpty())
        return 9;
    if (eanReasons.size() == 1)
        return eanReasons.firstKey();
    QStringList texts;
    for (const QStringList &text : eanReasons)
        texts << text.join(QStringLiteral(", "));
    const int index = MockFactory<Dialog>::create()->showChoice(
        tr::Tr(QStringLiteral("tessaroEanReasonChoice"), QStringLiteral("Выбор причины добавления товара по коду")), texts);
    // Cancelling ends the addition of the position; the cashier needs no message for it.
    if (index < 0 || index >= eanReasons.size())
        throw BasicException(tr::Tr());
    return eanReasons.keys().at(index);
}

QJsonObject Interface::getCoupon(const QSharedPointer<GoodsItem> &goodsItem) const
{
    const QString number = goodsItem->getAdditionalData(additionalDataSection, QStringLiteral("coupon")).toString();
    if (number.isEmpty())
        return {};
    return {{QStringLiteral("number"), number},
            {QStringLiteral("validationCoupon"), config()->getBool(QStringLiteral("Tessaro:validationCoupon"), false)}};
}

CartUpdateResponse Interface::quantityOverwrite(const QString &cartUuid, int sequenceNumber, double quantity,
                                                DeleteReason deleteReason)
{
    if (quantity >= 0.0005)
        logger->info(QStringLiteral("Установка количества %2 в позицию '%1'")
                         .arg(QString::number(sequenceNumber), QString::number(quantity, 'f', 3)));
    else
        logger->info(QStringLiteral("Удаление позиции '%1' из корзины").arg(sequenceNumber));
    QJsonObject change{{QStringLiteral("sequenceNumber"), sequenceNumber}, {QStringLiteral("quantity"), quantity}};
    if (deleteReason != NoDeleteReason)
        change.insert(QStringLiteral("deleteReason"), int(deleteReason));
    return updateCart(cartUuid, {{QStringLiteral("quantityOverwrite"), change}});
}

CartUpdateResponse Interface::priceOverwrite(const QString &cartUuid, int sequenceNumber, double price, int reasonCode,
                                             const QSharedPointer<User> &user, double quantity)
{
    const QSharedPointer<SimpleProgress> progress = MockFactory<Dialog>::create()->showProgress(
        tr::Tr(QStringLiteral("tessaroProgress"), QStringLiteral("Обращение к сервису Tessaro")));
    QJsonObject change{{QStringLiteral("sequenceNumber"), sequenceNumber},
                       {QStringLiteral("priceGross"), price},
                       {QStringLiteral("reasonCode"), reasonCode},
                       {QStringLiteral("operatorID"), operatorCode(user).toInt()}};
    if (quantity > 0.0005)
        change.insert(QStringLiteral("qty"), quantity);
    return CartUpdateResponse(send(getUrl(CartUpdate, cartUuid), {{QStringLiteral("priceOverwrite"), change}},
                                   getHeaders(QString())));
}

CartStatusResponse Interface::setCartStatusPaid(const QString &cartUuid)
{
    logger->info(QStringLiteral("Изменение статуса корзины '%1' на PAID").arg(cartUuid));
    return CartStatusResponse(send(getUrl(CartStatus, cartUuid), generatePayloadCartStatusPaid(), getHeaders(QString())));
}

CartStatusResponse Interface::setCartStatusCancelled(const QString &cartUuid)
{
    logger->info(QStringLiteral("Изменение статуса корзины '%1' на CANCELLED").arg(cartUuid));
    return CartStatusResponse(send(getUrl(CartStatus, cartUuid), {{QStringLiteral("status"), QStringLiteral("CANCELLED")}},
                                   getHeaders(QString())));
}

QJsonObject Interface::generatePayloadCartStatusPaid()
{
    const QSharedPointer<AbstractDocument> document = Singleton<Session>::instance()->getCurrentDocument();
    const QList<QSharedPointer<MoneyItem>> moneyItems = document ? document->getMoneyItems() : QList<QSharedPointer<MoneyItem>>();
    FoldedPayments folded = foldCash(moneyItems, [this](const QSharedPointer<MoneyItem> &moneyItem) {
        return paymentObject(moneyItem);
    });
    if (!folded.cash.isEmpty()) {
        const double rounding = roundingTotal(*document, {roundingDiscountMode});
        if (rounding > 0.005)
            folded.cash.insert(QStringLiteral("paymentRoundingAmount"), roundToHundredths(rounding));
        folded.cash.insert(QStringLiteral("paymentAmount"), roundToHundredths(folded.cashTotal));
        folded.payments.append(folded.cash);
    }
    return {{QStringLiteral("status"), QStringLiteral("PAID")},
            {QStringLiteral("payment"), folded.payments},
            {QStringLiteral("fiscalReceiptNumber"), getFiscalNumber()}};
}

QJsonObject Interface::paymentObject(const QSharedPointer<MoneyItem> &moneyItem) const
{
    const int currency = moneyItem->getValCode();
    const QString operationId = processOperationId(moneyItem);
    QJsonObject payment{{QStringLiteral("paymentCode"), paymentCodes.value(currency, currency)},
                        {QStringLiteral("paymentAmount"), moneyItem->isChange() ? -moneyItem->getAmount() : moneyItem->getAmount()}};
    const QString cardNumber = moneyItem->getCardNum();
    if (!cardNumber.isEmpty())
        payment.insert(QStringLiteral("cardNumber"), cardNumber);
    if (!moneyItem->getCardType().isEmpty())
        payment.insert(QStringLiteral("cardType"), moneyItem->getCardType());
    const QString terminal = moneyItem->getTerminalId();
    payment.insert(QStringLiteral("terminalId"), terminal.isEmpty() ? QStringLiteral("0000000000") : terminal);
    const QString approval = operationIdAsEFTApprovalCode.contains(currency) ? operationId : moneyItem->getAuthorizationCode();
    if (!approval.isEmpty())
        payment.insert(QStringLiteral("EFTApprovalCode"), approval);
    payment.insert(operationIdAsCardNumber.contains(currency) ? QStringLiteral("cardNumber") : QStringLiteral("receiptNumber"),
                   operationId);
    if (!moneyItem->getValName().isEmpty())
        payment.insert(QStringLiteral("mediaDesc"), moneyItem->getValName());
    // A masked number ("******1234") tells nothing of the card's issuer.
    const QString pan = cardNumber.left(6);
    payment.insert(QStringLiteral("PANCardIdentifier"), withoutCharacters(pan, QStringLiteral("*")).isEmpty() ? QString() : pan);
    const QMap<QString, QString> customFields = getCustomFields(moneyItem);
    for (auto field = customFields.cbegin(); field != customFields.cend(); ++field)
        payment.insert(field.key(), field.value());
    const QStringList discarded = discardPaymentFields.value(currency);
    for (const QString &field : discarded)
        payment.remove(field);
    return payment;
}

QString Interface::processOperationId(const QSharedPointer<MoneyItem> &moneyItem) const
{
    const QString section = QStringLiteral("Tessaro.ReceiptNumber.%1").arg(moneyItem->getValCode());
    const QString id = withoutCharacters(moneyItem->getOperationId(), config()->getString(section + QStringLiteral(":symbolsToRemove")));
    const QRegularExpression mask(QRegularExpression::anchoredPattern(
        config()->getString(section + QStringLiteral(":mask"), QStringLiteral("^(?<result>.*)"))));
    const QRegularExpressionMatch match = mask.match(id);
    return match.hasMatch() ? match.captured(QStringLiteral("result")) : id;
}

QMap<QString, QString> Interface::getCustomFields(const QSharedPointer<MoneyItem> &moneyItem) const
{
    const QString currency = QString::number(moneyItem->getValCode());
    const QString group = QStringLiteral("Tessaro.CustomFields.") + currency;
    const QSharedPointer<SimpleFormatter> formatter = MockFactory<SimpleFormatter>::create();
    QMap<QString, QString> fields;
    const QStringList names = config()->keys(group);
    for (const QString &name : names) {
        const QString text = formatter->format(config()->getString(group + QLatin1Char(':') + name), name, moneyItem.data());
        const QString removed = config()->getString(QStringLiteral("Tessaro.%1.%2:symbolsToRemove").arg(name, currency));
        fields.insert(name, withoutCharacters(text, removed));
    }
    return fields;
}

PayloadResponse Interface::payload(const QString &id)
{
    logger->info(QStringLiteral("Получение payload для MIP"));
    return PayloadResponse(request(getUrl(Payload, id), getHeaders(QString())));
}

MessagesResponse Interface::messages(const QString &id)
{
    logger->info(QStringLiteral("Получение информационных сообщений"));
    return MessagesResponse(request(getUrl(Messages, id), getHeaders(QString())));
}


AdviceNoteResponse Interface::adviceNote(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice,
                                         const AdviceNoteResponse &previous)
{
    logger->info(QStringLiteral("Создание корзины с помощью готовых данных по чеку возврата"));
    // Open until the service has answered.
    const QSharedPointer<SimpleProgress> progress = MockFactory<Dialog>::create()->showProgress(
        tr::Tr(QStringLiteral("tessaroProgress"), QStringLiteral("Обращение к сервису Tessaro")));
    return sendAdviceNote(adviceNoteBody(document, invoice, true), previous);
}

AdviceNoteResponse Interface::adviceNote(const QSharedPointer<BackBySaleDocument> &document,
                                         const InvoiceInfo &invoice, const AdviceNoteResponse &previous)
{
    logger->info(QStringLiteral("Создание корзины с помощью готовых данных для чека возврата по чеку продажи"));
    return sendAdviceNote(adviceNoteBody(document, invoice, false), previous);
}

QJsonObject Interface::getOriginalInvoiceObject(const InvoiceInfo &invoice) const
{
    // Numbers that are not numbers, or do not fit an int, go as 0.
    return QJsonObject{
        {QStringLiteral("date"), invoice.invoiceDate.toString(QStringLiteral("yyyyMMdd"))},
        {QStringLiteral("storeNo"), invoice.storeNumber.toInt()},
        {QStringLiteral("tillNo"), invoice.cashCode.toInt()},
        {QStringLiteral("invoiceNo"), invoice.invoiceNumber},
    };
}

QJsonArray Interface::getBackPayments(const QSharedPointer<AbstractDocument> &document) const
{
    FoldedPayments folded = foldCash(document->getMoneyItems(), [this](const QSharedPointer<MoneyItem> &moneyItem) {
        const int currency = moneyItem->getValCode();
        return QJsonObject{{QStringLiteral("code"), QString::number(paymentCodes.value(currency, currency))},
                           {QStringLiteral("amount"), moneyItem->getAmount()}};
    });

    const Config *settings = config();
    QSet<int> roundingModes;
    if (settings->getBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), true))
        roundingModes.insert(changeRoundingDiscountMode);
    if (settings->getBool(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), true))
        roundingModes.insert(roundingDiscountMode);
    if (folded.cash.isEmpty())
        return folded.payments;

    // Below half a kopeck there is no rounding; the service takes its size only.
    const double rounding = qAbs(roundingTotal(*document, roundingModes));
    if (rounding > 0.005)
        folded.cash.insert(QStringLiteral("paymentRoundingAmount"), roundToHundredths(rounding));
    folded.cash.insert(QStringLiteral("paymentAmount"), roundToHundredths(folded.cashTotal));
    folded.payments.append(folded.cash);
    return folded.payments;
}

AdviceNoteResponse Interface::sendAdviceNote(const QJsonObject &body, const AdviceNoteResponse &previous)
{
    // Digests stored with earlier answers were taken over this very form of the
    // body; another form would send every stored return again.
    const QString digest = QString::fromLatin1(
        QCryptographicHash::hash(QJsonDocument(body).toJson(QJsonDocument::Indented), QCryptographicHash::Md5).toHex());
    if (digest == previous.requestHashSum) {
        logger->info(QStringLiteral("Отправка запроса не требуется"));
        return previous;
    }
    AdviceNoteResponse answer(send(getUrl(AdviceNote, QString()), body, getHeaders(QString())));
    answer.requestHashSum = digest;
    return answer;
}

QJsonObject Interface::adviceNoteBody(const QSharedPointer<BackDocument> &document, const InvoiceInfo &invoice,
                                      bool withVat)
{
    const Registry &registry = Singleton<Session>::instance()->getRegistry();
    // The customer card is a condition of every return; should the host still
    // close one without it, the service gets an empty number rather than the
    // till failing.
    const QSharedPointer<DocumentCardRecord> card = document->getCardRecord(loyaltyCardType);
    const QString cardNumber = card ? card->getNumber().toString() : QString();
    QJsonObject header{
        {QStringLiteral("transactionType"), 2},
        {QStringLiteral("tillNo"), registry.getCashCode().toInt()},
        {QStringLiteral("store"), registry.getShopCode().toInt()},
        {QStringLiteral("customer"), QJsonObject{{QStringLiteral("customerNumber"), getCardBarcode(cardNumber)}}},
        {QStringLiteral("originalInvoice"), getOriginalInvoiceObject(invoice)},
    };

    const int commonReason = document->getCommonBackReason().toInt();
    QJsonArray items;
    const QList<QSharedPointer<GoodsItem>> positions = document->getGoodsItems();
    for (const QSharedPointer<GoodsItem> &position : positions)
        items.append(adviceNoteItem(*position, commonReason, withVat));

    header.insert(QStringLiteral("payments"), getBackPayments(document));
    return QJsonObject{{QStringLiteral("header"), header}, {QStringLiteral("items"), items}};
}

QJsonObject Interface::adviceNoteItem(const GoodsItem &position, int commonReason, bool withVat) const
{
    QJsonObject item{
        {QStringLiteral("sequenceNumber"), QString::number(position.getPosnum())},
        {QStringLiteral("subsysNo"), position.getCode()},
    };
    const int vatIndex = position.getActualVatIndex();
    double vatAmount = 0.0;
    if (vatIndex != -1) {
        const int vatCode = position.getVatCodesArray().value(vatIndex);
        item.insert(QStringLiteral("vatCode"), vatCodes.value(vatCode, vatCode));
        if (withVat)
            item.insert(QStringLiteral("vat"), position.getVatRate());
        vatAmount = position.getVatSumsArray().value(vatIndex);
    }
    item.insert(QStringLiteral("vatAmount"), vatAmount);
    item.insert(QStringLiteral("totalDiscountedGross"), roundToHundredths(position.getSumb()));
    item.insert(QStringLiteral("itemPriceNet"), roundToHundredths((position.getSumb() - vatAmount) / position.getQuantity()));
    item.insert(QStringLiteral("quantity"), position.getQuantity());

    // The position's own reason, when it has one, wins over the document's.
    const QVariant ownReason = position.getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"));
    bool isNumber = false;
    const int own = ownReason.toInt(&isNumber);
    item.insert(QStringLiteral("returnReason"), !ownReason.isNull() && isNumber ? own : commonReason);

    const QJsonObject traceability = adviceNoteTraceability(position);
    if (!traceability.isEmpty())
        item.insert(QStringLiteral("traceability"), traceability);
    return item;
}

QJsonObject Interface::adviceNoteTraceability(const GoodsItem &position) const
{
    auto record = position.getAdditionalData(additionalDataSection, QStringLiteral("traceability")).value<orvel::Traceability>();
    // A goods kit is marked by its barcode when the record has no product code.
    if (record.fz1162Field.isEmpty())
        record.fz1162Field = position.getGoodsKitBarcode();
    return traceabilityObject(record, true);
}

} // namespace tessaro
