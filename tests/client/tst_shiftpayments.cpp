#include "client/dao.h"
#include "client/interface.h"

#include <documentsdao.h>
#include <mockfactory.h>
#include <session.h>
#include <singleton.h>
#include <testing/testhost.h>
#include <valutcollection.h>

#include <QJsonDocument>
#include <QTest>

using Entries = QList<tessaro::Dao::ShiftPayment>;

namespace {

// Hands out fixed entries and remembers the shifts it was asked for.
class FixedDao : public tessaro::Dao
{
public:
    explicit FixedDao(const Entries &entries)
        : m_entries(entries)
    {
    }
    Entries getShiftPayments(int shift) const override
    {
        m_shifts << shift;
        return m_entries;
    }
    QList<int> shifts() const { return m_shifts; }

private:
    Entries m_entries;
    mutable QList<int> m_shifts;
};

// The shift payments of a client with \a config, built from \a entries, as compact JSON.
QByteArray paymentsOf(const Entries &entries, const QString &config = QString())
{
    TestHost host(config);
    MockFactory<tessaro::Dao>::setInstance(QSharedPointer<FixedDao>::create(entries));
    const QJsonArray payments = tessaro::Interface().getShiftPayments();
    MockFactory<tessaro::Dao>::clearCreator();
    return QJsonDocument(payments).toJson(QJsonDocument::Compact);
}

const QString cashAndCardInOne = QStringLiteral("[Tessaro.PaymentCodes]\n1=0,5\n");

} // namespace

namespace tessaro {
bool operator==(const Dao::ShiftPayment &left, const Dao::ShiftPayment &right)
{
    return left.code == right.code && left.amount == right.amount;
}
} // namespace tessaro

namespace QTest {
template <>
char *toString(const tessaro::Dao::ShiftPayment &entry)
{
    return qstrdup(qPrintable(QStringLiteral("{%1, %2}").arg(entry.code).arg(entry.amount)));
}
} // namespace QTest

Q_DECLARE_METATYPE(Entries)

class TestShiftPayments : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void daoReadsTheTotalOfEveryValut();
    void daoWithoutValutsHasNoEntries();
    void summary_data();
    void summary();
    void summaryAsksForTheCurrentShift();
    void summaryOfTheHostRecord();

    // The edge cases of the shift payments summary, one each.
    void shiftWithoutPaymentsIsEmpty();
    void twoTillCodesFoldIntoOneServiceCode();
    void zeroTotalIsLeftOutAndNotCounted();
    void negativeTotalIsKeptAndCounted();
};

void TestShiftPayments::cleanup()
{
    MockFactory<tessaro::Dao>::clearCreator();
}

void TestShiftPayments::daoReadsTheTotalOfEveryValut()
{
    TestHost host;
    auto *valuts = Singleton<ValutCollection>::instance();
    for (const int code : {5, 0, 2})
        valuts->addValut({code, QString(), 0});
    auto *documents = Singleton<DocumentsDao>::instance();
    documents->addPayment(3, 0, 100.0);
    documents->addPayment(3, 0, 50.0);
    documents->addPayment(3, 5, 20.5);
    documents->addPayment(4, 0, 999.0);
    documents->addPayment(3, 9, 1.0);

    const Entries entries = tessaro::Dao().getShiftPayments(3);
    QCOMPARE(entries, (Entries{{0, 150.0}, {2, 0.0}, {5, 20.5}}));
}

void TestShiftPayments::daoWithoutValutsHasNoEntries()
{
    TestHost host;
    Singleton<DocumentsDao>::instance()->addPayment(1, 0, 10.0);
    QVERIFY(tessaro::Dao().getShiftPayments(1).isEmpty());
}

void TestShiftPayments::summary_data()
{
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<QString>("config");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("nothing") << Entries{} << cashAndCardInOne << QByteArray("[]");
    QTest::newRow("only zeros") << Entries{{0, 0.0}, {5, 0.0}} << cashAndCardInOne << QByteArray("[]");
    QTest::newRow("one code")
        << Entries{{0, 10.0}} << cashAndCardInOne << QByteArray(R"([{"paymentAmount":10,"paymentCode":1,"paymentCount":1}])");
    QTest::newRow("unmapped code as it is")
        << Entries{{3, 4.5}} << cashAndCardInOne << QByteArray(R"([{"paymentAmount":4.5,"paymentCode":3,"paymentCount":1}])");
    QTest::newRow("no mapping at all")
        << Entries{{0, 1.0}, {5, 2.0}} << QString()
        << QByteArray(R"([{"paymentAmount":1,"paymentCode":0,"paymentCount":1},{"paymentAmount":2,"paymentCode":5,"paymentCount":1}])");
    QTest::newRow("ascending service codes")
        << Entries{{0, 1.0}, {3, 2.0}, {5, 4.0}} << QStringLiteral("[Tessaro.PaymentCodes]\n7=0\n1=5\n")
        << QByteArray(R"([{"paymentAmount":4,"paymentCode":1,"paymentCount":1},{"paymentAmount":2,"paymentCode":3,"paymentCount":1},)"
                      R"({"paymentAmount":1,"paymentCode":7,"paymentCount":1}])");
    QTest::newRow("unmapped code meets a service code")
        << Entries{{1, 3.0}, {0, 2.0}} << cashAndCardInOne << QByteArray(R"([{"paymentAmount":5,"paymentCode":1,"paymentCount":2}])");
    QTest::newRow("folded to zero still counted")
        << Entries{{0, 20.0}, {5, -20.0}} << cashAndCardInOne << QByteArray(R"([{"paymentAmount":0,"paymentCode":1,"paymentCount":2}])");
}

void TestShiftPayments::summary()
{
    QFETCH(Entries, entries);
    QFETCH(QString, config);
    QFETCH(QByteArray, expected);
    QCOMPARE(paymentsOf(entries, config), expected);
}

void TestShiftPayments::summaryAsksForTheCurrentShift()
{
    TestHost host;
    Singleton<Session>::instance()->setCurrentShift(9);
    const auto dao = QSharedPointer<FixedDao>::create(Entries{});
    MockFactory<tessaro::Dao>::setInstance(dao);
    tessaro::Interface().getShiftPayments();
    QCOMPARE(dao->shifts(), QList<int>{9});
}

void TestShiftPayments::summaryOfTheHostRecord()
{
    TestHost host(cashAndCardInOne);
    auto *valuts = Singleton<ValutCollection>::instance();
    for (const int code : {0, 2, 5})
        valuts->addValut({code, QString(), 0});
    Singleton<Session>::instance()->setCurrentShift(2);
    Singleton<DocumentsDao>::instance()->addPayment(2, 0, 100.0);
    Singleton<DocumentsDao>::instance()->addPayment(2, 5, 20.5);
    const QJsonArray payments = tessaro::Interface().getShiftPayments();
    QCOMPARE(QJsonDocument(payments).toJson(QJsonDocument::Compact),
             QByteArray(R"([{"paymentAmount":120.5,"paymentCode":1,"paymentCount":2}])"));
}

void TestShiftPayments::shiftWithoutPaymentsIsEmpty()
{
    QCOMPARE(paymentsOf({}), QByteArray("[]"));
}

void TestShiftPayments::twoTillCodesFoldIntoOneServiceCode()
{
    QCOMPARE(paymentsOf({{0, 100.0}, {5, 20.5}}, cashAndCardInOne),
             QByteArray(R"([{"paymentAmount":120.5,"paymentCode":1,"paymentCount":2}])"));
}

void TestShiftPayments::zeroTotalIsLeftOutAndNotCounted()
{
    QCOMPARE(paymentsOf({{0, 100.0}, {5, 0.0}, {2, 0.0}}, cashAndCardInOne),
             QByteArray(R"([{"paymentAmount":100,"paymentCode":1,"paymentCount":1}])"));
}

void TestShiftPayments::negativeTotalIsKeptAndCounted()
{
    QCOMPARE(paymentsOf({{0, 100.0}, {5, -30.25}, {2, -4.0}}, cashAndCardInOne),
             QByteArray(R"([{"paymentAmount":69.75,"paymentCode":1,"paymentCount":2},{"paymentAmount":-4,"paymentCode":2,"paymentCount":1}])"));
}

QTEST_GUILESS_MAIN(TestShiftPayments)
#include "tst_shiftpayments.moc"
