// The road of a return, end to end: the built plug-in module, loaded as the
// host loads it and run through the host's action pipeline, closes returns
// against the Tessaro service emulator on the loopback interface.

#include "returndocuments.h"

#include "emulator/emulator.h"

#include <actionpipeline.h>
#include <basicloyaltysystem.h>
#include <contextmanager.h>
#include <control/args/core.h>
#include <dictionariesdao.h>
#include <documentsdao.h>
#include <documentserializer.h>
#include <qml/qmlbasedgui.h>
#include <savetofilelogic.h>
#include <session.h>
#include <singleton.h>
#include <testing/testhost.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QPluginLoader>
#include <QPointer>
#include <QTest>

#include <memory>

using tessaro::emulator::Emulator;
using tessaro::emulator::EmulatorSettings;
using tessaro::emulator::Fault;
using tessaro::emulator::JournalEntry;

namespace {

// The plug-in's loyalty-system type, under which it keeps its values on documents.
constexpr int PluginSystem = 27;

const QString clientId = QStringLiteral("till-012");
const QString realmId = QStringLiteral("store-7");
const QString clientSecretHeader = QStringLiteral("Basic dGlsbC0wMTI6c2VjcmV0");

const QString tokenRequest = QStringLiteral("POST /token");
const QString adviceNoteRequest = QStringLiteral("POST /api/advicenote");
const QString tillOpenRequest = QStringLiteral("POST /api/till/open");

} // namespace

class TestReturnRoad : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void plainReturnWithInvoiceInputAndReasons();
    void returnBySale();
    void shiftClosedOnceIsOpenedAndTheReturnSentAgain();
    void shiftClosedTwiceRefusesTheClose();
    void serviceUnreachableRefusesAndKeepsNothing();
    void sameDocumentClosedTwiceSendsOnce();
    void documentReloadedAfterRestartIsNotSentAgain();

private:
    /// Starts the emulator with the shift of store 7, till 12 open or closed,
    /// a host configured for it, and the plug-in in the host's pipeline.
    void startTill(bool shiftOpen = true);
    /// Loads a fresh plug-in object, initialises it and puts it in a fresh pipeline.
    void startPlugin();
    void bind(const QSharedPointer<AbstractDocument> &document);
    EContext::Result close();
    EContext::Result chooseReason(int posnum);

    /// The requests the emulator received, as "METHOD /path".
    QStringList journal() const;
    QList<int> journalStatuses() const;
    QVariant data(const QString &key) const;
    QString documentsDir() const;
    QString documentFile() const;

    QPluginLoader m_loader;
    std::unique_ptr<Emulator> m_emulator;
    std::unique_ptr<TestHost> m_host;
    std::unique_ptr<ActionPipeline> m_pipeline;
    QPointer<QObject> m_instance;
    BasicLoyaltySystem *m_plugin = nullptr;
    QSharedPointer<AbstractDocument> m_document;
    QStringList m_formsShown;
    QList<ActionPipeline::Step> m_closeSteps;
};

void TestReturnRoad::initTestCase()
{
    const QString file = QDir(qEnvironmentVariable("TESSARO_PLUGIN_DIR")).filePath(QStringLiteral("libtessaroback.so"));
    QVERIFY2(QFile::exists(file), qPrintable(file));
    m_loader.setFileName(file);
    QVERIFY2(m_loader.load(), qPrintable(m_loader.errorString()));
}

void TestReturnRoad::cleanup()
{
    delete m_instance;
    m_pipeline.reset();
    m_document.reset();
    m_host.reset();
    m_emulator.reset();
    m_formsShown.clear();
    m_closeSteps.clear();
}

void TestReturnRoad::startTill(bool shiftOpen)
{
    EmulatorSettings settings;
    settings.basePath = QStringLiteral("/api");
    settings.clients = {{clientId, realmId, clientSecretHeader}};
    EmulatorSettings::Till till;
    till.storeNo = 7;
    till.tillNo = 12;
    till.shiftOpen = shiftOpen;
    till.nextInvoiceNo = 77;
    settings.tills = {till};
    m_emulator = std::make_unique<Emulator>(settings);
    QVERIFY(m_emulator->startInThread());

    m_host = std::make_unique<TestHost>();
    // The tables are those of ReturnDocuments::clientSettings().
    m_host->setConfig(
        QStringLiteral("[Tessaro]\nurl=%1\ntokenUrl=%2\nclientId=%3\nrealmId=%4\nauthorizationHeader=%5\n"
                       "[Tessaro.VatCodes]\n5=3\n[Tessaro.PaymentCodes]\n2=3\n[Host]\ndocumentsDir=%6\n")
            .arg(m_emulator->baseUrl().toString(), m_emulator->tokenUrl().toString(), clientId, realmId,
                 clientSecretHeader, documentsDir()));

    Singleton<ContextManager>::instance()->setCurrentContext(EContext::Document);
    Singleton<DictionariesDao>::instance()->setBackReasons(
        2, {{1, QStringLiteral("Брак")}, {3, QStringLiteral("Не подошел размер")}, {5, QStringLiteral("Передумал")}});
    // The cashier's answer to the invoice form.
    Singleton<qml::QmlBasedGui>::instance()->setPresenter([this](const qml::ViewDescriptor &view) {
        m_formsShown << view.form;
        return Event(view.event.getCode(),
                     {{QStringLiteral("data"), QVariantMap{{QStringLiteral("cashCode"), QStringLiteral("0012")},
                                                           {QStringLiteral("invoiceNumber"), QStringLiteral("000345")},
                                                           {QStringLiteral("storeNumber"), QStringLiteral("0007")},
                                                           {QStringLiteral("invoiceDate"), QStringLiteral("2024-02-01")}}}});
    });
    startPlugin();
}

void TestReturnRoad::startPlugin()
{
    m_instance = m_loader.instance();
    QVERIFY(m_instance);
    m_plugin = static_cast<BasicLoyaltySystem *>(m_instance->qt_metacast("BasicLoyaltySystem"));
    QVERIFY(m_plugin);
    m_plugin->init();

    m_pipeline = std::make_unique<ActionPipeline>();
    m_pipeline->addPlugin(m_plugin);
    // The host closes the document once every hook let it.
    m_pipeline->setHostAction(control::AttemptToDocumentClose, [this](const control::Action &) {
        m_document->setClosed(true);
        return EContext::Continue;
    });
    m_pipeline->setObserver([this](const ActionPipeline::Step &step) {
        if (step.actionType == control::AttemptToDocumentClose)
            m_closeSteps << step;
    });
}

void TestReturnRoad::bind(const QSharedPointer<AbstractDocument> &document)
{
    m_document = document;
    Singleton<Session>::instance()->setCurrentDocument(document);
    m_plugin->setDocument(document);
}

EContext::Result TestReturnRoad::close()
{
    return m_pipeline->run(control::Action(control::AttemptToDocumentClose, {}));
}

EContext::Result TestReturnRoad::chooseReason(int posnum)
{
    const control::Action action(control::SelectBackReason, {});
    control::args::Core(action).setPosition(m_document->getGoodsItemByPosnum(posnum));
    return m_pipeline->run(action);
}

QStringList TestReturnRoad::journal() const
{
    QStringList requests;
    const auto entries = m_emulator->journal().entries();
    for (const JournalEntry &entry : entries)
        requests << QString::fromLatin1(entry.exchange.method) + QLatin1Char(' ') + entry.exchange.path;
    return requests;
}

QList<int> TestReturnRoad::journalStatuses() const
{
    QList<int> statuses;
    const auto entries = m_emulator->journal().entries();
    for (const JournalEntry &entry : entries)
        statuses << entry.status;
    return statuses;
}

QVariant TestReturnRoad::data(const QString &key) const
{
    return m_document->getPluginData(PluginSystem, key);
}

QString TestReturnRoad::documentsDir() const
{
    return QDir(m_host->folder()).filePath(QStringLiteral("documents"));
}

QString TestReturnRoad::documentFile() const
{
    return SaveToFileLogic::fileName(documentsDir(), m_document->getId());
}

void TestReturnRoad::plainReturnWithInvoiceInputAndReasons()
{
    startTill();
    bind(ReturnDocuments::startPlainReturn());
    QCOMPARE(m_formsShown, QStringList{QStringLiteral("InputInvoiceInfo")});

    ReturnDocuments::addPositions(*m_document);
    ReturnDocuments::payPlainReturn(*m_document);
    // Position 1: the second reason of the list; position 2: the choice is
    // cancelled, so the position takes the common reason.
    m_host->dialog()->enqueueChoice(1);
    QCOMPARE(chooseReason(1), EContext::Continue);
    QCOMPARE(chooseReason(2), EContext::Continue);
    QCOMPARE(m_host->dialog()->choices().size(), 2);
    QCOMPARE(m_document->getGoodsItemByPosnum(1)->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason")), QVariant(3));
    QCOMPARE(m_document->getGoodsItemByPosnum(2)->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason")), QVariant(5));

    QCOMPARE(close(), EContext::Continue);
    QVERIFY(m_document->isClosed());
    QCOMPARE(m_closeSteps.size(), 2);
    QCOMPARE(m_closeSteps.constFirst().kind, ActionPipeline::Step::BeforeTrigger);
    QCOMPARE(m_closeSteps.constFirst().priority, 3);

    QCOMPARE(journal(), (QStringList{tokenRequest, adviceNoteRequest}));
    const QJsonObject sent = m_emulator->journal().entriesFor(QStringLiteral("/advicenote")).constFirst().exchange.jsonObject();
    QCOMPARE(sent, ReturnDocuments::expectedBody(QStringLiteral("plain-return.json")));
    QCOMPARE(QString::fromLatin1(QCryptographicHash::hash(QJsonDocument(sent).toJson(QJsonDocument::Indented),
                                                          QCryptographicHash::Md5).toHex()),
             ReturnDocuments::plainReturnDigest);

    QCOMPARE(data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QCOMPARE(data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("000012000077")));
    QCOMPARE(data(QStringLiteral("adviceNoteResponse")).toMap().value(QStringLiteral("requestHashSum")).toString(),
             ReturnDocuments::plainReturnDigest);
    QCOMPARE(m_emulator->state().adviceNotes.notes().size(), 1);
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

void TestReturnRoad::returnBySale()
{
    startTill();
    bind(ReturnDocuments::returnBySale());
    QVERIFY(m_formsShown.isEmpty());

    QCOMPARE(close(), EContext::Continue);
    QVERIFY(m_document->isClosed());
    QCOMPARE(journal(), (QStringList{tokenRequest, adviceNoteRequest}));
    QCOMPARE(m_emulator->journal().entriesFor(QStringLiteral("/advicenote")).constFirst().exchange.jsonObject(),
             ReturnDocuments::expectedBody(QStringLiteral("return-by-sale.json")));
    QCOMPARE(data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("000012000077")));
}

void TestReturnRoad::shiftClosedOnceIsOpenedAndTheReturnSentAgain()
{
    startTill(false);
    bind(ReturnDocuments::plainReturn());

    QCOMPARE(close(), EContext::Continue);
    QVERIFY(m_document->isClosed());
    QCOMPARE(journal(), (QStringList{tokenRequest, adviceNoteRequest, tillOpenRequest, adviceNoteRequest}));
    QCOMPARE(journalStatuses(), (QList<int>{200, 409, 200, 200}));
    QVERIFY(m_emulator->state().shifts.isOpen(7, 12));
    QCOMPARE(m_emulator->state().adviceNotes.notes().size(), 1);
    QCOMPARE(data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));

    const auto records = Singleton<DocumentsDao>::instance()->getStorageItems(Singleton<Session>::instance()->getCurrentShift());
    QCOMPARE(records.size(), 1);
    QCOMPARE(records.constFirst().getName(), QStringLiteral("tillOpen"));
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

void TestReturnRoad::shiftClosedTwiceRefusesTheClose()
{
    startTill();
    m_emulator->faults().add(Fault(Fault::Kind::ShiftClosed, QStringLiteral("/advicenote"), 2));
    bind(ReturnDocuments::plainReturn());

    QCOMPARE(close(), EContext::Stop);
    QVERIFY(!m_document->isClosed());
    // The till opening meets an open shift, which counts as opened.
    QCOMPARE(journal(), (QStringList{tokenRequest, adviceNoteRequest, tillOpenRequest, adviceNoteRequest}));
    QCOMPARE(journalStatuses(), (QList<int>{200, 409, 409, 409}));
    QCOMPARE(m_host->dialog()->messages().size(), 1);
    QCOMPARE(m_host->dialog()->messages().constFirst().message,
             tr::Tr(QStringLiteral("tessaroShiftClosed"), QStringLiteral("Смена в Tessaro закрыта")));
    QVERIFY(!data(QStringLiteral("invoiceIDRaw")).isValid());
    QVERIFY(!data(QStringLiteral("adviceNoteResponse")).isValid());
    QVERIFY(m_emulator->state().adviceNotes.notes().isEmpty());
}

void TestReturnRoad::serviceUnreachableRefusesAndKeepsNothing()
{
    startTill();
    const auto document = ReturnDocuments::plainReturn();
    // Processed before with a token, so the advice note is the first request.
    document->setPluginData(PluginSystem, QStringLiteral("token"), QStringLiteral("0123456789abcdef0123456789abcdef"));
    bind(document);
    m_emulator->stop();

    QCOMPARE(close(), EContext::Stop);
    QVERIFY(!m_document->isClosed());
    QVERIFY(journal().isEmpty());
    QCOMPARE(m_host->dialog()->messages().size(), 1);
    QCOMPARE(m_host->dialog()->messages().constFirst().message,
             tr::Tr(QStringLiteral("tessaroConnectionError"),
                    QStringLiteral("Ошибка связи с сервером Tessaro\nНе выключайте кассу! Дождитесь завершения операции")));
    QVERIFY(!data(QStringLiteral("invoiceIDRaw")).isValid());
    QVERIFY(!data(QStringLiteral("invoiceID")).isValid());
    QVERIFY(!data(QStringLiteral("adviceNoteResponse")).isValid());
    QVERIFY(!QFile::exists(documentFile()));
}

void TestReturnRoad::sameDocumentClosedTwiceSendsOnce()
{
    startTill();
    bind(ReturnDocuments::plainReturn());
    QCOMPARE(close(), EContext::Continue);
    QCOMPARE(close(), EContext::Continue);
    QCOMPARE(journal(), (QStringList{tokenRequest, adviceNoteRequest}));
    QCOMPARE(m_emulator->state().adviceNotes.notes().size(), 1);
    QCOMPARE(data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
}

void TestReturnRoad::documentReloadedAfterRestartIsNotSentAgain()
{
    startTill();
    bind(ReturnDocuments::plainReturn());
    QCOMPARE(close(), EContext::Continue);
    QVERIFY(QFile::exists(documentFile()));

    // The till restarts: a new plug-in object, the document read back from disk.
    QFile file(documentFile());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto reloaded = DocumentSerializer::fromJson(QJsonDocument::fromJson(file.readAll()).object());
    QVERIFY(reloaded);
    QVERIFY(qobject_cast<BackDocument *>(reloaded.data()));
    delete m_instance;
    startPlugin();
    m_formsShown.clear();
    bind(reloaded);
    QVERIFY(m_formsShown.isEmpty());
    QCOMPARE(data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    reloaded->setPluginData(PluginSystem, QStringLiteral("invoiceIDRaw"), QVariant());

    QCOMPARE(close(), EContext::Continue);
    QVERIFY(reloaded->isClosed());
    QCOMPARE(journal(), (QStringList{tokenRequest, adviceNoteRequest}));
    QCOMPARE(m_emulator->state().adviceNotes.notes().size(), 1);
    QCOMPARE(data(QStringLiteral("invoiceIDRaw")), QVariant(QStringLiteral("0/0/0012/000077")));
    QCOMPARE(data(QStringLiteral("invoiceID")), QVariant(QStringLiteral("000012000077")));
}

QTEST_GUILESS_MAIN(TestReturnRoad)
#include "tst_returnroad.moc"
