#include <backbysaledocument.h>
#include <documentserializer.h>
#include <savetofilelogic.h>
#include <config.h>
#include <singleton.h>
#include <support/filesizelimit.h>
#include <testing/testhost.h>

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <sys/stat.h>

class TestDocumentSerializer : public QObject
{
    Q_OBJECT

private slots:
    void roundTripKeepsEverythingPluginsStore();
    void backBySaleKeepsIdentifierAndSource();
    void notADocument();
    void saveWritesToConfiguredFolder();
    void saveWithoutFolderKeepsInMemory();
    void savedDocumentIsReadableByItsOwnerOnly();
    void saveOnAFullDiskFailsAndKeepsTheLastCopy_data();
    void saveOnAFullDiskFailsAndKeepsTheLastCopy();
};

void TestDocumentSerializer::roundTripKeepsEverythingPluginsStore()
{
    BackDocument document;
    document.setShopCode(QStringLiteral("7"));
    document.setDocumentProperty(QStringLiteral("invoiceInfo"),
                                 QVariantMap{{QStringLiteral("cashCode"), QStringLiteral("0012")},
                                             {QStringLiteral("invoiceDate"), QDate(2024, 2, 1)}});
    document.setCommonBackReason(5);
    document.setRoundingSum(-0.3);
    document.setPluginData(27, QStringLiteral("adviceNoteResponse"),
                           QVariantMap{{QStringLiteral("requestHashSum"), QStringLiteral("abc")},
                                       {QStringLiteral("response"), QJsonObject{{QStringLiteral("Key4"), QStringLiteral("0/0/1")}}}});
    auto goods = QSharedPointer<GoodsItem>::create();
    goods->setCode(QStringLiteral("1001"));
    goods->setBquant(2.5);
    goods->setSumb(250.0);
    goods->setActualVatIndex(1);
    goods->setVatCodesArray({1, 2});
    goods->setVatSumsArray({0.0, 41.67});
    goods->setTmcUnit(QSharedPointer<TmcUnit>::create(true));
    goods->setAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason"), 3);
    document.addGoodsItem(goods);
    auto money = QSharedPointer<MoneyItem>::create();
    money->setValCode(1);
    money->setAmount(100.0);
    money->setCardNum(QStringLiteral("******1234"));
    document.addMoneyItem(money);
    document.addImpact(QSharedPointer<DocumentImpact>::create(QList<DocumentImpactDetail>{DocumentImpactDetail(11, 0.3)}));
    document.addCardRecord(QSharedPointer<DocumentCardRecord>::create(27, QStringLiteral("123456789012345678")));

    const QJsonObject json = DocumentSerializer::toJson(document);
    const auto copy = DocumentSerializer::fromJson(QJsonDocument::fromJson(QJsonDocument(json).toJson()).object());
    QVERIFY(copy);
    QVERIFY(qobject_cast<BackDocument *>(copy.data()));
    QCOMPARE(copy->getId(), document.getId());
    QCOMPARE(copy->getType(), 2);
    QCOMPARE(copy->getShopCode(), QStringLiteral("7"));
    QCOMPARE(copy->getCommonBackReason().toInt(), 5);
    QCOMPARE(copy->getRoundingSum(), -0.3);
    QCOMPARE(copy->getDocumentProperty(QStringLiteral("invoiceInfo")).toMap().value(QStringLiteral("cashCode")).toString(), QStringLiteral("0012"));
    QCOMPARE(copy->getDocumentProperty(QStringLiteral("invoiceInfo")).toMap().value(QStringLiteral("invoiceDate")).toDate(), QDate(2024, 2, 1));
    const QVariantMap advice = copy->getPluginData(27, QStringLiteral("adviceNoteResponse")).toMap();
    QCOMPARE(advice.value(QStringLiteral("requestHashSum")).toString(), QStringLiteral("abc"));
    QCOMPARE(advice.value(QStringLiteral("response")).toJsonObject().value(QStringLiteral("Key4")).toString(), QStringLiteral("0/0/1"));
    QCOMPARE(copy->getGoodsItems().size(), 1);
    const auto item = copy->getGoodsItems().first();
    QCOMPARE(item->getQuantity(), 2.5);
    QCOMPARE(item->getVatSumsArray(), (QList<double>{0.0, 41.67}));
    QVERIFY(item->getTmcUnit()->isFractional());
    QCOMPARE(item->getAdditionalData(QStringLiteral("tessaro"), QStringLiteral("backReason")).toInt(), 3);
    QCOMPARE(copy->getMoneyItems().first()->getCardNum(), QStringLiteral("******1234"));
    QCOMPARE(copy->getImpacts().first()->getTotals().first().getDiscountSum(), 0.3);
    QCOMPARE(copy->getCardRecord(27)->getNumber().toString(), QStringLiteral("123456789012345678"));
}

void TestDocumentSerializer::backBySaleKeepsIdentifierAndSource()
{
    BackBySaleDocument document;
    document.setSaleIdentifier(QStringLiteral("000100122024000012000345"));
    auto sale = QSharedPointer<AbstractDocument>::create(1);
    sale->setDateTime(QDateTime(QDate(2024, 1, 10), QTime(12, 0)));
    document.setSourceDocument(sale);
    const auto copy = DocumentSerializer::fromJson(DocumentSerializer::toJson(document)).dynamicCast<BackBySaleDocument>();
    QVERIFY(copy);
    QCOMPARE(copy->getSaleIdentifier(), QStringLiteral("000100122024000012000345"));
    QCOMPARE(copy->getSourceDocument()->getDateTime().date(), QDate(2024, 1, 10));
}

void TestDocumentSerializer::notADocument()
{
    QVERIFY(!DocumentSerializer::fromJson(QJsonObject{{QStringLiteral("x"), 1}}));
}

namespace {

// A return with an invoice number, to be saved in the documents folder that \a host is configured with.
QSharedPointer<BackDocument> documentToSave(TestHost *host)
{
    host->setConfig(QStringLiteral("[Host]\ndocumentsDir=%1/docs\n").arg(host->folder()));
    auto document = QSharedPointer<BackDocument>::create();
    document->setPluginData(27, QStringLiteral("invoiceID"), QStringLiteral("000012000345"));
    return document;
}

// What the file of \a document in \a host's documents folder holds.
QByteArray savedFile(const TestHost &host, const QSharedPointer<BackDocument> &document)
{
    QFile file(SaveToFileLogic::fileName(host.folder() + QStringLiteral("/docs"), document->getId()));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void TestDocumentSerializer::saveWritesToConfiguredFolder()
{
    TestHost host;
    const auto document = documentToSave(&host);
    QVERIFY(SaveToFileLogic().save(document, {}));
    const auto copy = DocumentSerializer::fromJson(QJsonDocument::fromJson(savedFile(host, document)).object());
    QVERIFY(copy);
    QCOMPARE(copy->getPluginData(27, QStringLiteral("invoiceID")).toString(), QStringLiteral("000012000345"));
}

// A return document keeps the service token in its plug-in data.
void TestDocumentSerializer::savedDocumentIsReadableByItsOwnerOnly()
{
    const mode_t previous = ::umask(022);
    TestHost host;
    const auto document = documentToSave(&host);
    const bool saved = SaveToFileLogic().save(document, {});
    ::umask(previous);
    QVERIFY(saved);
    const QFileInfo file(SaveToFileLogic::fileName(host.folder() + QStringLiteral("/docs"), document->getId()));
    QCOMPARE(file.permissions() & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther), QFile::Permissions());
}

void TestDocumentSerializer::saveWithoutFolderKeepsInMemory()
{
    TestHost host;
    QVERIFY(SaveToFileLogic().save(QSharedPointer<BackDocument>::create(), {}));
    QVERIFY(!SaveToFileLogic().save({}, {}));
}

void TestDocumentSerializer::saveOnAFullDiskFailsAndKeepsTheLastCopy_data()
{
    QTest::addColumn<int>("size");
    // Under Qt's write buffer, the disk refuses the bytes when the file is committed;
    // over it, the write itself comes back short.
    QTest::newRow("buffered") << 3000;
    QTest::newRow("unbuffered") << 40000;
}

void TestDocumentSerializer::saveOnAFullDiskFailsAndKeepsTheLastCopy()
{
    QFETCH(int, size);
    TestHost host;
    const auto document = documentToSave(&host);
    QVERIFY(SaveToFileLogic().save(document, {}));
    const QByteArray saved = savedFile(host, document);
    QVERIFY(!saved.isEmpty());

    document->setPluginData(27, QStringLiteral("adviceNoteResponse"), QString(size, QLatin1Char('x')));
    {
        const FileSizeLimit full(1024);
        QVERIFY(full.isSet());
        QVERIFY(!SaveToFileLogic().save(document, {}));
    }
    QCOMPARE(savedFile(host, document), saved);
}

QTEST_GUILESS_MAIN(TestDocumentSerializer)
#include "tst_documentserializer.moc"
