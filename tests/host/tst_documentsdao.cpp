#include <documentsdao.h>
#include <session.h>
#include <singleton.h>
#include <testing/testhost.h>

#include <QTest>

class TestDocumentsDao : public QObject
{
    Q_OBJECT

private slots:
    void storageItemsAreKeptPerShiftAndReplacedByName();
    void paymentTotalsPerCurrencyAndShift();
    void survivesReopeningTheFile();
};

void TestDocumentsDao::storageItemsAreKeptPerShiftAndReplacedByName()
{
    TestHost host;
    Singleton<Session>::instance()->setCurrentShift(3);
    DocumentsDao dao(QStringLiteral(":memory:"));
    StorageItem item;
    item.bindToCurrentShift();
    item.setName(QStringLiteral("tillOpen"));
    item.setValue(QStringLiteral("{}"));
    QVERIFY(dao.saveStorageItem(item));
    item.setValue(QStringLiteral("{\"a\": 1}"));
    QVERIFY(dao.saveStorageItem(item));
    const auto items = dao.getStorageItems(3);
    QCOMPARE(items.size(), 1);
    QCOMPARE(items.first().getValue(), QStringLiteral("{\"a\": 1}"));
    QVERIFY(dao.getStorageItems(4).isEmpty());
}

void TestDocumentsDao::paymentTotalsPerCurrencyAndShift()
{
    DocumentsDao dao(QStringLiteral(":memory:"));
    dao.addPayment(1, 0, 100.0);
    dao.addPayment(1, 0, 20.5);
    dao.addPayment(1, 5, -3.0);
    dao.addPayment(2, 0, 7.0);
    QCOMPARE(dao.getPaymentTotal(0, 1).toDouble(), 120.5);
    QCOMPARE(dao.getPaymentTotal(5, 1).toDouble(), -3.0);
    QCOMPARE(dao.getPaymentTotal(9, 1).toDouble(), 0.0);
}

void TestDocumentsDao::survivesReopeningTheFile()
{
    TestHost host;
    const QString file = host.folder() + QStringLiteral("/till.sqlite");
    {
        DocumentsDao dao(file);
        dao.addPayment(1, 2, 50.0);
    }
    DocumentsDao reopened(file);
    QCOMPARE(reopened.getPaymentTotal(2, 1).toDouble(), 50.0);
}

QTEST_GUILESS_MAIN(TestDocumentsDao)
#include "tst_documentsdao.moc"
