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
    void mapHoldsEveryProperty();
    void mapRoundTrip();
    void dateFromMap_data();
    void dateFromMap();
    void unknownNamesAreSkipped();
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

void TestInvoiceInfo::mapHoldsEveryProperty()
{
    InvoiceInfo info;
    info.cashCode = QStringLiteral("12");
    info.invoiceDate = QDate(2024, 2, 1);
    const QVariantMap expected{
        {QStringLiteral("cashCode"), QStringLiteral("12")},
        {QStringLiteral("invoiceNumber"), QString()},
        {QStringLiteral("storeNumber"), QString()},
        {QStringLiteral("invoiceDate"), QDate(2024, 2, 1)},
    };
    QCOMPARE(info.toMap(), expected);
}

void TestInvoiceInfo::mapRoundTrip()
{
    InvoiceInfo info(QStringLiteral("000100122024000012000345"));
    info.storeNumber = QStringLiteral("7");
    info.invoiceDate = QDate(2024, 2, 1);
    const InvoiceInfo copy = InvoiceInfo::fromMap(info.toMap());
    QCOMPARE(copy.cashCode, info.cashCode);
    QCOMPARE(copy.invoiceNumber, info.invoiceNumber);
    QCOMPARE(copy.storeNumber, info.storeNumber);
    QCOMPARE(copy.invoiceDate, info.invoiceDate);
}

void TestInvoiceInfo::dateFromMap_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QDate>("date");
    QTest::newRow("date") << QVariant(QDate(2024, 2, 1)) << QDate(2024, 2, 1);
    QTest::newRow("date and time") << QVariant(QDateTime(QDate(2024, 2, 1), QTime(0, 0))) << QDate(2024, 2, 1);
    QTest::newRow("ISO text") << QVariant(QStringLiteral("2024-02-01")) << QDate(2024, 2, 1);
    QTest::newRow("text as typed") << QVariant(QStringLiteral("01.02.2024")) << QDate();
    QTest::newRow("empty text") << QVariant(QString()) << QDate();
    QTest::newRow("nothing") << QVariant() << QDate();
}

void TestInvoiceInfo::dateFromMap()
{
    QFETCH(QVariant, value);
    QFETCH(QDate, date);
    const InvoiceInfo info = InvoiceInfo::fromMap({{QStringLiteral("invoiceDate"), value}});
    QCOMPARE(info.invoiceDate, date);
}

void TestInvoiceInfo::unknownNamesAreSkipped()
{
    const InvoiceInfo info = InvoiceInfo::fromMap({
        {QStringLiteral("cashCode"), 12},
        {QStringLiteral("invoiceNumber"), QStringLiteral("345")},
        {QStringLiteral("cashier"), QStringLiteral("Иванова")},
    });
    QCOMPARE(info.cashCode, QStringLiteral("12"));
    QCOMPARE(info.invoiceNumber, QStringLiteral("345"));
    QVERIFY(info.storeNumber.isEmpty());
}

QTEST_GUILESS_MAIN(TestInvoiceInfo)
#include "tst_invoiceinfo.moc"
