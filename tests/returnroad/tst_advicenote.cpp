#include "returndocuments.h"

#include "client/interface.h"
#include "responses/advicenoteresponse.h"
#include "responses/rounding.h"
#include "responses/shiftclosedexception.h"
#include "returns/invoiceinfo.h"
#include "tests/client/servicetestbed.h"

#include <support/logcapture.h>

#include <documentcardrecord.h>
#include <documentimpact.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>

#include <QJsonDocument>
#include <QTest>

#include <memory>

using tessaro::AdviceNoteResponse;
using tessaro::Interface;

namespace {

const QByteArray serviceAnswer = R"({"uuid":"5d0c7f2e","Key4":"0/0/0012/000077","invoiceID":"00012000077"})";

// The sale the returns refer to.
InvoiceInfo sale()
{
    return InvoiceInfo::fromMap(ReturnDocuments::invoiceInfo());
}

QJsonArray items(const QJsonObject &body)
{
    return body.value(QStringLiteral("items")).toArray();
}

QJsonObject item(const QJsonObject &body, int index)
{
    return items(body).at(index).toObject();
}

QJsonArray payments(const QJsonObject &body)
{
    return body.value(QStringLiteral("header")).toObject().value(QStringLiteral("payments")).toArray();
}

// Records when the progress message opened and closed, counted in requests
// the service had received by then.
class ProgressWatch : public ScriptedDialog
{
public:
    explicit ProgressWatch(const ScriptedHttpServer &server)
        : m_server(server)
    {
    }

    QSharedPointer<SimpleProgress> showProgress(const tr::Tr &message) override
    {
        ScriptedDialog::showProgress(message);
        requestsWhenShown << m_server.requestCount();
        return QSharedPointer<SimpleProgress>::create(message, [this] { requestsWhenClosed << m_server.requestCount(); });
    }

    QList<int> requestsWhenShown;
    QList<int> requestsWhenClosed;

private:
    const ScriptedHttpServer &m_server;
};

// A till with the client, talking to a scripted service without token authorisation.
class AdviceNoteBed
{
public:
    explicit AdviceNoteBed(const QMap<QString, QString> &extra = {})
        : m_bed(settings(extra))
    {
        m_bed.server().setDefaultAnswer(ScriptedHttpServer::Answer::json(200, serviceAnswer));
        client = std::make_unique<Interface>();
    }

    ScriptedHttpServer &server() { return m_bed.server(); }
    TestHost &host() { return m_bed.host(); }
    int requestCount() { return server().requestCount(); }
    QJsonObject sentBody() { return ServiceTestBed::jsonBody(server().requests().constLast()); }

    std::unique_ptr<Interface> client;

private:
    static QMap<QString, QString> settings(const QMap<QString, QString> &extra)
    {
        QMap<QString, QString> all = ReturnDocuments::clientSettings();
        all.insert(QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false"));
        all.insert(extra);
        return all;
    }

    ServiceTestBed m_bed;
};

} // namespace

class TestAdviceNote : public QObject
{
    Q_OBJECT

private slots:
    void plainReturnBody();
    void absentDocumentSendsNothing();
    void absentEntriesOfTheDocumentAreSkipped();
    void returnBySaleBody();
    void digestIsTheMd5OfTheIndentedBody();
    void progressOnlyForThePlainReturn();
    void unchangedNoteIsNotSentAgain();
    void defaultPreviousAlwaysSends();
    void changedReturnIsSentAgain();
    void answerCarriesTheDigestWhateverItsStatus();
    void positionWithoutVat();
    void returnBySaleItemsHaveNoVat();
    void returnReason_data();
    void returnReason();
    void traceability_data();
    void traceability();
    void cardOnlyHasNoPaymentAmount();
    void cashPaymentsFoldIntoOne();
    void paymentRoundingAmount_data();
    void paymentRoundingAmount();
    void roundingSwitches_data();
    void roundingSwitches();
    void roundingHalvesAwayFromZero_data();
    void roundingHalvesAwayFromZero();
    void originalInvoiceObject_data();
    void originalInvoiceObject();
    void tillAndStoreCodes_data();
    void tillAndStoreCodes();
    void customerNumber_data();
    void customerNumber();
    void answerKey4_data();
    void answerKey4();
    void answersDifferingOnlyInDigestAreEqual();
};

void TestAdviceNote::plainReturnBody()
{
    AdviceNoteBed bed;
    LogCapture log;
    const AdviceNoteResponse answer
        = bed.client->adviceNote(ReturnDocuments::plainReturn(), sale(), AdviceNoteResponse());

    QCOMPARE(bed.requestCount(), 1);
    const ScriptedHttpServer::Request request = bed.server().requests().constFirst();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.path, QStringLiteral("/api/advicenote"));
    QCOMPARE(bed.sentBody(), ReturnDocuments::expectedBody(QStringLiteral("plain-return.json")));
    QCOMPARE(answer.key4(), QStringLiteral("0/0/0012/000077"));
    QVERIFY(log.texts(QStringLiteral("tessaro"), QtInfoMsg)
                .contains(QStringLiteral("Создание корзины с помощью готовых данных по чеку возврата")));
}

void TestAdviceNote::returnBySaleBody()
{
    AdviceNoteBed bed;
    LogCapture log;
    bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), AdviceNoteResponse());

    QCOMPARE(bed.requestCount(), 1);
    QCOMPARE(bed.sentBody(), ReturnDocuments::expectedBody(QStringLiteral("return-by-sale.json")));
    QVERIFY(log.texts(QStringLiteral("tessaro"), QtInfoMsg)
                .contains(QStringLiteral("Создание корзины с помощью готовых данных для чека возврата по чеку продажи")));
}

void TestAdviceNote::digestIsTheMd5OfTheIndentedBody()
{
    AdviceNoteBed bed;
    const AdviceNoteResponse plain
        = bed.client->adviceNote(ReturnDocuments::plainReturn(), sale(), AdviceNoteResponse());
    // The expected file is Qt's indented form of the body, byte for byte.
    QCOMPARE(QJsonDocument(bed.sentBody()).toJson(QJsonDocument::Indented), ReturnDocuments::expectedFile(QStringLiteral("plain-return.json")));
    QCOMPARE(plain.requestHashSum, ReturnDocuments::plainReturnDigest);

    const AdviceNoteResponse bySale
        = bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), AdviceNoteResponse());
    QCOMPARE(QJsonDocument(bed.sentBody()).toJson(QJsonDocument::Indented), ReturnDocuments::expectedFile(QStringLiteral("return-by-sale.json")));
    QCOMPARE(bySale.requestHashSum, ReturnDocuments::returnBySaleDigest);
}

void TestAdviceNote::progressOnlyForThePlainReturn()
{
    AdviceNoteBed bed;
    const auto dialog = QSharedPointer<ProgressWatch>::create(bed.server());
    MockFactory<Dialog>::setInstance(dialog);

    bed.client->adviceNote(ReturnDocuments::plainReturn(), sale(), AdviceNoteResponse());
    QCOMPARE(dialog->progress(), (QList<tr::Tr>{tr::Tr(QStringLiteral("tessaroProgress"), QStringLiteral("Обращение к сервису Tessaro"))}));
    // Shown before the request and kept open until its answer.
    QCOMPARE(dialog->requestsWhenShown, QList<int>{0});
    QCOMPARE(dialog->requestsWhenClosed, QList<int>{1});

    bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), AdviceNoteResponse());
    QCOMPARE(bed.requestCount(), 2);
    QCOMPARE(dialog->progress().size(), 1);
}

void TestAdviceNote::unchangedNoteIsNotSentAgain()
{
    AdviceNoteBed bed;
    const auto document = ReturnDocuments::plainReturn();
    const AdviceNoteResponse first = bed.client->adviceNote(document, sale(), AdviceNoteResponse());
    QCOMPARE(bed.requestCount(), 1);

    LogCapture log;
    const AdviceNoteResponse second = bed.client->adviceNote(document, sale(), first);
    QCOMPARE(bed.requestCount(), 1);
    QVERIFY(log.texts(QStringLiteral("tessaro"), QtInfoMsg).contains(QStringLiteral("Отправка запроса не требуется")));
    QVERIFY(second == first);
    QCOMPARE(second.requestHashSum, first.requestHashSum);
    QCOMPARE(second.rawBody(), first.rawBody());
    QCOMPARE(second.key4(), QStringLiteral("0/0/0012/000077"));
}

void TestAdviceNote::defaultPreviousAlwaysSends()
{
    AdviceNoteBed bed;
    const AdviceNoteResponse none;
    QVERIFY(none.requestHashSum.isEmpty());
    LogCapture log;
    bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), none);
    bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), none);
    QCOMPARE(bed.requestCount(), 2);
    QVERIFY(!log.contains(QStringLiteral("Отправка запроса не требуется")));
}

void TestAdviceNote::changedReturnIsSentAgain()
{
    AdviceNoteBed bed;
    const auto document = ReturnDocuments::plainReturn();
    const AdviceNoteResponse first = bed.client->adviceNote(document, sale(), AdviceNoteResponse());

    document->getGoodsItems().constFirst()->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), 4);
    const AdviceNoteResponse second = bed.client->adviceNote(document, sale(), first);
    QCOMPARE(bed.requestCount(), 2);
    QVERIFY(second.requestHashSum != first.requestHashSum);

    InvoiceInfo otherSale = sale();
    otherSale.invoiceNumber = QStringLiteral("000346");
    bed.client->adviceNote(document, otherSale, second);
    QCOMPARE(bed.requestCount(), 3);
}

void TestAdviceNote::answerCarriesTheDigestWhateverItsStatus()
{
    AdviceNoteBed bed;
    bed.server().enqueue(ScriptedHttpServer::Answer::json(200, R"({"status":"The shift is closed"})"));
    const AdviceNoteResponse answer
        = bed.client->adviceNote(ReturnDocuments::plainReturn(), sale(), AdviceNoteResponse());
    QCOMPARE(answer.status(), tessaro::Response::ShiftClosed);
    QCOMPARE(answer.requestHashSum, ReturnDocuments::plainReturnDigest);
    QVERIFY_THROWS_EXCEPTION(tessaro::ShiftClosedException, answer.checkStatus());
}

void TestAdviceNote::positionWithoutVat()
{
    AdviceNoteBed bed;
    const auto document = ReturnDocuments::plainReturn();
    const auto position = document->getGoodsItems().constFirst();
    position->setActualVatIndex(-1);
    bed.client->adviceNote(document, sale(), AdviceNoteResponse());

    const QJsonObject sent = item(bed.sentBody(), 0);
    QVERIFY(!sent.contains(QStringLiteral("vatCode")));
    QVERIFY(!sent.contains(QStringLiteral("vat")));
    QCOMPARE(sent.value(QStringLiteral("vatAmount")), QJsonValue(0));
    // 250 / 2 pieces: the gross sum divided by the quantity.
    QCOMPARE(sent.value(QStringLiteral("itemPriceNet")), QJsonValue(125));
}

void TestAdviceNote::returnBySaleItemsHaveNoVat()
{
    AdviceNoteBed bed;
    const auto document = ReturnDocuments::returnBySale();
    const auto third = ReturnDocuments::position(3, QStringLiteral("500600"), 1.0, 12.0);
    third->setVatRate(10.0);
    third->setActualVatIndex(0);
    third->setVatCodesArray({2});
    third->setVatSumsArray({1.09});
    document->addGoodsItem(third);
    bed.client->adviceNote(document, sale(), AdviceNoteResponse());

    const QJsonArray sent = items(bed.sentBody());
    QCOMPARE(sent.size(), 3);
    for (const QJsonValue &value : sent)
        QVERIFY(!value.toObject().contains(QStringLiteral("vat")));
    // The VAT code and amount still go: only the rate is left out.
    QCOMPARE(sent.at(2).toObject().value(QStringLiteral("vatCode")), QJsonValue(2));
    QCOMPARE(sent.at(2).toObject().value(QStringLiteral("vatAmount")), QJsonValue(1.09));
}

void TestAdviceNote::returnReason_data()
{
    QTest::addColumn<QVariant>("common");
    QTest::addColumn<QVariant>("own");
    QTest::addColumn<int>("sent");
    QTest::newRow("common reason only") << QVariant(5) << QVariant() << 5;
    QTest::newRow("own reason wins") << QVariant(5) << QVariant(3) << 3;
    QTest::newRow("own reason without a common one") << QVariant() << QVariant(3) << 3;
    QTest::newRow("neither") << QVariant() << QVariant() << 0;
    QTest::newRow("own reason read back from a saved document") << QVariant(5.0) << QVariant(7.0) << 7;
    QTest::newRow("own reason that is not a number") << QVariant(5) << QVariant(QStringLiteral("x")) << 5;
}

void TestAdviceNote::returnReason()
{
    QFETCH(QVariant, common);
    QFETCH(QVariant, own);
    QFETCH(int, sent);
    AdviceNoteBed bed;
    const auto document = ReturnDocuments::plainReturn();
    document->setCommonBackReason(common);
    document->getGoodsItems().constFirst()->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), own);
    bed.client->adviceNote(document, sale(), AdviceNoteResponse());
    QCOMPARE(item(bed.sentBody(), 0).value(QStringLiteral("returnReason")), QJsonValue(sent));
}

void TestAdviceNote::traceability_data()
{
    QTest::addColumn<QVariantMap>("record");
    QTest::addColumn<QString>("kitBarcode");
    QTest::addColumn<QJsonValue>("sent");
    const QVariantMap full{
        {QStringLiteral("cdn"), QStringLiteral("c")},           {QStringLiteral("cdnOrig"), QStringLiteral("o")},
        {QStringLiteral("fz1162Field"), QStringLiteral("f")},   {QStringLiteral("alcoMarkField"), QStringLiteral("a")},
        {QStringLiteral("barcodeField"), QStringLiteral("b")},  {QStringLiteral("serialNumber"), QStringLiteral("s")},
        {QStringLiteral("lotNumber"), QStringLiteral("l")},     {QStringLiteral("gtin"), QStringLiteral("g")},
    };
    QTest::newRow("every member but cdnOrig") << full << QStringLiteral("kit")
                                             << QJsonValue(QJsonObject{{QStringLiteral("cdn"), QStringLiteral("c")},
                                                                       {QStringLiteral("fz1162Field"), QStringLiteral("f")},
                                                                       {QStringLiteral("alcoMarkField"), QStringLiteral("a")},
                                                                       {QStringLiteral("barcodeField"), QStringLiteral("b")},
                                                                       {QStringLiteral("serialNumber"), QStringLiteral("s")},
                                                                       {QStringLiteral("lotNumber"), QStringLiteral("l")},
                                                                       {QStringLiteral("gtin"), QStringLiteral("g")}});
    QTest::newRow("kit barcode stands in for tag 1162")
        << QVariantMap{{QStringLiteral("lotNumber"), QStringLiteral("l")}} << QStringLiteral("kit")
        << QJsonValue(QJsonObject{{QStringLiteral("fz1162Field"), QStringLiteral("kit")}, {QStringLiteral("lotNumber"), QStringLiteral("l")}});
    QTest::newRow("only cdnOrig: no object") << QVariantMap{{QStringLiteral("cdnOrig"), QStringLiteral("o")}} << QString()
                                             << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("no record, no kit barcode") << QVariantMap() << QString() << QJsonValue(QJsonValue::Undefined);
}

void TestAdviceNote::traceability()
{
    QFETCH(QVariantMap, record);
    QFETCH(QString, kitBarcode);
    QFETCH(QJsonValue, sent);
    AdviceNoteBed bed;
    const auto document = ReturnDocuments::plainReturn();
    const auto position = document->getGoodsItems().constFirst();
    position->setAdditionalData(QStringLiteral("orvel"), QStringLiteral("traceability"), record.isEmpty() ? QVariant() : QVariant(record));
    position->setGoodsKitBarcode(kitBarcode);
    bed.client->adviceNote(document, sale(), AdviceNoteResponse());
    QCOMPARE(item(bed.sentBody(), 0).value(QStringLiteral("traceability")), sent);
}

void TestAdviceNote::cardOnlyHasNoPaymentAmount()
{
    AdviceNoteBed bed;
    const QJsonArray sent = bed.client->getBackPayments(ReturnDocuments::returnBySale());
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.at(0).toObject(), (QJsonObject{{QStringLiteral("code"), QStringLiteral("2")}, {QStringLiteral("amount"), 349.99}}));
    for (const QJsonValue &payment : sent) {
        QVERIFY(!payment.toObject().contains(QStringLiteral("paymentAmount")));
        QVERIFY(!payment.toObject().contains(QStringLiteral("paymentRoundingAmount")));
    }
    // Cash change alone is no cash payment either.
    const auto changeOnly = ReturnDocuments::returnBySale();
    changeOnly->addMoneyItem(ReturnDocuments::payment(1, MoneyItem::Cash, 0.3, true));
    changeOnly->setRoundingSum(0.5);
    const QJsonArray withChange = bed.client->getBackPayments(changeOnly);
    QCOMPARE(withChange.size(), 2);
    QCOMPARE(withChange.at(1).toObject(), (QJsonObject{{QStringLiteral("code"), QStringLiteral("1")}, {QStringLiteral("amount"), 0.3}}));
}

void TestAdviceNote::cashPaymentsFoldIntoOne()
{
    AdviceNoteBed bed;
    auto document = QSharedPointer<BackDocument>::create();
    document->addMoneyItem(ReturnDocuments::payment(1, MoneyItem::Cash, 100.0));
    document->addMoneyItem(ReturnDocuments::payment(3, MoneyItem::BankCard, 20.0));
    document->addMoneyItem(ReturnDocuments::payment(4, MoneyItem::Cash, 50.0));
    const QJsonArray sent = bed.client->getBackPayments(document);
    QCOMPARE(sent.size(), 2);
    QCOMPARE(sent.at(0).toObject(), (QJsonObject{{QStringLiteral("code"), QStringLiteral("2")}, {QStringLiteral("amount"), 20}}));
    // The later cash item's object, carrying the total of both, goes last.
    QCOMPARE(sent.at(1).toObject(), (QJsonObject{{QStringLiteral("code"), QStringLiteral("4")},
                                                  {QStringLiteral("amount"), 50},
                                                  {QStringLiteral("paymentAmount"), 150}}));
}

void TestAdviceNote::paymentRoundingAmount_data()
{
    QTest::addColumn<double>("documentRounding");
    QTest::addColumn<QList<double>>("roundingDiscounts");
    QTest::addColumn<QJsonValue>("sent");
    QTest::newRow("-0.004: none") << -0.004 << QList<double>() << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("-0.3: 0.3") << -0.3 << QList<double>() << QJsonValue(0.3);
    QTest::newRow("0.005: none") << 0.005 << QList<double>() << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("0.006: 0.01") << 0.006 << QList<double>() << QJsonValue(0.01);
    QTest::newRow("discounts and the document's own") << 0.14 << QList<double>{0.1, 0.05} << QJsonValue(0.29);
    QTest::newRow("discounts that cancel out") << 0.0 << QList<double>{0.2, -0.2} << QJsonValue(QJsonValue::Undefined);
    QTest::newRow("negative total of discounts") << -0.1 << QList<double>{-0.245} << QJsonValue(0.35);
}

void TestAdviceNote::paymentRoundingAmount()
{
    QFETCH(double, documentRounding);
    QFETCH(QList<double>, roundingDiscounts);
    QFETCH(QJsonValue, sent);
    AdviceNoteBed bed;
    auto document = QSharedPointer<BackDocument>::create();
    document->addMoneyItem(ReturnDocuments::payment(1, MoneyItem::Cash, 99.7));
    document->setRoundingSum(documentRounding);
    auto impact = QSharedPointer<DocumentImpact>::create();
    for (int i = 0; i < roundingDiscounts.size(); ++i)
        impact->addTotal(DocumentImpactDetail(i % 2 ? 11 : 6, roundingDiscounts.at(i)));
    impact->addTotal(DocumentImpactDetail(2, 1.0));
    document->addImpact(impact);

    const QJsonObject cash = bed.client->getBackPayments(document).last().toObject();
    QCOMPARE(cash.value(QStringLiteral("paymentRoundingAmount")), sent);
    QCOMPARE(cash.value(QStringLiteral("paymentAmount")), QJsonValue(99.7));
}

void TestAdviceNote::roundingSwitches_data()
{
    QTest::addColumn<QString>("byChange");
    QTest::addColumn<QString>("fiscalRound");
    QTest::addColumn<QJsonValue>("sent");
    // Mode 6 gives 0.1, mode 11 gives 0.2, the document itself 0.04.
    QTest::newRow("both by default") << QString() << QString() << QJsonValue(0.34);
    QTest::newRow("both on") << QStringLiteral("true") << QStringLiteral("true") << QJsonValue(0.34);
    QTest::newRow("by change off") << QStringLiteral("false") << QString() << QJsonValue(0.24);
    QTest::newRow("fiscal rounding off") << QString() << QStringLiteral("false") << QJsonValue(0.14);
    QTest::newRow("both off") << QStringLiteral("false") << QStringLiteral("false") << QJsonValue(0.04);
}

void TestAdviceNote::roundingSwitches()
{
    QFETCH(QString, byChange);
    QFETCH(QString, fiscalRound);
    QFETCH(QJsonValue, sent);
    QMap<QString, QString> settings;
    if (!byChange.isEmpty())
        settings.insert(QStringLiteral("TessaroBack.PaymentRoundingAmount:byChange"), byChange);
    if (!fiscalRound.isEmpty())
        settings.insert(QStringLiteral("TessaroBack.PaymentRoundingAmount:fiscalRound"), fiscalRound);
    AdviceNoteBed bed(settings);
    auto document = QSharedPointer<BackDocument>::create();
    document->addMoneyItem(ReturnDocuments::payment(1, MoneyItem::Cash, 10.0));
    document->addImpact(QSharedPointer<DocumentImpact>::create(QList<DocumentImpactDetail>{{6, 0.1}, {11, 0.2}}));
    document->setRoundingSum(0.04);
    QCOMPARE(bed.client->getBackPayments(document).last().toObject().value(QStringLiteral("paymentRoundingAmount")), sent);
}

void TestAdviceNote::roundingHalvesAwayFromZero_data()
{
    QTest::addColumn<double>("sum");
    QTest::addColumn<double>("rounded");
    QTest::newRow("2.345") << 2.345 << 2.35;
    QTest::newRow("-2.345") << -2.345 << -2.35;
    QTest::newRow("2.344") << 2.344 << 2.34;
    QTest::newRow("0.285 stored below its half") << 0.285 << 0.29;
    QTest::newRow("1.005") << 1.005 << 1.01;
    QTest::newRow("zero") << 0.0 << 0.0;
}

void TestAdviceNote::roundingHalvesAwayFromZero()
{
    QFETCH(double, sum);
    QFETCH(double, rounded);
    QCOMPARE(tessaro::roundToHundredths(sum), rounded);

    AdviceNoteBed bed;
    auto document = QSharedPointer<BackDocument>::create();
    document->addGoodsItem(ReturnDocuments::position(1, QStringLiteral("1"), 1.0, sum));
    document->addMoneyItem(ReturnDocuments::payment(1, MoneyItem::Cash, sum));
    document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(27, ReturnDocuments::customerCard));
    bed.client->adviceNote(document, sale(), AdviceNoteResponse());
    const QJsonObject body = bed.sentBody();
    QCOMPARE(item(body, 0).value(QStringLiteral("totalDiscountedGross")), QJsonValue(rounded));
    QCOMPARE(item(body, 0).value(QStringLiteral("itemPriceNet")), QJsonValue(rounded));
    QCOMPARE(payments(body).at(0).toObject().value(QStringLiteral("paymentAmount")), QJsonValue(rounded));
}

void TestAdviceNote::originalInvoiceObject_data()
{
    QTest::addColumn<InvoiceInfo>("invoice");
    QTest::addColumn<QJsonObject>("sent");
    QTest::newRow("full") << sale()
                          << QJsonObject{{QStringLiteral("date"), QStringLiteral("20240201")},
                                         {QStringLiteral("storeNo"), 7},
                                         {QStringLiteral("tillNo"), 12},
                                         {QStringLiteral("invoiceNo"), QStringLiteral("000345")}};
    InvoiceInfo scanned(QStringLiteral("000100122024000012000345"));
    QTest::newRow("scanned: no store, no date") << scanned
                                                << QJsonObject{{QStringLiteral("date"), QString()},
                                                               {QStringLiteral("storeNo"), 0},
                                                               {QStringLiteral("tillNo"), 12},
                                                               {QStringLiteral("invoiceNo"), QStringLiteral("000345")}};
    InvoiceInfo odd = sale();
    odd.storeNumber = QStringLiteral("7a");
    odd.cashCode = QStringLiteral("2147483648");
    QTest::newRow("not numbers, out of range") << odd
                                               << QJsonObject{{QStringLiteral("date"), QStringLiteral("20240201")},
                                                              {QStringLiteral("storeNo"), 0},
                                                              {QStringLiteral("tillNo"), 0},
                                                              {QStringLiteral("invoiceNo"), QStringLiteral("000345")}};
}

void TestAdviceNote::originalInvoiceObject()
{
    QFETCH(InvoiceInfo, invoice);
    QFETCH(QJsonObject, sent);
    AdviceNoteBed bed;
    QCOMPARE(bed.client->getOriginalInvoiceObject(invoice), sent);
}

void TestAdviceNote::tillAndStoreCodes_data()
{
    QTest::addColumn<QString>("shopCode");
    QTest::addColumn<QString>("cashCode");
    QTest::addColumn<int>("store");
    QTest::addColumn<int>("tillNo");
    QTest::newRow("numbers") << QStringLiteral("0007") << QStringLiteral("12") << 7 << 12;
    QTest::newRow("not numbers") << QStringLiteral("A7") << QString() << 0 << 0;
    QTest::newRow("beyond 32 bits") << QStringLiteral("2147483647") << QStringLiteral("2147483648") << 2147483647 << 0;
}

void TestAdviceNote::tillAndStoreCodes()
{
    QFETCH(QString, shopCode);
    QFETCH(QString, cashCode);
    QFETCH(int, store);
    QFETCH(int, tillNo);
    AdviceNoteBed bed;
    Registry &registry = Singleton<Session>::instance()->getRegistry();
    registry.setShopCode(shopCode);
    registry.setCashCode(cashCode);
    bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), AdviceNoteResponse());
    const QJsonObject header = bed.sentBody().value(QStringLiteral("header")).toObject();
    QCOMPARE(header.value(QStringLiteral("store")), QJsonValue(store));
    QCOMPARE(header.value(QStringLiteral("tillNo")), QJsonValue(tillNo));
    QCOMPARE(header.value(QStringLiteral("transactionType")), QJsonValue(2));
}

void TestAdviceNote::customerNumber_data()
{
    QTest::addColumn<QVariant>("card");
    QTest::addColumn<QString>("sent");
    QTest::newRow("18 characters: the service's barcode") << QVariant(QStringLiteral("778899123456789012")) << QStringLiteral("91256789012");
    QTest::newRow("other lengths as they stand") << QVariant(QStringLiteral("2550000012345")) << QStringLiteral("2550000012345");
    QTest::newRow("a number kept as a number") << QVariant(qlonglong(1234567)) << QStringLiteral("1234567");
    QTest::newRow("no customer card") << QVariant() << QString();
}

void TestAdviceNote::customerNumber()
{
    QFETCH(QVariant, card);
    QFETCH(QString, sent);
    AdviceNoteBed bed;
    auto document = QSharedPointer<BackDocument>::create();
    if (card.isValid())
        document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(27, card));
    document->addCardRecord(QSharedPointer<DocumentCardRecord>::create(3, QStringLiteral("999999999999999999")));
    bed.client->adviceNote(document, sale(), AdviceNoteResponse());
    const QJsonObject header = bed.sentBody().value(QStringLiteral("header")).toObject();
    QCOMPARE(header.value(QStringLiteral("customer")).toObject(), (QJsonObject{{QStringLiteral("customerNumber"), sent}}));
}

void TestAdviceNote::answerKey4_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("key4");
    QTest::newRow("Key4 and key4: Key4 wins") << QByteArray(R"({"Key4":"A","key4":"b"})") << QStringLiteral("A");
    QTest::newRow("only key4") << QByteArray(R"({"key4":"b"})") << QStringLiteral("b");
    QTest::newRow("neither") << QByteArray(R"({"uuid":"u"})") << QString();
}

void TestAdviceNote::answerKey4()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, key4);
    AdviceNoteBed bed;
    bed.server().enqueue(ScriptedHttpServer::Answer::json(200, reply));
    const AdviceNoteResponse answer
        = bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), AdviceNoteResponse());
    QCOMPARE(answer.key4(), key4);
}

void TestAdviceNote::answersDifferingOnlyInDigestAreEqual()
{
    AdviceNoteBed bed;
    const AdviceNoteResponse plain
        = bed.client->adviceNote(ReturnDocuments::plainReturn(), sale(), AdviceNoteResponse());
    const AdviceNoteResponse bySale
        = bed.client->adviceNote(ReturnDocuments::returnBySale(), sale(), AdviceNoteResponse());
    QVERIFY(plain.requestHashSum != bySale.requestHashSum);
    QVERIFY(plain == bySale);
    QVERIFY(QVariant::fromValue(plain) == QVariant::fromValue(bySale));
}

void TestAdviceNote::absentDocumentSendsNothing()
{
    AdviceNoteBed bed;
    const LogCapture log;
    const AdviceNoteResponse plain = bed.client->adviceNote(QSharedPointer<BackDocument>(), sale(), AdviceNoteResponse());
    const AdviceNoteResponse bySale = bed.client->adviceNote(QSharedPointer<BackBySaleDocument>(), sale(), AdviceNoteResponse());

    QCOMPARE(bed.requestCount(), 0);
    // Nothing to report: the close that asked is refused with the answer's check.
    QCOMPARE(int(plain.status()), 6);
    QCOMPARE(int(bySale.status()), 6);
    QCOMPARE(log.texts(QStringLiteral("tessaro"), QtCriticalMsg).size(), 2);
}

void TestAdviceNote::absentEntriesOfTheDocumentAreSkipped()
{
    AdviceNoteBed bed;
    const QSharedPointer<BackDocument> document = ReturnDocuments::plainReturn();
    const int positions = int(document->getGoodsItems().size());
    const int paid = int(payments([&] {
        AdviceNoteBed counting;
        counting.client->adviceNote(ReturnDocuments::plainReturn(), sale(), AdviceNoteResponse());
        return counting.sentBody();
    }()).size());
    document->addMoneyItem(QSharedPointer<MoneyItem>());
    document->addImpact(QSharedPointer<DocumentImpact>());

    QVERIFY(bed.client->adviceNote(document, sale(), AdviceNoteResponse()).success());

    QCOMPARE(items(bed.sentBody()).size(), positions);
    QCOMPARE(payments(bed.sentBody()).size(), paid);
}

QTEST_GUILESS_MAIN(TestAdviceNote)
#include "tst_advicenote.moc"
