// Arbitrary bytes as the body of a service answer: every answer class
// classifies it and every accessor reads it without crashing, and the value
// records survive their map round trip.
#include "fuzzsupport.h"

#include "responses/addcustomerresponse.h"
#include "responses/advicenoteresponse.h"
#include "responses/cartcreateresponse.h"
#include "responses/cartupdateresponse.h"
#include "responses/item.h"
#include "responses/messagesresponse.h"
#include "responses/positiondata.h"
#include "responses/response.h"
#include "responses/shiftclosedexception.h"
#include "responses/traceability.h"

#include <basicexception.h>
#include <http/response.h>

#include <QtMath>

#include <cstddef>
#include <cstdint>

using namespace tessaro;

namespace {

// checkStatus() throws exactly for the statuses that are not a success, and
// ShiftClosedException exactly for a closed shift.
void checkStatusAgrees(const Response &answer)
{
    const Response::Status status = answer.status();
    const bool passes = status == Response::Success || status == Response::ShiftAlreadyOpened;
    try {
        answer.checkStatus();
        fuzzRequire(passes, "checkStatus() returned for a failed status");
    } catch (const ShiftClosedException &) {
        fuzzRequire(status == Response::ShiftClosed, "ShiftClosedException for another status");
    } catch (const BasicException &) {
        fuzzRequire(!passes && status != Response::ShiftClosed, "BasicException for a passing or closed status");
    }
}

void readBase(const Response &answer)
{
    checkStatusAgrees(answer);
    answer.success();
    answer.tokenError();
    answer.statusString();
    answer.message();
    answer.unique();
    answer.errorMessage();
    fuzzRequire(answer == answer, "an answer differs from itself");
}

void readTraceability(const orvel::Traceability &record)
{
    record.cdnOrigInt();
    fuzzRequire(orvel::Traceability::fromMap(record.toMap()) == record, "Traceability map round trip");
}

void readItem(const Item &item)
{
    item.name();
    item.artNo();
    item.quantity();
    item.sequenceNumber();
    item.totalPriceGross();
    item.totalDiscountGross();
    item.coupons();
    item.getPriceForItem();
    if (const auto record = item.traceability())
        readTraceability(*record);
    readTraceability(orvel::Traceability::fromMap(item.json().toVariantMap()));

    const PositionData position = PositionData::fromMap(item.json().toVariantMap());
    // NaN (a text "nan" converts to it) is the one value that never equals itself.
    if (!qIsNaN(position.targetPrice))
        fuzzRequire(PositionData::fromMap(position.toMap()) == position, "PositionData map round trip");
}

void readAnswer(const Response &answer)
{
    readBase(answer);
    TokenResponse(answer).token();

    const CartCreateResponse created(answer);
    created.uuid();
    created.lTaNmbr();
    created.invoiceID();
    created.invoiceIDModified();

    const AddCustomerResponse customer(answer);
    customer.firstName();
    customer.lastName();
    customer.clientNumber();
    customer.storeNumber();
    customer.email();
    customer.mobilePhone();
    customer.customerSegment();
    customer.customerName();
    customer.cardHolderNumber();
    customer.inn();
    customer.customerAddress();
    customer.edo();
    customer.creditPaymentAllowed();
    customer.blockingCode();
    customer.allowSale();
    customer.blockingReason();
    customer.cardNumber();
    customer.branch();

    const CartUpdateResponse update(answer);
    readBase(update);
    update.uuid();
    update.statusCode();
    update.pointsToRredeem();
    update.totalItems();
    update.totalQuantity();
    update.messages();
    const QList<Item> items = update.items();
    for (const Item &item : items)
        readItem(item);
    readItem(Item(answer.jsonObject()));

    const MessagesResponse messages(answer);
    readBase(messages);
    messages.messages();

    AdviceNoteResponse advice(answer);
    readBase(advice);
    advice.uuid();
    advice.key4();
    advice.requestHashSum = QStringLiteral("0123456789abcdef0123456789abcdef");
    const AdviceNoteResponse restored = AdviceNoteResponse::fromMap(advice.toMap());
    fuzzRequire(restored.jsonObject() == advice.jsonObject() && restored.requestHashSum == advice.requestHashSum,
                "AdviceNoteResponse map round trip");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    silenceQtMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char *>(data), qsizetype(size));

    // The same body as a plain answer, an unauthorised one and a failed one.
    struct Outcome {
        int httpCode;
        int errorCode;
    };
    for (const Outcome outcome : {Outcome{200, 0}, Outcome{401, 401}, Outcome{500, 500}}) {
        http::Response reply;
        reply.setBody(body);
        reply.setHttpCode(outcome.httpCode);
        if (outcome.errorCode)
            reply.setError(outcome.errorCode, tr::Tr(QStringLiteral("fuzzError"), QStringLiteral("ошибка")));
        readAnswer(Response(reply));
    }
    return 0;
}
