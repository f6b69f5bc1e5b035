// Closing a return: the plug-in's hook before the document closes, against a
// scripted Tessaro service on the loopback interface.

#include "returndocuments.h"

#include "plugin/backplugin.h"
#include "responses/advicenoteresponse.h"
#include "tests/client/servicetestbed.h"

#include <support/logcapture.h>

#include <control/action.h>
#include <documentfacade.h>
#include <documentsdao.h>
#include <mockfactory.h>
#include <savetofilelogic.h>
#include <session.h>
#include <singleton.h>

#include <QTest>

#include <memory>

using Answer = ScriptedHttpServer::Answer;
using tessaro::AdviceNoteResponse;

namespace {

const QByteArray serviceAnswer = R"({"uuid":"5d0c7f2e","Key4":"0/0/0012/000077","invoiceID":"000012000077"})";
const QByteArray shiftClosed = R"({"status":"The shift is closed"})";
const QByteArray tillOpened = R"({"storeNo":7,"tillNo":12,"shiftNo":2})";

const QString adviceNotePath = QStringLiteral("/api/advicenote");
const QString tillOpenPath = QStringLiteral("/api/till/open");

// Remembers every save instead of writing files.
class SaveRecorder : public SaveToFileLogic
{
public:
    struct Save
    {
        QSharedPointer<AbstractDocument> document;
        QStringList parts;
        QVariant invoiceIdRaw;
    };

    bool save(const QSharedPointer<AbstractDocument> &document, const QStringList &parts) override
    {
        saves.append({document, parts, document ? document->getPluginData(27, QStringLiteral("invoiceIDRaw")) : QVariant()});
        return succeeds;
    }

    QList<Save> saves;
    /// What the host answers: false as when its disk is full.
    bool succeeds = true;
};

// A till with the plug-in bound to one document, talking to a scripted
// service without token authorisation.
class CloseBed
{
public:
    CloseBed()
        : m_bed(settings())
        , saves(QSharedPointer<SaveRecorder>::create())
    {
        m_bed.server().setDefaultAnswer(Answer::json(200, serviceAnswer));
        MockFactory<SaveToFileLogic>::setInstance(saves);
        plugin = std::make_unique<tessaro::BackPlugin>();
        plugin->init();
    }

    ~CloseBed() { plugin.reset(); }

    ScriptedHttpServer &server() { return m_bed.server(); }
    QSharedPointer<ScriptedDialog> dialog() { return m_bed.host().dialog(); }

    void bind(const QSharedPointer<AbstractDocument> &bound)
    {
        document = bound;
        plugin->setDocument(bound);
    }

    EContext::Result close()
    {
        return plugin->beforeAttemptToDocumentClose(control::Action(control::AttemptToDocumentClose, {}));
    }

    QStringList paths()
    {
        QStringList paths;
        const auto requests = server().requests();
        for (const auto &request : requests)
            paths << request.path;
        return paths;
    }

    QVariant data(const QString &key) const { return document->getPluginData(27, key); }
    AdviceNoteResponse storedAnswer() const
    {
        return AdviceNoteResponse::fromMap(data(QStringLiteral("adviceNoteResponse")).toMap());
    }

    /// Checks that the cashier saw \a message alone, and that nothing was kept or saved.
    void verifyRefusedWith(const tr::Tr &message)
    {
        QCOMPARE(dialog()->messages().size(), 1);
        QCOMPARE(dialog()->messages().constFirst().message, message);
        QVERIFY(!data(QStringLiteral("invoiceIDRaw")).isValid());
        QVERIFY(!data(QStringLiteral("invoiceID")).isValid());
        QVERIFY(!data(QStringLiteral("adviceNoteResponse")).isValid());
        QVERIFY(saves->saves.isEmpty());
    }

private:
    static QMap<QString, QString> settings()
    {
        QMap<QString, QString> all = ReturnDocuments::clientSettings();
        all.insert(QStringLiteral("Tessaro:useTokenAuth"), QStringLiteral("false"));
        return all;
    }

    // First: its host is reset when it is made.
    ServiceTestBed m_bed;

public:
    QSharedPointer<SaveRecorder> saves;
    std::unique_ptr<tessaro::BackPlugin> plugin;
    QSharedPointer<AbstractDocument> document;
};

tr::Tr shiftClosedMessage()
{
    return tr::Tr(QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена в Tessaro закрыта"));
}

} // namespace

class TestDocumentClose : public QObject
{
    Q_OBJECT

private slots:
    void closeStoresTheReturnInvoice();
    void closingTwiceSendsOnce();
    void invoiceNumberWithoutSlashes_data();
    void invoiceNumberWithoutSlashes();
    void answerWithoutInvoiceNumberIsLogged_data();
    void answerWithoutInvoiceNumberIsLogged();
    void returnBySaleSendsItsOwnBody();
    void shiftClosedOnceOpensTheTillAndSendsAgain();
    void shiftClosedTwiceRefuses();
    void shiftOpenFailureRefuses();
    void otherDocumentWithoutAnswerRefused();
    void otherDocumentGoesOnWithItsStoredAnswer();
    void serviceUnreachableRefusesAndKeepsNothing();
    void failedAttemptKeepsTheEarlierAnswer();
    void storedAnswerIsRestoredByPropertyName();
    void failedSaveIsAnErrorAndKeepsTheAnswer();
};

void TestDocumentClose::closeStoresTheReturnInvoice()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    LogCapture log;
    QCOMPARE(bed.close(), EContext::Continue);

    QCOMPARE(bed.paths(), QStringList{adviceNotePath});
    QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().constFirst()).value(QStringLiteral("items")).toArray().size(), 2);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QCOMPARE(bed.data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("000012000077")));
    const QVariantMap stored = bed.data(QStringLiteral("adviceNoteResponse")).toMap();
    QCOMPARE(stored.keys(), (QStringList{QStringLiteral("requestHashSum"), QStringLiteral("response")}));
    QCOMPARE(stored.value(QStringLiteral("requestHashSum")).toString().size(), 32);
    QCOMPARE(bed.storedAnswer().key4(), QStringLiteral("0/0/0012/000077"));
    QVERIFY(log.texts(QStringLiteral("tessaroback"), QtInfoMsg).contains(QStringLiteral("Номер инвойса возврата: 0/0/0012/000077")));

    // Saved once, with the number already on it, and with no parts named.
    QCOMPARE(bed.saves->saves.size(), 1);
    QCOMPARE(bed.saves->saves.constFirst().document, bed.document);
    QCOMPARE(bed.saves->saves.constFirst().parts, QStringList());
    QCOMPARE(bed.saves->saves.constFirst().invoiceIdRaw, QVariant(QStringLiteral("0/0/0012/000077")));
    QVERIFY(bed.dialog()->messages().isEmpty());
}

void TestDocumentClose::closingTwiceSendsOnce()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    QCOMPARE(bed.close(), EContext::Continue);
    const QVariant firstAnswer = bed.data(QStringLiteral("adviceNoteResponse"));

    // The keys are written again from the stored answer.
    bed.document->setPluginData(27, QStringLiteral("invoiceIDRaw"), QStringLiteral("stale"));
    bed.document->setPluginData(27, QStringLiteral("invoiceID"), QStringLiteral("stale"));
    LogCapture log;
    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.paths(), QStringList{adviceNotePath});
    QVERIFY(log.texts(QStringLiteral("tessaroback"), QtInfoMsg).contains(QStringLiteral("Отправка запроса не требуется")));
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QCOMPARE(bed.data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("000012000077")));
    QCOMPARE(bed.data(QStringLiteral("adviceNoteResponse")), firstAnswer);
    QCOMPARE(bed.saves->saves.size(), 2);
}

void TestDocumentClose::invoiceNumberWithoutSlashes_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("id");
    QTest::newRow("12/34/56") << QByteArray(R"({"Key4":"12/34/56"})") << QStringLiteral("12/34/56") << QStringLiteral("123456");
    QTest::newRow("only key4") << QByteArray(R"({"key4":"0/0/7/1"})") << QStringLiteral("0/0/7/1") << QStringLiteral("0071");
    QTest::newRow("Key4 wins over key4") << QByteArray(R"({"Key4":"A/1","key4":"b/2"})") << QStringLiteral("A/1") << QStringLiteral("A1");
    QTest::newRow("no number") << QByteArray(R"({"uuid":"u"})") << QString() << QString();
    QTest::newRow("backslashes stay") << QByteArray(R"({"Key4":"1\\2/3"})") << QStringLiteral("1\\2/3") << QStringLiteral("1\\23");
}

void TestDocumentClose::invoiceNumberWithoutSlashes()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, raw);
    QFETCH(QString, id);
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    bed.server().enqueue(Answer::json(200, reply));
    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")).toString(), raw);
    QCOMPARE(bed.data(QStringLiteral("invoiceID")).toString(), id);
}

// A successful exchange whose answer names no return invoice: the close goes as
// its rules say (an empty number kept, or refused as an incorrect answer), and
// the log says that the number is missing.
void TestDocumentClose::answerWithoutInvoiceNumberIsLogged_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("result");
    QTest::newRow("{}") << QByteArray("{}") << int(EContext::Stop);
    QTest::newRow("Key4 null") << QByteArray(R"({"Key4":null})") << int(EContext::Continue);
    QTest::newRow("Key4 a number") << QByteArray(R"({"Key4":5})") << int(EContext::Continue);
    QTest::newRow("null") << QByteArray("null") << int(EContext::Stop);
    QTest::newRow("5") << QByteArray("5") << int(EContext::Stop);
}

void TestDocumentClose::answerWithoutInvoiceNumberIsLogged()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, result);
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    bed.server().enqueue(Answer::json(200, reply));
    LogCapture log;
    QTest::ignoreMessage(QtWarningMsg, "Ответ на уведомление о возврате не содержит номера инвойса возврата (Key4)");

    QCOMPARE(int(bed.close()), result);

    QCOMPARE(log.texts(QStringLiteral("tessaroback"), QtWarningMsg),
             QStringList{QStringLiteral("Ответ на уведомление о возврате не содержит номера инвойса возврата (Key4)")});
    if (result == EContext::Continue) {
        QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QString()));
        QCOMPARE(bed.data(QStringLiteral("invoiceID")), QVariant(QString()));
        QVERIFY(bed.dialog()->messages().isEmpty());
    } else {
        bed.verifyRefusedWith(tr::Tr(QStringLiteral("tessaroIncorrectResponse"), QStringLiteral("Некорректный ответ от сервера")));
    }
}

void TestDocumentClose::returnBySaleSendsItsOwnBody()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::returnBySale());
    LogCapture log;
    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.paths(), QStringList{adviceNotePath});
    QCOMPARE(ServiceTestBed::jsonBody(bed.server().requests().constFirst()),
             ReturnDocuments::expectedBody(QStringLiteral("return-by-sale.json")));
    QVERIFY(log.texts(QStringLiteral("tessaroback"), QtInfoMsg)
                .contains(QStringLiteral("Создание корзины с помощью готовых данных для чека возврата по чеку продажи")));
    QCOMPARE(bed.data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("000012000077")));
}

void TestDocumentClose::shiftClosedOnceOpensTheTillAndSendsAgain()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    bed.server().enqueue(Answer::json(409, shiftClosed));
    bed.server().enqueue(Answer::json(200, tillOpened));
    QCOMPARE(bed.close(), EContext::Continue);

    QCOMPARE(bed.paths(), (QStringList{adviceNotePath, tillOpenPath, adviceNotePath}));
    // The same return both times.
    QCOMPARE(bed.server().requests().at(0).body, bed.server().requests().at(2).body);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QVERIFY(bed.dialog()->messages().isEmpty());
    const auto records = Singleton<DocumentsDao>::instance()->getStorageItems(Singleton<Session>::instance()->getCurrentShift());
    QCOMPARE(records.size(), 1);
    QCOMPARE(records.constFirst().getName(), QStringLiteral("tillOpen"));
}

void TestDocumentClose::shiftClosedTwiceRefuses()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    bed.server().enqueue(Answer::json(409, shiftClosed));
    bed.server().enqueue(Answer::json(200, tillOpened));
    bed.server().enqueue(Answer::json(409, shiftClosed));
    QCOMPARE(bed.close(), EContext::Stop);

    QCOMPARE(bed.paths(), (QStringList{adviceNotePath, tillOpenPath, adviceNotePath}));
    bed.verifyRefusedWith(shiftClosedMessage());
}

void TestDocumentClose::shiftOpenFailureRefuses()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    const tr::Tr refusal(QStringLiteral("fiscalRegistrarNotReady"), QStringLiteral("Фискальный регистратор не готов"));
    Singleton<DocumentFacade>::instance()->setShiftOpenRefusal(refusal);
    bed.server().enqueue(Answer::json(409, shiftClosed));
    QCOMPARE(bed.close(), EContext::Stop);

    QCOMPARE(bed.paths(), QStringList{adviceNotePath});
    bed.verifyRefusedWith(refusal);
}

void TestDocumentClose::otherDocumentWithoutAnswerRefused()
{
    CloseBed bed;
    bed.bind(QSharedPointer<AbstractDocument>::create(1));
    QCOMPARE(bed.close(), EContext::Stop);
    QCOMPARE(bed.server().requestCount(), 0);
    bed.verifyRefusedWith(tr::Tr(QStringLiteral("tessaroIncorrectResponse"), QStringLiteral("Некорректный ответ от сервера")));
}

void TestDocumentClose::otherDocumentGoesOnWithItsStoredAnswer()
{
    CloseBed bed;
    const auto sale = QSharedPointer<AbstractDocument>::create(1);
    sale->setPluginData(27, QStringLiteral("adviceNoteResponse"),
                        QVariantMap{{QStringLiteral("response"), QVariantMap{{QStringLiteral("Key4"), QStringLiteral("0/0/1/2")}}}});
    bed.bind(sale);
    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.server().requestCount(), 0);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/1/2")));
    QCOMPARE(bed.data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("0012")));
    QCOMPARE(bed.saves->saves.size(), 1);
}

void TestDocumentClose::serviceUnreachableRefusesAndKeepsNothing()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    bed.server().stop();
    QCOMPARE(bed.close(), EContext::Stop);
    bed.verifyRefusedWith(tr::Tr(QStringLiteral("tessaroConnectionError"),
                                 QStringLiteral("Ошибка связи с сервером Tessaro\nНе выключайте кассу! Дождитесь завершения операции")));
}

void TestDocumentClose::failedAttemptKeepsTheEarlierAnswer()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    QCOMPARE(bed.close(), EContext::Continue);
    const QVariant firstAnswer = bed.data(QStringLiteral("adviceNoteResponse"));

    // A changed return is sent again; the service refuses it.
    bed.document->getGoodsItems().constFirst()->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), 4);
    bed.server().enqueue(Answer::json(500, R"({"message":"Internal Server Error"})"));
    QCOMPARE(bed.close(), EContext::Stop);
    QCOMPARE(bed.paths(), (QStringList{adviceNotePath, adviceNotePath}));
    QCOMPARE(bed.dialog()->messages().size(), 1);
    QCOMPARE(bed.dialog()->messages().constFirst().message.text(), QStringLiteral("Internal Server Error"));
    QCOMPARE(bed.data(QStringLiteral("adviceNoteResponse")), firstAnswer);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QCOMPARE(bed.saves->saves.size(), 1);

    // The next attempt asks the service again, since the stored answer is the old return's.
    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.server().requestCount(), 3);
}

void TestDocumentClose::storedAnswerIsRestoredByPropertyName()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    QCOMPARE(bed.close(), EContext::Continue);

    // As read back from a saved document: plain maps, and a key no property has.
    QVariantMap stored = bed.data(QStringLiteral("adviceNoteResponse")).toMap();
    stored.insert(QStringLiteral("response"), QVariantMap{{QStringLiteral("Key4"), QStringLiteral("0/0/0012/000099")}});
    stored.insert(QStringLiteral("unknown"), QStringLiteral("skipped"));
    bed.document->setPluginData(27, QStringLiteral("adviceNoteResponse"), stored);

    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.server().requestCount(), 1);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000099")));
    // Written back with the properties only.
    QCOMPARE(bed.data(QStringLiteral("adviceNoteResponse")).toMap().keys(),
             (QStringList{QStringLiteral("requestHashSum"), QStringLiteral("response")}));
    QCOMPARE(bed.storedAnswer().requestHashSum, stored.value(QStringLiteral("requestHashSum")).toString());
}

void TestDocumentClose::failedSaveIsAnErrorAndKeepsTheAnswer()
{
    CloseBed bed;
    bed.bind(ReturnDocuments::plainReturn());
    bed.saves->succeeds = false;
    LogCapture log;
    QTest::ignoreMessage(QtCriticalMsg, "Не удалось сохранить документ с номером инвойса возврата 0/0/0012/000077");
    // The service has settled the return: the close goes on, and the answer
    // waits in the document for the host's next save.
    QCOMPARE(bed.close(), EContext::Continue);
    QCOMPARE(bed.saves->saves.size(), 1);
    QCOMPARE(bed.data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QVERIFY(bed.data(QStringLiteral("adviceNoteResponse")).isValid());
    QCOMPARE(log.texts(QStringLiteral("tessaroback"), QtCriticalMsg),
             QStringList{QStringLiteral("Не удалось сохранить документ с номером инвойса возврата 0/0/0012/000077")});
}

QTEST_GUILESS_MAIN(TestDocumentClose)
#include "tst_documentclose.moc"
