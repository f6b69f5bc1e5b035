#include "returns/invoiceinfo.h"

#include <QMetaProperty>
#include <QTest>

class TestInvoiceInfo : public QObject
{
    Q_OBJECT

private slots:
    void parsesOnlyTwentyFourCharacters_data();
    void parsesOnlyTwentyFourCharacters();
    void parsesTillAndInvoiceOfScannedIdentifier();
    void documentIdWithoutDateHasEmptyDatePiece();
    void validWithoutStoreAndDate();
    void documentIdOfCashierInput();
    void propertiesByName();
    void widePiecesAreKeptWhole();
};

void TestInvoiceInfo::parsesOnlyTwentyFourCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("23 characters") << QStringLiteral("00010012202400001200034");
    QTest::newRow("25 characters") << QStringLiteral("0001001220240000120003456");
    QTest::newRow("empty") << QString();
}

void TestInvoiceInfo::parsesOnlyTwentyFourCharacters()
{
    QFETCH(QString, text);
    const InvoiceInfo info(text);
    QVERIFY(!info.valid());
    QVERIFY(info.cashCode.isEmpty());
    QVERIFY(info.invoiceNumber.isEmpty());
    QCOMPARE(info.invoiceIdRaw(), QStringLiteral("0/0/0000/000000"));
    QCOMPARE(info.invoiceId(), QStringLiteral("000000000000"));
}

void TestInvoiceInfo::parsesTillAndInvoiceOfScannedIdentifier()
{
    const InvoiceInfo info(QStringLiteral("000100122024000012000345"));
    QCOMPARE(info.cashCode, QStringLiteral("0012"));
    QCOMPARE(info.invoiceNumber, QStringLiteral("000345"));
    QCOMPARE(info.invoiceIdRaw(), QStringLiteral("0/0/0012/000345"));
    QCOMPARE(info.invoiceId(), QStringLiteral("000012000345"));
    QVERIFY(info.storeNumber.isEmpty());
    QVERIFY(info.invoiceDate.isNull());
    QVERIFY(info.valid());
}

void TestInvoiceInfo::documentIdWithoutDateHasEmptyDatePiece()
{
    InvoiceInfo info;
    info.storeNumber = QStringLiteral("7");
    info.cashCode = QStringLiteral("12");
    info.invoiceNumber = QStringLiteral("345");
    QCOMPARE(info.documentId(), QStringLiteral("0007000012000345"));
    QCOMPARE(info.documentId().size(), 16);
}

void TestInvoiceInfo::validWithoutStoreAndDate()
{
    InvoiceInfo info;
    info.cashCode = QStringLiteral("1");
    QVERIFY(!info.valid());
    info.invoiceNumber = QStringLiteral("2");
    QVERIFY(info.valid());
}

void TestInvoiceInfo::documentIdOfCashierInput()
{
    InvoiceInfo info;
    info.cashCode = QStringLiteral("12");
    info.invoiceNumber = QStringLiteral("345");
    info.storeNumber = QStringLiteral("7");
    info.invoiceDate = QDate(2024, 2, 1);
    QCOMPARE(info.documentId(), QStringLiteral("000701022024000012000345"));
    QCOMPARE(info.invoiceIdRaw(), QStringLiteral("0/0/0012/000345"));
}

void TestInvoiceInfo::propertiesByName()
{
    InvoiceInfo info;
    const QMetaObject &meta = InvoiceInfo::staticMetaObject;
    QCOMPARE(meta.propertyCount(), 4);
    QCOMPARE(meta.property(0).name(), "cashCode");
    QCOMPARE(meta.property(3).name(), "invoiceDate");
    meta.property(meta.indexOfProperty("invoiceNumber")).writeOnGadget(&info, QStringLiteral("42"));
    QCOMPARE(info.invoiceNumber, QStringLiteral("42"));
}

void TestInvoiceInfo::widePiecesAreKeptWhole()
{
    InvoiceInfo info;
    info.cashCode = QStringLiteral("123456");
    info.invoiceNumber = QStringLiteral("1234567");
    QCOMPARE(info.invoiceIdRaw(), QStringLiteral("0/0/123456/1234567"));
}

QTEST_GUILESS_MAIN(TestInvoiceInfo)
#include "tst_invoiceinfo.moc"
