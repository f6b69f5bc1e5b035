// Binding documents to the plug-in.

#include "plugintestcase.h"

#include "client/interface.h"

#include <actionqueuecontroller.h>
#include <backbysaledocument.h>
#include <dictionariesdao.h>
#include <edocumenttype.h>
#include <singleton.h>

#include <QTest>

namespace {

const QString ScannedSale = QStringLiteral("000100122024000012000345");

QVariantMap storedInvoice(const QSharedPointer<AbstractDocument> &document)
{
    return document->getDocumentProperty(QStringLiteral("invoiceInfo")).toMap();
}

} // namespace

class TestDocumentBinding : public PluginTestCase
{
    Q_OBJECT

private slots:
    void bindingSameDocumentTwiceDoesNothing();
    void returnHooksFollowDocumentType();
    void returnWithInvoiceIsNotAskedAgain();
    void returnWithoutInvoiceAsksCashier_data();
    void returnWithoutInvoiceAsksCashier();
    void cancelledInputLeavesReturnWithoutInvoice();
    void backBySaleKeepsScannedSale();
    void backBySaleWithoutSourceTakesOwnDate();
    void backBySaleOfShortIdentifier();
    void backBySaleOfWrongIdentifier_data();
    void backBySaleOfWrongIdentifier();
    void returnRestoresTokenOfDocument();
    void bindingBeforeInitKeepsTheTillRunning();

protected:
    QString configuration() const override { return QStringLiteral("[TessaroBack.AdditionalBackBySaleValuts]\n1=5\n"); }
};

void TestDocumentBinding::bindingSameDocumentTwiceDoesNothing()
{
    const auto document = m_host->document(EDocumentType::Back);
    m_host->backDialog()->enqueueAnswer(ScriptedBackDialog::invoice("12", "345", "7", "2024-02-01"));
    m_plugin->setDocument(document);
    QCOMPARE(m_host->backDialog()->shown().size(), 1);
    QCOMPARE(document->changeCount(), 1);

    m_host->backDialog()->enqueueAnswer(ScriptedBackDialog::invoice("99", "999", "7", "2024-02-01"));
    m_plugin->setDocument(document);
    QCOMPARE(m_host->backDialog()->shown().size(), 1);
    QCOMPARE(document->changeCount(), 1);
    QCOMPARE(storedInvoice(document).value(QStringLiteral("cashCode")).toString(), QStringLiteral("12"));
}

void TestDocumentBinding::returnHooksFollowDocumentType()
{
    const auto triggerStates = [this] {
        QList<bool> states;
        for (const auto &registration : m_plugin->triggers())
            states << registration.enabled;
        return states;
    };
    const QList<bool> allOn(9, true);
    const QList<bool> returnHooksOff{true, true, true, true, true, true, false, false, false};

    m_plugin->setDocument(m_host->backBySale(ScannedSale));
    QCOMPARE(triggerStates(), allOn);
    m_plugin->setDocument(m_host->document(EDocumentType::Sale));
    QCOMPARE(triggerStates(), returnHooksOff);
    m_plugin->setDocument(m_host->backBySale(ScannedSale));
    QCOMPARE(triggerStates(), allOn);
}

void TestDocumentBinding::returnWithInvoiceIsNotAskedAgain()
{
    const auto document = m_host->returnWithInvoice();
    QTest::ignoreMessage(QtDebugMsg, "Обработка возврата по инвойсу 0/0/0012/000345");
    m_plugin->setDocument(document);
    QVERIFY(m_host->backDialog()->shown().isEmpty());
    QCOMPARE(document->changeCount(), 0);
}

void TestDocumentBinding::returnWithoutInvoiceAsksCashier_data()
{
    QTest::addColumn<bool>("reasons");
    QTest::newRow("reason table filled") << true;
    QTest::newRow("reason table empty") << false;
}

void TestDocumentBinding::returnWithoutInvoiceAsksCashier()
{
    QFETCH(bool, reasons);
    if (reasons)
        Singleton<DictionariesDao>::instance()->setBackReasons(2, {{1, QStringLiteral("Брак")}});
    const auto document = m_host->document(EDocumentType::Back);
    m_host->backDialog()->enqueueAnswer(ScriptedBackDialog::invoice("12", "345", "7", "2024-02-01"));
    m_plugin->setDocument(document);

    QCOMPARE(m_host->backDialog()->shown().size(), 1);
    QCOMPARE(m_host->dialog()->messageIds(),
             reasons ? QStringList() : QStringList{QStringLiteral("tessaroBackReasonListIsEmpty")});
    QCOMPARE(storedInvoice(document).value(QStringLiteral("invoiceNumber")).toString(), QStringLiteral("345"));
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceIDRaw")).toString(), QStringLiteral("0/0/0012/000345"));
}

void TestDocumentBinding::cancelledInputLeavesReturnWithoutInvoice()
{
    const auto document = m_host->document(EDocumentType::Back);
    m_plugin->setDocument(document);
    QCOMPARE(m_host->backDialog()->shown().size(), 1);
    QVERIFY(document->documentProperties().isEmpty());
    QVERIFY(m_host->dialog()->messages().isEmpty());
    const auto queued = Singleton<ActionQueueController>::instance()->queuedActions();
    QCOMPARE(queued.size(), 1);
    QCOMPARE(queued.first().getType(), control::ExitToMenu);
}

void TestDocumentBinding::backBySaleKeepsScannedSale()
{
    const auto document = m_host->backBySale(ScannedSale);
    auto sale = m_host->document(EDocumentType::Sale);
    sale->setDateTime(QDateTime(QDate(2024, 2, 1), QTime(10, 15)));
    document->setSourceDocument(sale);
    document->setDateTime(QDateTime(QDate(2024, 3, 5), QTime(9, 0)));

    QTest::ignoreMessage(QtInfoMsg, "Переключение на режим возврата");
    QTest::ignoreMessage(QtInfoMsg, "Идентификатор чека продажи: 000100122024000012000345");
    QTest::ignoreMessage(QtInfoMsg, "Номер оригинального инвойса: 0/0/0012/000345");
    m_plugin->setDocument(document);

    const QVariantMap expected{
        {QStringLiteral("cashCode"), QStringLiteral("0012")},
        {QStringLiteral("invoiceNumber"), QStringLiteral("000345")},
        {QStringLiteral("storeNumber"), QStringLiteral("7")},
        {QStringLiteral("invoiceDate"), QDate(2024, 2, 1)},
    };
    QCOMPARE(storedInvoice(document), expected);
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceIDRaw")).toString(), QStringLiteral("0/0/0012/000345"));
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceID")).toString(), QStringLiteral("000012000345"));
    QCOMPARE(document->getAdditionalBackBySaleValuts(), (QMap<int, QSet<int>>{{1, {5}}}));
    QVERIFY(m_host->backDialog()->shown().isEmpty());
    QVERIFY(m_host->dialog()->messages().isEmpty());
}

void TestDocumentBinding::backBySaleWithoutSourceTakesOwnDate()
{
    const auto document = m_host->backBySale(ScannedSale);
    document->setDateTime(QDateTime(QDate(2024, 3, 5), QTime(9, 0)));
    m_plugin->setDocument(document);
    QCOMPARE(storedInvoice(document).value(QStringLiteral("invoiceDate")).toDate(), QDate(2024, 3, 5));
}

// A 12-character identifier is accepted but names neither till nor invoice;
// a return by sale does not ask the cashier for them here.
void TestDocumentBinding::backBySaleOfShortIdentifier()
{
    const auto document = m_host->backBySale(QStringLiteral("000012000345"));
    m_plugin->setDocument(document);
    const QVariantMap stored = storedInvoice(document);
    QVERIFY(stored.value(QStringLiteral("cashCode")).toString().isEmpty());
    QVERIFY(stored.value(QStringLiteral("invoiceNumber")).toString().isEmpty());
    QCOMPARE(stored.value(QStringLiteral("storeNumber")).toString(), QStringLiteral("7"));
    QVERIFY(m_host->backDialog()->shown().isEmpty());
    QVERIFY(m_plugin->isTriggerEnabled(*m_plugin->triggerIds.cbegin()));
}

void TestDocumentBinding::backBySaleOfWrongIdentifier_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::newRow("empty") << QString();
    QTest::newRow("11 characters") << QStringLiteral("00001200034");
    QTest::newRow("13 characters") << QStringLiteral("0000120003451");
    QTest::newRow("23 characters") << QStringLiteral("00010012202400001200034");
    QTest::newRow("25 characters") << QStringLiteral("0001001220240000120003456");
}

void TestDocumentBinding::backBySaleOfWrongIdentifier()
{
    QFETCH(QString, identifier);
    m_plugin->setDocument(m_host->document(EDocumentType::Sale));
    const auto document = m_host->backBySale(identifier);
    document->setPluginData(27, QStringLiteral("token"), QStringLiteral("kept"));
    m_plugin->setDocument(document);

    const auto shown = m_host->dialog()->messages();
    QCOMPARE(shown.size(), 1);
    QCOMPARE(shown.first().message, tr::Tr(QStringLiteral("tessaroBackBySaleIncorrectId"),
                                           QStringLiteral("Некорректный идентификатор оригинального инвойса")));
    QVERIFY(document->documentProperties().isEmpty());
    QVERIFY(document->getAdditionalBackBySaleValuts().isEmpty());
    // The binding stopped before the return hooks were switched on and the token restored.
    for (int id : std::as_const(m_plugin->triggerIds))
        QVERIFY(!m_plugin->isTriggerEnabled(id));
    QVERIFY(m_plugin->interface->currentToken().isEmpty());
}

void TestDocumentBinding::returnRestoresTokenOfDocument()
{
    const auto document = m_host->backBySale(ScannedSale);
    document->setPluginData(27, QStringLiteral("token"), QStringLiteral("eyJ0eXAi.kept"));
    m_plugin->setDocument(document);
    QCOMPARE(m_plugin->interface->currentToken(), QStringLiteral("eyJ0eXAi.kept"));
}

// A host may bind its document, and restore the loyalty system, before it
// initialises the plug-in: there is no service client yet to hand the token.
void TestDocumentBinding::bindingBeforeInitKeepsTheTillRunning()
{
    TestablePlugin fresh;
    const auto document = m_host->returnWithInvoice();
    document->setPluginData(fresh.getSystemType(), QStringLiteral("token"), QStringLiteral("tok-1"));

    QTest::ignoreMessage(QtWarningMsg, "Клиент Tessaro ещё не создан: токен документа не передан");
    fresh.setDocument(document);
    QTest::ignoreMessage(QtWarningMsg, "Клиент Tessaro ещё не создан: токен документа не передан");
    QVERIFY(fresh.restoreLoyaltySystem());
    QVERIFY(!fresh.interface);
    QCOMPARE(fresh.getDocument(), document);
}

QTEST_GUILESS_MAIN(TestDocumentBinding)
#include "tst_documentbinding.moc"
