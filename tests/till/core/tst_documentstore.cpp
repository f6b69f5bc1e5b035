#include "documentbuilder.h"
#include "documentstore.h"
#include "scenarioparser.h"

#include <backbysaledocument.h>
#include <config.h>
#include <singleton.h>
#include <testing/testhost.h>

#include <QTest>

using namespace till;

class TestDocumentStore : public QObject
{
    Q_OBJECT

private slots:
    void documentComesBackAfterARestart();
    void buildsDocumentsFromTheirDescription();
    void refusesAFileThatIsNoDocument();
    void findsEachOfManyDocuments();
};

namespace {

Scenario scenario()
{
    ScenarioParser parser;
    return *parser.parse(R"({"name": "n", "actions": [{"type": "input"}], "documents": {
        "r": {"type": "return", "card": "2770001", "commonReason": 2, "store": "9",
              "positions": [{"code": "100", "quantity": 2, "price": 10.5, "fractional": true, "getMethods": [1],
                             "data": {"tessaro": {"backReason": 3}}}],
              "payments": [{"code": 1, "amount": 21, "details": {"cardNum": "4111"}}],
              "impacts": [[{"discountMode": 1, "discountSum": 0.5}]],
              "properties": {"p": "v"}, "pluginData": {"token": "abc"}},
        "s": {"type": "returnBySale", "saleIdentifier": "000701022024000012000345", "saleDate": "2024-02-01"}}})");
}

} // namespace

void TestDocumentStore::documentComesBackAfterARestart()
{
    TestHost host;
    const QString folder = host.folder() + QStringLiteral("/documents");
    host.setConfig(QStringLiteral("[Host]\ndocumentsDir=%1\n").arg(folder));
    const DocumentBuilder builder(27, QStringLiteral("7"));
    {
        DocumentStore store(folder);
        const auto document = builder.document(*scenario().document(QStringLiteral("r")), QStringLiteral("run0001-r"), QDateTime::currentDateTime());
        QVERIFY(store.add(document));
        document->setPluginData(27, QStringLiteral("invoiceID"), QStringLiteral("123456"));
        document->setDocumentProperty(QStringLiteral("originalInvoiceID"), QStringLiteral("00120345"));
        QVERIFY(store.save(document));
    }
    // A new till process: every host object anew, documents read back from disk.
    TestHost::reset();
    Singleton<Config>::setInstance(new Config(host.configFile()));
    DocumentStore store(folder);
    QString error;
    QVERIFY2(store.load(&error), qPrintable(error));
    const auto document = store.find(QStringLiteral("run0001-r"));
    QVERIFY(document);
    QCOMPARE(document->getType(), 2);
    QCOMPARE(document->getPluginData(27, QStringLiteral("invoiceID")).toString(), QStringLiteral("123456"));
    QCOMPARE(document->getPluginData(27, QStringLiteral("token")).toString(), QStringLiteral("abc"));
    QCOMPARE(document->getDocumentProperty(QStringLiteral("originalInvoiceID")).toString(), QStringLiteral("00120345"));
    QCOMPARE(document->getGoodsItems().first()->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason")).toInt(), 3);
    QVERIFY(document->getCardRecord(27));
}

void TestDocumentStore::buildsDocumentsFromTheirDescription()
{
    TestHost host;
    const DocumentBuilder builder(27, QStringLiteral("7"));
    const auto document = builder.document(*scenario().document(QStringLiteral("r")), QStringLiteral("id"), QDateTime::currentDateTime());
    QCOMPARE(document->getShopCode(), QStringLiteral("9"));
    QCOMPARE(document->getCommonBackReason(), QVariant(2));
    const auto position = document->getGoodsItems().first();
    QCOMPARE(position->getPosnum(), 1);
    QCOMPARE(position->getSumb(), 21.0);
    QVERIFY(position->getTmcUnit()->isFractional());
    QVERIFY(position->getTmc()->checkGetMethod(1));
    QCOMPARE(document->getMoneyItems().first()->getCardNum(), QStringLiteral("4111"));
    QCOMPARE(document->getImpacts().first()->getTotals().first().getDiscountSum(), 0.5);
    QCOMPARE(document->getDocumentProperty(QStringLiteral("p")), QVariant(QStringLiteral("v")));

    const auto sale = builder.document(*scenario().document(QStringLiteral("s")), QStringLiteral("id2"), QDateTime::currentDateTime());
    const auto *backBySale = qobject_cast<BackBySaleDocument *>(sale.data());
    QVERIFY(backBySale);
    QCOMPARE(backBySale->getSaleIdentifier(), QStringLiteral("000701022024000012000345"));
    QCOMPARE(backBySale->getSourceDocument()->getDateTime().date(), QDate(2024, 2, 1));
    QCOMPARE(sale->getShopCode(), QStringLiteral("7"));
}

void TestDocumentStore::refusesAFileThatIsNoDocument()
{
    TestHost host;
    QFile file(host.folder() + QStringLiteral("/broken.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{}");
    file.close();
    DocumentStore store(host.folder());
    QString error;
    QVERIFY(!store.load(&error));
    QCOMPARE(error, QStringLiteral("%1 is not a document").arg(file.fileName()));
}

void TestDocumentStore::findsEachOfManyDocuments()
{
    TestHost host;
    const QString folder = host.folder() + QStringLiteral("/documents");
    host.setConfig(QStringLiteral("[Host]\ndocumentsDir=%1\n").arg(folder));
    const DocumentBuilder builder(27, QStringLiteral("7"));
    const DocumentSpec described = *scenario().document(QStringLiteral("r"));
    DocumentStore store(folder);
    for (int i = 0; i < 5; ++i)
        QVERIFY(store.add(builder.document(described, QStringLiteral("run0001-r%1").arg(i), QDateTime::currentDateTime())));
    // The same id again replaces the document in its place.
    const auto replacement = builder.document(described, QStringLiteral("run0001-r2"), QDateTime::currentDateTime());
    QVERIFY(store.add(replacement));
    QCOMPARE(store.documents().size(), 5);
    QCOMPARE(store.find(QStringLiteral("run0001-r2")), replacement);
    QCOMPARE(store.documents().at(2), replacement);
    QVERIFY(!store.find(QStringLiteral("run0001-r5")));

    DocumentStore read(folder);
    QString error;
    QVERIFY2(read.load(&error), qPrintable(error));
    QCOMPARE(read.documents().size(), 5);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(read.find(QStringLiteral("run0001-r%1").arg(i))->getId(), QStringLiteral("run0001-r%1").arg(i));
    // Reading again forgets what was read before.
    QVERIFY(read.load(&error));
    QCOMPARE(read.documents().size(), 5);
    QVERIFY(read.find(QStringLiteral("run0001-r4")));
}

QTEST_GUILESS_MAIN(TestDocumentStore)
#include "tst_documentstore.moc"
